#include "formats/writing/plain_lines.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "formats/text/encoding.h"
#include "formats/text/utf8.h"
#include "formats/writing/cell_run.h"

namespace vek::formats {

namespace {

std::size_t sizeOf(const std::string_view* cells, std::size_t count) {
    std::size_t size = 0;
    for (std::size_t i = 0; i < count; ++i) size += cells[i].size();
    return size;
}

char* makeRoom(std::string& line, std::size_t size) {
    if (line.size() < size) line.resize(2 * size);
    return line.data();
}

char* append(char* to, std::string_view text) {
    if (!text.empty()) std::memcpy(to, text.data(), text.size());
    return to + text.size();
}

std::string_view between(const char* begin, const char* end) {
    return {begin, static_cast<std::size_t>(end - begin)};
}

bool isSpecialInJson(char c) {
    return static_cast<signed char>(c) < ' ' || c == '"' || c == '\\';
}

// Counted in bytes, of so few characters at a time that they cannot overflow: many are looked at
// together then.
std::size_t countSpecialInJson(std::string_view text) {
    constexpr std::size_t atOnce = 128;
    std::size_t all = 0;
    while (!text.empty()) {
        std::uint8_t found = 0;
        for (char c : text.substr(0, atOnce)) {
            found = static_cast<std::uint8_t>(found + (isSpecialInJson(c) ? 1 : 0));
        }
        all += found;
        text.remove_prefix(std::min(atOnce, text.size()));
    }
    return all;
}

// Whether the cells may stand in strings as they are.
bool arePlainInJson(const std::string_view* cells, std::size_t count) {
    if (const std::optional<CellRun> run = CellRun::of(cells, count)) {
        return countSpecialInJson(run->text) == run->gaps * (run->isQuoted ? 2 : 1);
    }
    return std::all_of(cells, cells + count,
                       [](std::string_view cell) { return countSpecialInJson(cell) == 0; });
}

}  // namespace

PlainLines::PlainLines(const Sheet& sheet, char separator, std::string_view special)
    : row_(sheet), separator_(separator) {
    kinds_.fill(separator);
    std::copy_n(special.begin(), std::min(special.size(), kinds_.size() - 1), kinds_.begin());
}

std::string_view PlainLines::line(unsigned row, std::string_view end) {
    const std::size_t count = row_.size();
    if (count == 0) return {};
    const std::string_view* const cells = row_.cells(row);
    char* const begin = makeRoom(line_, sizeOf(cells, count) + count + end.size());
    char* to = begin;
    for (std::size_t i = 0; i < count; ++i) {
        to = append(to, cells[i]);
        *to++ = separator_;
    }
    --to;
    if (!isPlain(begin, to)) return {};
    return between(begin, append(to, end));
}

// A separator of the line's own between each two cells and nothing else that means something, no
// byte that a byte order mark begins with, none that would end the text, and UTF-8 all through.
bool PlainLines::isPlain(const char* begin, const char* end) const {
    constexpr ByteMarks::Kinds never = {'\0', byteOrderMark[0], '\0', byteOrderMark[0]};
    return ByteMarks::count(begin, end, kinds_) + 1 == row_.size() &&
           ByteMarks::count(begin, end, never) == 0 && isWellFormedUtf8(between(begin, end));
}

PlainJsonLines::PlainJsonLines(const Sheet& sheet, std::vector<std::string> before)
    : row_(sheet), before_(std::move(before)) {
    for (std::string& text : before_) {
        text += '"';
        if (&text != &before_.front()) text.insert(text.begin(), '"');
        fixed_ += text.size();
    }
}

std::string_view PlainJsonLines::line(unsigned row, std::string_view begin, std::string_view end) {
    const std::size_t count = row_.size();
    const std::string_view* const cells = row_.cells(row);
    if (count == 0 || !arePlainInJson(cells, count)) return {};
    const std::size_t around = begin.size() + fixed_ + 1 + end.size();
    char* const line = makeRoom(line_, around + sizeOf(cells, count));
    char* to = append(line, begin);
    for (std::size_t i = 0; i < count; ++i) {
        to = append(to, before_[i]);
        to = append(to, cells[i]);
    }
    *to++ = '"';
    return between(line, append(to, end));
}

}  // namespace vek::formats
