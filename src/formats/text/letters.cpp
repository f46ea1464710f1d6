#include "formats/text/letters.h"

#include <utf8proc.h>

#include <array>
#include <cstdlib>

namespace vek::formats {

namespace {

using Code = utf8proc_int32_t;
using Byte = utf8proc_uint8_t;

const Byte* bytesOf(std::string_view text) {
    return reinterpret_cast<const Byte*>(text.data());
}

std::size_t addLetter(std::string& out, std::string_view text, Code (*other)(Code)) {
    Code code = 0;
    const auto size = static_cast<utf8proc_ssize_t>(text.size());
    const utf8proc_ssize_t length = utf8proc_iterate(bytesOf(text), size, &code);
    if (length <= 0) {
        out += text.front();
        return 1;
    }
    std::array<Byte, 4> letter{};
    const utf8proc_ssize_t written = utf8proc_encode_char(other(code), letter.data());
    out.append(reinterpret_cast<const char*>(letter.data()), static_cast<std::size_t>(written));
    return static_cast<std::size_t>(length);
}

void addAll(std::string& out, std::string_view text, Code (*other)(Code)) {
    while (!text.empty()) text.remove_prefix(addLetter(out, text, other));
}

}  // namespace

void addUpper(std::string& out, std::string_view text) {
    addAll(out, text, utf8proc_toupper);
}

void addLower(std::string& out, std::string_view text) {
    addAll(out, text, utf8proc_tolower);
}

std::string foldedName(std::string_view text) {
    constexpr auto options =
        static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE | UTF8PROC_CASEFOLD);
    Byte* folded = nullptr;
    const auto size = static_cast<utf8proc_ssize_t>(text.size());
    const utf8proc_ssize_t length = utf8proc_map(bytesOf(text), size, &folded, options);
    if (length < 0) return std::string(text);
    std::string out(reinterpret_cast<const char*>(folded), static_cast<std::size_t>(length));
    std::free(folded);
    return out;
}

}  // namespace vek::formats
