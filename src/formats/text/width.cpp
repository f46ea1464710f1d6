#include "formats/text/width.h"

#include <utf8proc.h>

#include <algorithm>

namespace vek::formats {

namespace {

constexpr std::string_view ellipsis = "\xE2\x80\xA6";
constexpr utf8proc_int32_t broken = -1;

bool isPlain(unsigned char c) {
    return c >= 0x20 && c < 0x7F;
}

bool allPlain(std::string_view text) {
    return std::all_of(text.begin(), text.end(), isPlain);
}

// One character taken off the front of a text.
struct Taken {
    utf8proc_int32_t code;
    std::string_view bytes;
};

Taken take(std::string_view& text) {
    Taken taken{broken, text.substr(0, 1)};
    auto data = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
    utf8proc_ssize_t length =
        utf8proc_iterate(data, static_cast<utf8proc_ssize_t>(text.size()), &taken.code);
    if (length > 0) taken.bytes = text.substr(0, static_cast<std::size_t>(length));
    if (length <= 0) taken.code = broken;
    text.remove_prefix(taken.bytes.size());
    return taken;
}

std::size_t widthOf(utf8proc_int32_t code) {
    return static_cast<std::size_t>(std::max(0, utf8proc_charwidth(code)));
}

// Characters that end lines, move the cursor, turn the direction of writing or cannot be seen,
// which make two names look alike that are not.
bool needsEscape(utf8proc_int32_t code) {
    if (code == broken) return true;
    const utf8proc_property_t* property = utf8proc_get_property(code);
    switch (property->category) {
        case UTF8PROC_CATEGORY_CC:
        case UTF8PROC_CATEGORY_ZL:
        case UTF8PROC_CATEGORY_ZP:
            return true;
        case UTF8PROC_CATEGORY_CF:
            return property->ignorable || widthOf(code) == 0;
        default:
            return property->ignorable;
    }
}

void appendHex(std::string& out, unsigned char byte) {
    static const char digits[] = "0123456789abcdef";
    out += "\\x";
    out += digits[byte >> 4];
    out += digits[byte & 15];
}

void appendEscape(std::string& out, std::string_view bytes) {
    if (bytes == "\n")
        out += "\\n";
    else if (bytes == "\r")
        out += "\\r";
    else if (bytes == "\t")
        out += "\\t";
    else
        for (char c : bytes) appendHex(out, static_cast<unsigned char>(c));
}

// The longest beginning of a text that takes at most `width` cells.
std::string_view beginning(std::string_view text, std::size_t width) {
    std::string_view rest = text;
    std::size_t used = 0;
    std::size_t bytes = 0;
    while (!rest.empty()) {
        Taken taken = take(rest);
        used += taken.code == broken ? 1 : widthOf(taken.code);
        if (used > width) break;
        bytes += taken.bytes.size();
    }
    return text.substr(0, bytes);
}

}  // namespace

std::size_t displayWidth(std::string_view text) {
    if (allPlain(text)) return text.size();
    std::size_t width = 0;
    while (!text.empty()) {
        Taken taken = take(text);
        width += taken.code == broken ? 1 : widthOf(taken.code);
    }
    return width;
}

std::string escaped(std::string_view text) {
    if (allPlain(text)) return std::string(text);
    std::string out;
    out.reserve(text.size() + 8);
    while (!text.empty()) {
        Taken taken = take(text);
        if (needsEscape(taken.code))
            appendEscape(out, taken.bytes);
        else
            out += taken.bytes;
    }
    return out;
}

std::size_t escapedWidth(std::string_view text) {
    if (allPlain(text)) return text.size();
    std::size_t width = 0;
    std::string escape;
    while (!text.empty()) {
        Taken taken = take(text);
        if (!needsEscape(taken.code)) {
            width += widthOf(taken.code);
            continue;
        }
        escape.clear();
        appendEscape(escape, taken.bytes);
        width += escape.size();
    }
    return width;
}

// No more of a long text is escaped than is shown.
std::string fitted(std::string_view text, std::size_t width) {
    if (allPlain(text) && text.size() <= width) return std::string(text);
    std::string safe;
    std::size_t used = 0;
    while (!text.empty() && used <= width) {
        Taken taken = take(text);
        const std::size_t before = safe.size();
        if (needsEscape(taken.code)) {
            appendEscape(safe, taken.bytes);
            used += safe.size() - before;
        } else {
            safe += taken.bytes;
            used += widthOf(taken.code);
        }
    }
    if (used <= width) return safe;
    if (width == 0) return {};
    return std::string(beginning(safe, width - 1)) + std::string(ellipsis);
}

bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        if (isPlain(static_cast<unsigned char>(text.front())))
            text.remove_prefix(1);
        else if (take(text).code == broken)
            return false;
    }
    return true;
}

}  // namespace vek::formats
