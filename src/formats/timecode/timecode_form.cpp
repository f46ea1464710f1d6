#include "formats/timecode/timecode_form.h"

#include "formats/failure.h"
#include "formats/text/text_lines.h"

namespace vek::formats {

namespace {

constexpr std::size_t digitsOfCompact = 8;
constexpr std::size_t pairPlaces[] = {0, 3, 6, 9};
constexpr std::size_t markPlace = 8;

bool isCompact(std::string_view text) {
    return text.find_first_not_of("0123456789;") == std::string_view::npos;
}

std::string compactForm(std::string_view old, const std::string& code, Mark mark) {
    std::string out;
    for (std::size_t at : pairPlaces) out += code.substr(at, 2);
    bool drops = mark == Mark::asBefore ? old.size() > digitsOfCompact : mark == Mark::dropFrame;
    return drops ? out + ';' : out;
}

std::string punctuatedForm(std::string_view old, const std::string& code, Mark mark) {
    bool hasShortHours = old.size() < code.size();
    std::string out = concat(hasShortHours ? "0" : "", old);
    for (std::size_t at : pairPlaces) out.replace(at, 2, code, at, 2);
    if (mark == Mark::dropFrame) out[markPlace] = ';';
    if (mark == Mark::nonDrop && out[markPlace] == ';') out[markPlace] = ':';
    return hasShortHours && out[0] == '0' ? out.substr(1) : out;
}

}  // namespace

std::string inFormOf(std::string_view old, const std::string& code, Mark mark) {
    std::string_view bare = trimmed(old);
    auto before = static_cast<std::size_t>(bare.data() - old.data());
    std::string made =
        isCompact(bare) ? compactForm(bare, code, mark) : punctuatedForm(bare, code, mark);
    return concat(old.substr(0, before), made, old.substr(before + bare.size()));
}

bool hasDropMark(std::string_view cell) {
    std::optional<Timecode> code = parseTimecode(trimmed(cell));
    return code && code->dropFrame;
}

}  // namespace vek::formats
