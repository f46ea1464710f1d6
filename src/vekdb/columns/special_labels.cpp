#include "vekdb/columns/special_labels.h"

namespace {

constexpr SpecialLabelPair pairs[] = {
    {"Start time", "End time"},           {"snd start", "snd end"},
    {"start 24P code", "end 24P code"},   {"start keycode", "end keycode"},
    {"start camcode", "end camcode"},     {"start inkcode", "end inkcode"},
};

}  // namespace

const SpecialLabelPair* specialLabelPair(std::string_view name) {
    for (const SpecialLabelPair& pair : pairs) {
        if (name == pair.start || name == pair.end) return &pair;
    }
    return nullptr;
}
