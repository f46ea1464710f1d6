#pragma once

#include <cstddef>
#include <string_view>

/// The bytes of UTF-8.
namespace vek::formats {

/// What some programs put in front of a text to say that it is UTF-8.
inline constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

/// Whether a byte goes on with a character that began in front of it.
inline bool isContinuation(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

/// The bytes of the character beyond 0x7F at the front of a text; 0 where it is no well-formed one.
inline std::size_t wideCharacterSize(std::string_view text) {
    const auto isBetween = [&](std::size_t at, unsigned least, unsigned most) {
        const auto byte = static_cast<unsigned char>(text[at]);
        return byte >= least && byte <= most;
    };
    if (text.empty() || !isBetween(0, 0xC2, 0xF4)) return 0;
    const auto first = static_cast<unsigned char>(text[0]);
    const std::size_t size = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (text.size() < size) return 0;
    const unsigned least = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    const unsigned most = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    if (!isBetween(1, least, most)) return 0;
    for (std::size_t i = 2; i < size; ++i) {
        if (!isBetween(i, 0x80, 0xBF)) return 0;
    }
    return size;
}

}  // namespace vek::formats
