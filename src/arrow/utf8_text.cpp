#include "arrow/utf8_text.h"

#include <cstdint>
#include <cstring>

#include <vekdb/host/text_util.h>

namespace {

constexpr std::uint64_t highBits = 0x8080808080808080;

std::size_t asciiFront(std::string_view text) {
    std::size_t at = 0;
    for (std::uint64_t eight; at + sizeof eight <= text.size(); at += sizeof eight) {
        std::memcpy(&eight, text.data() + at, sizeof eight);
        if ((eight & highBits) != 0) break;
    }
    while (at < text.size() && static_cast<unsigned char>(text[at]) < 0x80) ++at;
    return at;
}

struct Lead {
    unsigned length;          // of the character; 0 for no first byte
    unsigned char low, high;  // between which its second byte stands
};

// Second bytes are bounded so that nothing is written longer than it need be, and no surrogate and
// nothing beyond U+10FFFF at all.
Lead leadOf(unsigned char first) {
    if (first < 0xC2 || first > 0xF4) return {0, 0, 0};
    if (first < 0xE0) return {2, 0x80, 0xBF};
    if (first == 0xE0) return {3, 0xA0, 0xBF};
    if (first == 0xED) return {3, 0x80, 0x9F};
    if (first < 0xF0) return {3, 0x80, 0xBF};
    if (first == 0xF0) return {4, 0x90, 0xBF};
    return {4, 0x80, static_cast<unsigned char>(first == 0xF4 ? 0x8F : 0xBF)};
}

// The bytes of the character beyond ASCII at the front, 0 where there is none.
std::size_t characterFront(std::string_view text) {
    const Lead lead = leadOf(static_cast<unsigned char>(text.front()));
    if (lead.length == 0 || text.size() < lead.length) return 0;
    const auto second = static_cast<unsigned char>(text[1]);
    if (second < lead.low || second > lead.high) return 0;
    for (unsigned i = 2; i < lead.length; ++i) {
        if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) return 0;
    }
    return lead.length;
}

}  // namespace

bool isAscii(std::string_view text) {
    return asciiFront(text) == text.size();
}

std::size_t wellFormedFront(std::string_view text) {
    std::size_t at = asciiFront(text);
    while (at < text.size()) {
        const std::size_t character = characterFront(text.substr(at));
        if (character == 0) return at;
        at += character;
        at += asciiFront(text.substr(at));
    }
    return at;
}

std::string withReplacements(std::string_view text) {
    const auto replaced = toUTF8(fromUTF8(LightweightString<char>(text)));
    return std::string(replaced.view());
}
