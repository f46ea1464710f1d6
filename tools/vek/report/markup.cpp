#include "tools/vek/report/markup.h"

#include <algorithm>

#include "formats/text/width.h"

namespace vek::page {

using formats::escaped;
using formats::isUtf8;

namespace {

const char* entityOf(char c) {
    switch (c) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '"':
            return "&quot;";
        case '\'':
            return "&#39;";
        default:
            return nullptr;
    }
}

void addMarkup(std::string& out, std::string_view text) {
    for (char c : text) {
        if (const char* entity = entityOf(c))
            out += entity;
        else
            out += c;
    }
}

constexpr std::size_t longestCharacter = 4;

// How many bytes the character takes that a text begins with; 0 where they are none.
std::size_t lengthOfCharacter(std::string_view text) {
    for (std::size_t n = 1; n <= std::min(longestCharacter, text.size()); ++n) {
        if (isUtf8(text.substr(0, n))) return n;
    }
    return 0;
}

void addHex(std::string& out, unsigned high, unsigned char byte) {
    constexpr const char* digits = "0123456789abcdef";
    out += "\\u";
    for (unsigned part : {high >> 4, high & 15, unsigned{byte} >> 4, byte & 15u}) {
        out += digits[part];
    }
}

constexpr unsigned highOfLoneSurrogates = 0xDC;

// Returns how many bytes were taken.
std::size_t addJsonCharacter(std::string& out, std::string_view text) {
    const char c = text.front();
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || c == 0x7F || c == '<' || c == '>' || c == '&') {
        addHex(out, 0, byte);
    } else if (c == '"' || c == '\\') {
        (out += '\\') += c;
    } else if (byte < 0x80) {
        out += c;
    } else {
        const std::size_t length = lengthOfCharacter(text);
        if (length > 0)
            out += text.substr(0, length);
        else
            addHex(out, highOfLoneSurrogates, byte);
        return std::max<std::size_t>(1, length);
    }
    return 1;
}

bool standsInJson(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x20 && byte < 0x7F && c != '<' && c != '>' && c != '&' && c != '"' && c != '\\';
}

// The longest beginning of a text of at most so many bytes that cuts no character.
std::string_view beginning(std::string_view text, std::size_t most) {
    std::size_t size = most;
    for (std::size_t back = 0; back < longestCharacter && back < most; ++back) {
        const auto next = static_cast<unsigned char>(text[most - back]);
        if ((next & 0xC0) != 0x80) return text.substr(0, most - back);
    }
    return text.substr(0, size);
}

void addSevenBits(std::string& out, std::uint64_t number) {
    for (; number >= 0x80; number >>= 7) out += static_cast<char>((number & 0x7F) | 0x80);
    out += static_cast<char>(number);
}

}  // namespace

void addText(std::string& out, std::string_view text) {
    addMarkup(out, escaped(text));
}

std::string asText(std::string_view text) {
    std::string out;
    addText(out, text);
    return out;
}

void addShortText(std::string& out, std::string_view text, std::size_t most) {
    if (text.size() <= most) return addText(out, text);
    const std::string_view shown = beginning(text, most);
    addText(out, shown);
    out += "\xE2\x80\xA6 <i>(" + std::to_string(text.size() - shown.size()) + " more bytes)</i>";
}

void addJson(std::string& out, std::string_view text) {
    out += '"';
    while (!text.empty()) {
        const auto end = std::find_if_not(text.begin(), text.end(), standsInJson);
        const auto plain = static_cast<std::size_t>(end - text.begin());
        out += text.substr(0, plain);
        text.remove_prefix(plain);
        if (!text.empty()) text.remove_prefix(addJsonCharacter(out, text));
    }
    out += '"';
}

std::string packedNumbers(const std::vector<std::uint32_t>& numbers) {
    std::string bytes;
    std::int64_t before = 0;
    for (std::uint32_t number : numbers) {
        const std::int64_t step = std::int64_t{number} - before;
        addSevenBits(bytes, static_cast<std::uint64_t>(step < 0 ? -2 * step - 1 : 2 * step));
        before = number;
    }
    return base64(bytes);
}

std::string base64(std::string_view bytes) {
    constexpr const char* letters =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    out.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        const std::string_view three = bytes.substr(at, 3);
        unsigned bits = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            bits = bits << 8 | (i < three.size() ? static_cast<unsigned char>(three[i]) : 0u);
        }
        for (std::size_t i = 0; i < 4; ++i) {
            out += i <= three.size() ? letters[bits >> (18 - 6 * i) & 63] : '=';
        }
    }
    return out;
}

}  // namespace vek::page
