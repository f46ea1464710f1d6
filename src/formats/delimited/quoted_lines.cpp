#include "formats/delimited/quoted_lines.h"

#include <cstring>

#include <vekdb/byte_marks.h>
#include "formats/text/utf8.h"

namespace vek::formats {

namespace {

char* append(char* to, std::string_view text) {
    if (!text.empty()) std::memcpy(to, text.data(), text.size());
    return to + text.size();
}

std::size_t countOf(std::string_view line, const ByteMarks::Kinds& kinds) {
    return ByteMarks::count(line.data(), line.data() + line.size(), kinds);
}

}  // namespace

// A cell that stood between quotes and has none inside reads as it did where nobody changed it, and
// gets the same quotes where somebody did.
std::string_view QuotedLines::line(unsigned row, const std::vector<std::string_view>& came) {
    const std::string_view* const cells = row_.cells(row);
    char* const begin = makeRoom(cells);
    char* to = begin;
    std::size_t quoted = 0;
    for (std::size_t i = 0; i < row_.size(); ++i) {
        const bool isQuoted = came[i].starts_with('"');
        if (isQuoted && (came[i].size() == 1 || came[i].back() != '"')) return {};
        if (isQuoted) *to++ = '"';
        to = append(to, cells[i]);
        if (isQuoted) *to++ = '"';
        *to++ = separator_;
        quoted += isQuoted;
    }
    const std::string_view line(begin, static_cast<std::size_t>(to - begin) - 1);
    return isPlain(line, quoted) ? line : std::string_view();
}

// For each cell two quotes and a separator.
char* QuotedLines::makeRoom(const std::string_view* cells) {
    std::size_t size = 3 * row_.size();
    for (std::size_t i = 0; i < row_.size(); ++i) size += cells[i].size();
    if (line_.size() < size) line_.resize(2 * size);
    return line_.data();
}

// No quotes but those around cells, and no byte that is told of or that a byte order mark begins
// with. Where cells stand without quotes, separators and ends of lines are no part of any.
bool QuotedLines::isPlain(std::string_view line, std::size_t quoted) const {
    constexpr ByteMarks::Kinds never = {'\0', byteOrderMark[0], '\0', byteOrderMark[0]};
    if (countOf(line, never) != 0) return false;
    if (quoted == row_.size()) return countOf(line, {'"', '"', '"', '"'}) == 2 * quoted;
    return countOf(line, {'"', separator_, '\n', '\r'}) == 2 * quoted + row_.size() - 1;
}

}  // namespace vek::formats
