#include "tools/vek/timecode/work.h"

#include <charconv>

#include "tools/vek/cli/say.h"

namespace vek::timecode {

std::optional<Timecode> codeOf(Work& work, unsigned row, unsigned column) {
    if (trimmed(work.log.cell(row, column)).empty()) return {};
    std::optional<Timecode> code = work.counting.timecode(row, column);
    if (code && isCounted(*code, work.nominal(row, column))) return code;
    work.leave(row, column,
               code ? "a frame that is there at " + rateText(*work.counting.rate(row, column))
                    : "a timecode such as 01:00:00:00");
    return {};
}

std::optional<std::int64_t> wholeNumber(std::string_view text) {
    std::int64_t number = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    bool isWhole = error == std::errc() && end == text.data() + text.size() && number >= 0;
    return isWhole ? std::optional(number) : std::nullopt;
}

std::optional<std::int64_t> lengthOf(std::string_view text, int nominal, bool drops) {
    text = trimmed(text);
    std::optional<Timecode> code = parseTimecode(text);
    bool isPlain = !code || text.find_first_not_of("0123456789") == std::string_view::npos;
    if (isPlain && text.size() < 8) return wholeNumber(text);
    if (!code || code->frames >= nominal) return {};
    code->dropFrame = code->dropFrame || drops;
    return framesOf(*code, nominal);
}

bool isNoFrame(std::string_view text, int nominal, bool drops) {
    std::optional<Timecode> code = parseTimecode(trimmed(text));
    if (!code) return false;
    code->dropFrame = code->dropFrame || drops;
    return !isCounted(*code, nominal);
}

std::int64_t inDay(Work& work, std::int64_t frames, std::int64_t day) {
    bool isWithin = frames >= 0 && frames < day;
    work.overMidnight += isWithin ? 0 : 1;
    return isWithin ? frames : (frames % day + day) % day;
}

void tellOdd(const Work& work) {
    constexpr std::size_t most = 20;
    for (std::size_t i = 0; i < work.odd.size() && i < most; ++i) {
        say(worded(work.log.name, work.odd[i]));
    }
    if (work.odd.size() > most) {
        say(work.log.name + ": " + std::to_string(work.odd.size() - most) + " more like these");
    }
    if (work.overMidnight > 0) {
        say(work.log.name + ": " + counted(work.overMidnight, "cell") + " past midnight");
    }
}

}  // namespace vek::timecode
