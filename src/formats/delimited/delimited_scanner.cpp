#include "formats/delimited/delimited_scanner.h"

#include <algorithm>
#include <cstring>

namespace vek::formats {

namespace {

constexpr std::size_t manyCells = 1 << 16;

std::string_view between(const char* from, const char* to) {
    return {from, static_cast<std::size_t>(to - from)};
}

char* moveDown(const char* from, const char* to, char* out) {
    const auto size = static_cast<std::size_t>(to - from);
    if (from != out) std::memmove(out, from, size);
    return out + size;
}

}  // namespace

DelimitedScanner::DelimitedScanner(char* begin, char* end, char separator, Quotes quotes,
                                   std::size_t line)
    : begin_(begin),
      at_(begin),
      end_(end),
      first_(begin),
      separator_(separator),
      quote_(quotes == Quotes::respected ? '"' : '\n'),
      marks_(begin, end, {separator, quote_, '\n', '\r'}),
      line_(line) {}

void DelimitedScanner::goOn(char* begin, char* end) {
    begin_ = at_ = first_ = begin;
    end_ = end;
    marks_.goOn(begin, end);
}

const std::vector<std::string_view>& DelimitedScanner::takeRecord() {
    cells_.clear();
    first_ = at_;
    if (takePlainCells()) {
        takeLineEnd();
        return cells_;
    }
    do {
        if (cells_.size() == cells_.capacity() && cells_.size() >= manyCells) makeRoom();
        const bool isQuoted = at_ != end_ && *at_ == quote_ && quote_ == '"';
        cells_.push_back(isQuoted ? takeQuoted() : takePlain());
    } while (takeSeparator());
    takeLineEnd();
    return cells_;
}

void DelimitedScanner::passTo(char* cellsEnd) {
    first_ = at_;
    at_ = cellsEnd;
    takeLineEnd();
}

// The cells up to the end of the line, as nearly every line has them. False at the first that has
// a quote or for which there is no room: it is the next then.
bool DelimitedScanner::takePlainCells() {
    const char separator = separator_;
    char* at = at_;
    for (std::size_t room = cells_.capacity(); room > 0; --room) {
        char* const cellEnd = next(at);
        if (cellEnd == end_ || (*cellEnd == '"' && quote_ == '"')) break;
        cells_.push_back(between(at, cellEnd));
        at = cellEnd;
        if (*at != separator) {
            at_ = at;
            return true;
        }
        ++at;
    }
    at_ = at;
    return false;
}

// Room that is doubled for the cells of a very long line would be more than its text is.
void DelimitedScanner::makeRoom() {
    const auto rest = static_cast<std::size_t>(end_ - at_);
    const void* const feed = std::memchr(at_, '\n', rest);
    const char* const lineEnd = feed != nullptr ? static_cast<const char*>(feed) : end_;
    const std::size_t more =
        1 + ByteMarks::count(at_, lineEnd, {separator_, separator_, separator_, separator_});
    cells_.reserve(cells_.size() + std::max(more, cells_.size() / 4));
}

bool DelimitedScanner::takeSeparator() {
    if (at_ == end_ || *at_ != separator_) return false;
    ++at_;
    return true;
}

void DelimitedScanner::takeLineEnd() {
    ++line_;
    if (at_ == end_) return;
    const bool isCr = *at_++ == '\r';
    const bool isBoth = isCr && at_ != end_ && *at_ == '\n';
    if (isBoth) ++at_;
    seen_.add(isBoth ? LineEnd::crlf : isCr ? LineEnd::cr : LineEnd::lf);
}

// Inside of a cell that does not begin with one, a quote is a byte like others.
std::string_view DelimitedScanner::takePlain() {
    char* const start = at_;
    at_ = next(at_);
    while (at_ != end_ && *at_ == '"' && quote_ == '"') at_ = next(at_ + 1);
    return between(start, at_);
}

void DelimitedScanner::countLine(const char* at) {
    const bool isFeedOfBoth = *at == '\n' && at[-1] == '\r';
    if ((*at == '\n' && !isFeedOfBoth) || *at == '\r') ++line_;
}

// The next quote, or the end of the text.
char* DelimitedScanner::takeUpToClosingQuote() {
    char* at = next(at_);
    for (; at != end_ && *at != '"'; at = next(at + 1)) countLine(at);
    at_ = at;
    return at;
}

// Of two quotes one is part of the cell, as is what stands between the closing quote and the end
// of the cell.
std::string_view DelimitedScanner::takeQuoted() {
    const std::size_t openedOn = line_;
    char* const start = ++at_;
    char* out = start;
    for (const char* from = start;;) {
        char* const quote = takeUpToClosingQuote();
        const bool isDoubled = quote != end_ && quote + 1 != end_ && quote[1] == '"';
        out = moveDown(from, quote + (isDoubled ? 1 : 0), out);
        if (quote == end_) {
            openQuoteLine_ = openedOn;
            return between(start, out);
        }
        at_ = quote + (isDoubled ? 2 : 1);
        from = at_;
        if (!isDoubled) break;
    }
    const std::string_view behind = takePlain();
    if (!behind.empty() && !hasStrayText()) stray_ = {cells_.size(), openedOn, line_};
    out = moveDown(behind.data(), behind.data() + behind.size(), out);
    return between(start, out);
}

}  // namespace vek::formats
