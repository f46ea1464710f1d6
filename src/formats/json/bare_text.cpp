#include "formats/json/bare_text.h"

#include <optional>

#include <vekdb/host/text_util.h>
#include "formats/json/json.h"
#include "formats/json/json_text.h"

namespace vek::formats {

namespace {

// A member of that name would make a timeline of the rows.
bool isWholeNested(std::string_view text) {
    if (text.find("\"OTIO_SCHEMA\"") != text.npos) return false;
    const std::optional<CompactJson> compact = compactJson(text);
    return compact && compact->text == text;
}

bool isStill(std::string_view text, Bare bare) {
    if (text.empty()) return bare == Bare::nothing;
    if (bareOf(text.front()) != bare) return false;
    return bare == Bare::nested ? isWholeNested(text) : standsBare(text);
}

}  // namespace

Bare bareOf(char first) {
    if (first == '-' || isAsciiDigit(first)) return Bare::number;
    if (first == '{' || first == '[') return Bare::nested;
    if (first == 't' || first == 'f') return Bare::truth;
    return first == 'n' ? Bare::nothing : Bare::no;
}

void addJsonValue(std::string& out, std::string_view cell, Bare bare, bool& wasChanged) {
    if (bare == Bare::no || !isStill(cell, bare)) return addJsonString(out, cell, wasChanged);
    out += cell.empty() ? "null" : cell;
}

}  // namespace vek::formats
