#include <vekdb/formats/keycode.h>

#include <algorithm>

#include <vekdb/host/text_util.h>
#include "formats/failure.h"
#include "formats/text/text_lines.h"

namespace vek {

using namespace formats;

namespace {

// Film of 35 and 65 mm has 64 perforations a foot, film of 16 mm has 40 (pitches of 0.1875 and
// 0.3 inches). A frame of 35 mm takes 4, 3 or 2 of them, one of 65 mm 5, and one of 16 mm 1:
// 16, 21 1/3, 32, 12.8 and 40 frames a foot.
constexpr Gauge gauges[] = {
    {"35", "35 mm film with 4 perforations", 64, 4},
    {"35-4", "35 mm film with 4 perforations", 64, 4},
    {"35-3", "35 mm film with 3 perforations", 64, 3},
    {"35-2", "35 mm film with 2 perforations", 64, 2},
    {"16", "16 mm film", 40, 1},
    {"65", "65 mm film with 5 perforations", 64, 5},
};

constexpr std::size_t mostFeetDigits = 6;
constexpr std::size_t feetDigitsOfUnseparated = 4;

// Where the feet begin. Written without separators the last four digits are the feet, the rest
// names the roll.
std::size_t feetStart(std::string_view text, std::size_t plus) {
    std::size_t start = plus;
    while (start > 0 && isAsciiDigit(text[start - 1])) --start;
    return plus - start > mostFeetDigits ? plus - feetDigitsOfUnseparated : start;
}

}  // namespace

const Gauge* gaugeNamed(std::string_view name) {
    const Gauge* gauge = std::find_if(std::begin(gauges), std::end(gauges),
                                      [&](const Gauge& known) { return name == known.name; });
    return gauge == std::end(gauges) ? nullptr : gauge;
}

std::optional<Keycode> parseKeycode(std::string_view text) {
    text = trimmed(text);
    if (text.size() < 4) return {};
    const std::size_t plus = text.size() - 3;
    const char* const frames = text.data() + plus + 1;
    if (text[plus] != '+' || !isAsciiDigit(frames[0]) || !isAsciiDigit(frames[1])) return {};
    const std::size_t start = feetStart(text, plus);
    if (start == plus) return {};
    Keycode code{trimmed(text.substr(0, start)), 0, (frames[0] - '0') * 10 + (frames[1] - '0')};
    for (char digit : text.substr(start, plus - start)) code.feet = code.feet * 10 + (digit - '0');
    return code;
}

std::optional<std::int64_t> perforationsBetween(const Keycode& start, const Keycode& end,
                                                const Gauge& gauge) {
    std::int64_t difference = end.perforations(gauge) - start.perforations(gauge);
    if (!sameText(start.roll, end.roll) || difference < 0) return {};
    return difference;
}

std::string footageText(std::int64_t perforations, const Gauge& gauge) {
    std::int64_t inFoot = perforations % gauge.perforationsPerFoot;
    std::string frames = std::to_string(inFoot / gauge.perforationsPerFrame);
    std::int64_t rest = inFoot % gauge.perforationsPerFrame;
    return concat(std::to_string(perforations / gauge.perforationsPerFoot),
                  frames.size() < 2 ? "+0" : "+", frames,
                  rest == 0 ? std::string() : "." + std::to_string(rest));
}

}  // namespace vek
