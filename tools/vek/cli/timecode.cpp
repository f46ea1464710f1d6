#include "tools/vek/cli/timecode.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "host/text_util.h"

namespace vek {

namespace {

bool isSeparator(char c) {
    return c == ':' || c == ';' || c == '.' || c == ',';
}

// Two digits at a place, or -1.
int pair(std::string_view text, std::size_t at) {
    if (at + 2 > text.size() || !isAsciiDigit(text[at]) || !isAsciiDigit(text[at + 1])) return -1;
    return (text[at] - '0') * 10 + (text[at + 1] - '0');
}

std::optional<Timecode> checked(int hours, int minutes, int seconds, int frames, bool drop) {
    if (hours < 0 || minutes < 0 || seconds < 0 || frames < 0) return {};
    if (minutes > 59 || seconds > 59) return {};
    return Timecode{hours, minutes, seconds, frames, drop};
}

std::optional<Timecode> parseCompact(std::string_view text) {
    bool drop = text.size() == 9 && text[8] == ';';
    if (text.size() != 8 && !drop) return {};
    return checked(pair(text, 0), pair(text, 2), pair(text, 4), pair(text, 6), drop);
}

std::optional<Timecode> parsePunctuated(std::string_view text) {
    if (!isSeparator(text[2]) || !isSeparator(text[5]) || !isSeparator(text[8])) return {};
    return checked(pair(text, 0), pair(text, 3), pair(text, 6), pair(text, 9), text[8] == ';');
}

int droppedEachMinute(int nominal) {
    return nominal / 30 * 2;
}

}  // namespace

std::optional<Timecode> parseTimecode(std::string_view text) {
    if (text.size() == 11) return parsePunctuated(text);
    if (text.size() != 10 || !isSeparator(text[1])) return parseCompact(text);
    return parsePunctuated(std::string(1, '0').append(text));
}

std::optional<FrameRate> parseFrameRate(std::string_view text) {
    double value = parseDouble(text);
    if (!(value >= 1 && value <= 1000)) return {};
    int nominal = static_cast<int>(std::lround(value));
    bool isFractional = std::abs(value - nominal) > 0.0005;
    return FrameRate{nominal, isFractional ? nominal * 1000.0 / 1001.0 : value};
}

std::int64_t framesOf(const Timecode& code, int nominal) {
    std::int64_t minutes = code.hours * 60LL + code.minutes;
    std::int64_t frames = (minutes * 60 + code.seconds) * nominal + code.frames;
    if (!code.dropFrame) return frames;
    return frames - droppedEachMinute(nominal) * (minutes - minutes / 10);
}

std::string timecodeText(std::int64_t frames, int nominal, bool dropFrame) {
    int dropped = dropFrame ? droppedEachMinute(nominal) : 0;
    if (dropped > 0) {
        std::int64_t minute = nominal * 60LL - dropped;
        std::int64_t tenMinutes = minute * 10 + dropped;
        std::int64_t inTen = frames % tenMinutes;
        frames += 9LL * dropped * (frames / tenMinutes);
        if (inTen >= minute + dropped) frames += dropped * ((inTen - dropped) / minute);
    }
    std::int64_t seconds = frames / nominal;
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%02d:%02d:%02d%c%02d",
                  static_cast<int>(seconds / 3600), static_cast<int>(seconds / 60 % 60),
                  static_cast<int>(seconds % 60), dropped > 0 ? ';' : ':',
                  static_cast<int>(frames % nominal));
    return text.data();
}

namespace {

// Where the feet of a keycode begin, and the plus behind them; npos when it has none. Written
// without separators the last four digits are the feet, the rest names the roll.
struct FeetPlace {
    std::size_t start = std::string_view::npos;
    std::size_t plus = std::string_view::npos;
};

FeetPlace findFeet(std::string_view text) {
    std::size_t plus = text.rfind('+');
    if (plus == std::string_view::npos || plus + 3 != text.size()) return {};
    std::size_t start = plus;
    while (start > 0 && isAsciiDigit(text[start - 1])) --start;
    if (start == plus || pair(text, plus + 1) < 0) return {};
    return {plus - start > 6 ? plus - 4 : start, plus};
}

}  // namespace

std::optional<std::int64_t> keycodeFrames(std::string_view text, int framesPerFoot) {
    FeetPlace place = findFeet(text);
    if (place.plus == std::string_view::npos) return {};
    int feet = 0;
    std::from_chars(text.data() + place.start, text.data() + place.plus, feet);
    return feet * std::int64_t{framesPerFoot} + pair(text, place.plus + 1);
}

std::string_view keycodeRoll(std::string_view text) {
    return text.substr(0, findFeet(text).start);
}

}  // namespace vek
