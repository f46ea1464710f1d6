#include <vekdb/formats/timecode.h>

#include <array>
#include <charconv>
#include <cstdio>

#include <vekdb/host/text_util.h>
#include "formats/failure.h"
#include "formats/text/text_lines.h"

namespace vek {

using namespace formats;

namespace {

bool isSeparator(char c) {
    return c == ':' || c == ';' || c == '.' || c == ',';
}

// The two digits that begin at a place of a text that has both, or -1.
int pair(std::string_view text, std::size_t at) {
    const int tens = text[at] - '0';
    const int ones = text[at + 1] - '0';
    const bool areDigits = (static_cast<unsigned>(tens) < 10) & (static_cast<unsigned>(ones) < 10);
    return areDigits ? tens * 10 + ones : -1;
}

std::optional<Timecode> checked(int hours, int minutes, int seconds, int frames, bool drop) {
    if ((hours | minutes | seconds | frames) < 0) return {};
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

constexpr int fastest = 1000;
constexpr int hoursInDay = 24;

// Whole digits taken off the front of a text; nothing when there are none, or too many.
std::optional<std::int64_t> takeDigits(std::string_view& text) {
    std::size_t count = 0;
    while (count < text.size() && isAsciiDigit(text[count])) ++count;
    if (count == 0 || count > 9) return {};
    std::int64_t number = 0;
    std::from_chars(text.data(), text.data() + count, number);
    text.remove_prefix(count);
    return number;
}

// The rates that have a version slower by 1000/1001.
bool hasSlowed(std::int64_t nominal) {
    return nominal % 24 == 0 || nominal % 30 == 0;
}

std::optional<FrameRate> wholeRate(std::int64_t nominal) {
    if (nominal < 1 || nominal > fastest) return {};
    return FrameRate{static_cast<int>(nominal)};
}

// A rate with decimals, of which there are `scale` in one: 2397 or 2398 of 100 are 24000/1001.
// The last decimal may be rounded or cut.
std::optional<FrameRate> slowedRate(std::int64_t whole, std::int64_t decimals, std::int64_t scale) {
    std::int64_t nominal = whole + 1;
    bool isKnown = nominal <= fastest && hasSlowed(nominal) && scale >= 100;
    if (!isKnown) return {};
    std::int64_t value = whole * scale + decimals;
    std::int64_t cut = nominal * 1000 * scale / 1001;
    std::int64_t rounded = (nominal * 2000 * scale / 1001 + 1) / 2;
    if (value != cut && value != rounded) return {};
    return FrameRate{static_cast<int>(nominal), true};
}

std::optional<FrameRate> takeDecimals(std::int64_t whole, std::string_view& text) {
    text.remove_prefix(1);
    std::size_t before = text.size();
    std::optional<std::int64_t> decimals = takeDigits(text);
    if (!decimals) return {};
    if (*decimals == 0) return wholeRate(whole);
    std::int64_t scale = 1;
    for (std::size_t i = text.size(); i < before; ++i) scale *= 10;
    return slowedRate(whole, *decimals, scale);
}

std::optional<FrameRate> takeFraction(std::int64_t above, std::string_view& text) {
    text.remove_prefix(1);
    std::optional<std::int64_t> below = takeDigits(text);
    if (below == 1) return wholeRate(above);
    bool isSlowed = below == 1001 && above % 1000 == 0 && hasSlowed(above / 1000);
    std::optional<FrameRate> rate = isSlowed ? wholeRate(above / 1000) : std::nullopt;
    if (rate) rate->isSlowed = true;
    return rate;
}

std::optional<FrameRate> takeRate(std::string_view& text) {
    std::optional<std::int64_t> whole = takeDigits(text);
    if (!whole) return {};
    if (text.starts_with('/')) return takeFraction(*whole, text);
    return text.starts_with('.') || text.starts_with(',') ? takeDecimals(*whole, text)
                                                          : wholeRate(*whole);
}

// Without blanks, hyphens and underlines, in small letters.
std::string squeezed(std::string_view text) {
    std::string out;
    for (char c : text) {
        if (!isAsciiSpace(c) && c != '-' && c != '_') out += asciiLower(c);
    }
    return out;
}

// The words behind a rate; nothing for any that are not known.
std::optional<Counting> countingBehind(std::string_view text) {
    std::string words = squeezed(text);
    if (words.starts_with("fps")) words.erase(0, 3);
    if (words.ends_with("fps")) words.erase(words.size() - 3);
    if (words.empty()) return Counting::unsaid;
    if (words == "df" || words == "drop" || words == "dropframe") return Counting::dropFrame;
    if (words == "ndf" || words == "nondrop" || words == "nondropframe") return Counting::nonDrop;
    return {};
}

}  // namespace

std::optional<Timecode> parseTimecode(std::string_view text) {
    if (text.size() == 11) return parsePunctuated(text);
    if (text.size() != 10 || !isSeparator(text[1])) return parseCompact(text);
    return parsePunctuated(std::string(1, '0').append(text));
}

std::optional<FrameRate> parseFrameRate(std::string_view text) {
    text = trimmed(text);
    std::optional<FrameRate> rate = takeRate(text);
    std::optional<Counting> counting = countingBehind(text);
    if (!rate || !counting) return {};
    if (counting == Counting::dropFrame && !canDropFrames(rate->nominal)) return {};
    rate->counting = *counting;
    return rate;
}

std::string rateText(const FrameRate& rate) {
    std::string text = std::to_string(rate.nominal);
    if (rate.isSlowed) {
        // Two decimals where they say it: 29.97; three for 23.976.
        int thousandths = (rate.nominal * 2000000 / 1001 + 1) / 2;
        bool needsThird = thousandths % 10 != 0 && rate.nominal % 24 == 0;
        int scale = needsThird ? 1000 : 100;
        int value = needsThird ? thousandths : thousandths / 10;
        std::string decimals = std::to_string(scale + value % scale).substr(1);
        text = concat(std::to_string(value / scale), ".", decimals);
    }
    if (rate.counting == Counting::unsaid) return text;
    return text + (rate.counting == Counting::dropFrame ? "df" : "ndf");
}

bool canDropFrames(int nominal) {
    return nominal % 30 == 0;
}

int droppedEachMinute(int nominal) {
    return canDropFrames(nominal) ? nominal / 30 * 2 : 0;
}

bool isCounted(const Timecode& code, int nominal) {
    if (code.frames >= nominal) return false;
    bool isDroppingMinute = code.dropFrame && code.seconds == 0 && code.minutes % 10 != 0;
    return !isDroppingMinute || code.frames >= droppedEachMinute(nominal);
}

std::int64_t framesOf(const Timecode& code, int nominal) {
    std::int64_t minutes = code.hours * 60LL + code.minutes;
    std::int64_t frames = (minutes * 60 + code.seconds) * nominal + code.frames;
    if (!code.dropFrame) return frames;
    return frames - droppedEachMinute(nominal) * (minutes - minutes / 10);
}

std::string timecodeText(std::int64_t frames, int nominal, bool dropFrame) {
    if (nominal <= 0 || frames < 0) return {};
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

std::int64_t framesInDay(int nominal, bool dropFrame) {
    return framesOf({hoursInDay, 0, 0, 0, dropFrame}, nominal);
}

bool isOverMidnight(const Timecode& start, const Timecode& end) {
    if (start.hours >= hoursInDay) return false;
    long long length = end.order() - start.order() + hoursInDay * Timecode::ordersInHour;
    return end.order() < start.order() && length < 12 * Timecode::ordersInHour;
}

std::optional<std::int64_t> framesBetween(Timecode start, Timecode end, int nominal) {
    start.dropFrame = end.dropFrame = start.dropFrame || end.dropFrame;
    std::int64_t frames = framesOf(end, nominal) - framesOf(start, nominal);
    if (isOverMidnight(start, end)) return frames + framesInDay(nominal, start.dropFrame);
    if (frames < 0) return {};
    return frames;
}

}  // namespace vek
