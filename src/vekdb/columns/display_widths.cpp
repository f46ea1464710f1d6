#include "vekdb/columns/display_widths.h"

#include <iterator>

#include <vekdb/host/lightweight_string.h>

namespace {

// The narrowest width at which the standard columns of a log are shown.
struct MinimumWidth {
    const char* name;
    std::int32_t width;
};

constexpr MinimumWidth dbi[] = {
    {"Cookie", 12},
    {"Type", 6},
    {"Flags", 8},
    {"Name", 32},
    {"Date", 12},
    {"Size", 8},
    {"pic qual", 4},
    {"aud qual", 32},
    {"chans", 64},
    {"Start time", 12},
    {"End time", 12},
    {"Duration", 16},
    {"Reel", 10},
    {"Reel Type", 30},
    {"Scene", 24},
    {"Shot", 24},
    {"Who", 24},
    {"Description", 64},
    {"Notes", 100},
    {"snd start", 12},
    {"snd end", 12},
    {"snd reel", 10},
    {"start 24P code", 12},
    {"end 24P code", 12},
    {"24P reel", 10},
    {"film_origin", 3},
    {"pulldown", 3},
    {"sequence", 2},
    {"start keycode", 17},
    {"end keycode", 17},
    {"film duration", 9},
    {"start camcode", 12},
    {"end camcode", 12},
    {"cam reel", 10},
    {"comp reel", 10},
    {"cam_date", 6},
    {"start inkcode", 15},
    {"end inkcode", 15},
    {"lab reel", 10},
    {"Mdrive", 4},
    {"Tag", 1},
};
static_assert(std::size(dbi) == 41);

constexpr std::int32_t widthOfOthers = 4;

}  // namespace

std::int32_t minimumDisplayWidth(const char* name) {
    for (const MinimumWidth& entry : dbi) {
        if (LightweightString<char>::icompare(entry.name, name) == 0) return entry.width;
    }
    return widthOfOthers;
}
