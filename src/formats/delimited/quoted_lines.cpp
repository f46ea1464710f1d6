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
    if (!hasQuotesAroundCellsAlone(line, quoted)) return {};
    const bool isPlain = quoted == row_.size() || arePlainOutside(line, cells, came);
    return isPlain ? line : std::string_view();
}

// For each cell two quotes and a separator.
char* QuotedLines::makeRoom(const std::string_view* cells) {
    std::size_t size = 3 * row_.size();
    for (std::size_t i = 0; i < row_.size(); ++i) size += cells[i].size();
    if (line_.size() < size) line_.resize(2 * size);
    return line_.data();
}

// Nor is there a byte that is told of or that a byte order mark begins with.
bool QuotedLines::hasQuotesAroundCellsAlone(std::string_view line, std::size_t quoted) const {
    constexpr ByteMarks::Kinds never = {'\0', byteOrderMark[0], '\0', byteOrderMark[0]};
    return countOf(line, never) == 0 && countOf(line, {'"', '"', '"', '"'}) == 2 * quoted;
}

// Whether separators and ends of lines are part of cells between quotes alone.
bool QuotedLines::arePlainOutside(std::string_view line, const std::string_view* cells,
                                  const std::vector<std::string_view>& came) const {
    const ByteMarks::Kinds marks = {separator_, separator_, '\n', '\r'};
    std::size_t allowed = row_.size() - 1;
    for (std::size_t i = 0; i < row_.size(); ++i) {
        if (came[i].starts_with('"')) allowed += countOf(cells[i], marks);
    }
    return countOf(line, marks) == allowed;
}

}  // namespace vek::formats
