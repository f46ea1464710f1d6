#include "formats/text/shown.h"

#include <cstddef>
#include <cstdint>

#include "formats/failure.h"
#include "formats/text/width.h"

namespace vek::formats {

namespace {

constexpr std::size_t surelyShort = 60;

// Whether all bytes stand for themselves on a terminal. Looks at all, and keeps what it finds in
// one, so that many can be looked at together.
bool allPlain(std::string_view text) {
    std::uint8_t others = 0;
    for (char c : text) {
        const auto behindBlank = static_cast<std::uint8_t>(c - ' ');
        others |= static_cast<std::uint8_t>(behindBlank >= 0x7F - ' ');
    }
    return others == 0;
}

}  // namespace

void addInQuotes(std::string& out, std::string_view text) {
    if (text.size() > surelyShort) {
        out += inQuotes(text);
        return;
    }
    out += '"';
    out += text;
    out += '"';
}

void escape(std::string& text) {
    if (!allPlain(text)) text = escaped(text);
}

}  // namespace vek::formats
