#include "formats/text/wrapping.h"

#include <algorithm>

#include "formats/text/width.h"

namespace vek::formats {

namespace {

// The bytes of the character at the front of a well-formed text.
std::size_t sizeOfFront(std::string_view text) {
    std::size_t size = 1;
    while (size < text.size() && (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80) ++size;
    return size;
}

// The characters at the front that fit into a line, at least one, with all that combine with the
// last of them.
std::size_t sizeOfLine(std::string_view text, std::size_t width) {
    std::size_t size = 0;
    std::size_t used = 0;
    while (size < text.size()) {
        const std::size_t next = sizeOfFront(text.substr(size));
        used += displayWidth(text.substr(size, next));
        if (used > width && size > 0) break;
        size += next;
    }
    return size;
}

// Where a line that can have so many bytes ends: in front of the last blank in it or behind it.
std::size_t endBetweenWords(std::string_view text, std::size_t size) {
    const std::size_t blank = text.rfind(' ', size);
    if (blank == std::string_view::npos) return size;
    const std::size_t letter = text.substr(0, blank).find_last_not_of(' ');
    return letter == std::string_view::npos ? size : letter + 1;
}

}  // namespace

std::vector<std::string> wrapped(std::string_view text, std::size_t width) {
    const std::string safe = escaped(text);
    std::string_view rest = safe;
    std::vector<std::string> lines;
    for (;;) {
        const std::size_t most = sizeOfLine(rest, width);
        if (most == rest.size()) break;
        const std::size_t end = endBetweenWords(rest, most);
        lines.emplace_back(rest.substr(0, end));
        rest.remove_prefix(end);
        // The blanks that a line ends with are not carried over.
        if (rest.starts_with(' ')) {
            rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
        }
        if (rest.empty()) return lines;
    }
    lines.emplace_back(rest);
    return lines;
}

}  // namespace vek::formats
