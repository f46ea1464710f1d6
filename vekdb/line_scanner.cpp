#include "vekdb/line_scanner_impl.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "host/text_util.h"
#include "vekdb/line_bytes_impl.h"

namespace {

// Reads one value from `at` on and writes it at `out`. Scanning by position and end, never past
// the end; in place the output never overtakes the input.
class ValueReader {
public:
    ValueReader(const char* at, const char* end, char* out)
        : at_(at), end_(end), start_(out), out_(out), solid_(out) {}

    void read() {
        open();
        while (at_ < end_ && !isFull()) {
            copyRun();
            if (at_ == end_ || isFull()) break;
            if (*at_ == ',' && !quoted_) break;
            if (*at_ == '"') {
                readQuote();
            } else {
                readBackslash();
            }
        }
        // The comma that ends the value; of a value that is cut, the byte that is lost.
        if (at_ < end_) ++at_;
        trim();
    }

    const char* at() const { return at_; }
    char* out() const { return out_; }

private:
    void open() {
        quoted_ = *at_ == '"';
        if (quoted_) ++at_;
        while (at_ < end_ && isAsciiSpace(*at_)) ++at_;
    }

    std::size_t length() const { return static_cast<std::size_t>(out_ - start_); }
    bool isFull() const { return length() >= LineScanner::longestValue; }
    bool isNext(char c) const { return end_ - at_ > 1 && at_[1] == c; }

    void copyRun() {
        const std::size_t most = std::min(static_cast<std::size_t>(end_ - at_),
                                          LineScanner::longestValue - length());
        const std::size_t copied = LineBytes::copyRun(at_, most, out_, quoted_);
        at_ += copied;
        out_ += copied;
    }

    void readQuote() {
        if (isNext('"')) {
            *out_++ = '"';
            at_ += 2;
        } else {
            quoted_ = false;
            ++at_;
        }
    }

    void readBackslash() {
        if (isNext('n')) {
            *out_++ = '\n';
            solid_ = out_;
            at_ += 2;
        } else {
            if (isNext('\\')) *out_++ = *at_++;
            *out_++ = *at_++;
        }
    }

    // White space that stands in the line goes; a line feed that was written as an escape is
    // part of the value.
    void trim() {
        while (out_ > solid_ && isAsciiSpace(out_[-1])) --out_;
    }

    const char* at_;
    const char* end_;
    char* start_;
    char* out_;
    char* solid_;  // behind the last escaped line feed
    bool quoted_ = false;
};

}  // namespace

LineScan LineScanner::scan(std::string_view line, char* out) {
    LineScan found;
    out_ = out;
    next_.clear();
    const char* at = line.data();
    const char* const end = at + line.size();
    for (; at < end; ++found.steps) {
        if (isAsciiControl(*at)) {
            ++at;
            continue;
        }
        ValueReader value(at, end, out);
        value.read();
        at = value.at();
        ++found.values;
        if (next_.size() == mostValues) continue;
        out = value.out();
        *out++ = '\0';
        next_.push_back(static_cast<std::size_t>(out - out_));
    }
    return found;
}

std::string_view LineScanner::value(unsigned i) const {
    const std::size_t from = i == 0 ? 0 : next_[i - 1];
    return {out_ + from, next_[i] - from - 1};
}

namespace {

constexpr std::uint64_t bit(std::size_t i) { return std::uint64_t{1} << i; }

// The kinds of the 64 bytes at `at`. Where the text ends before, line feeds stand in for more.
ByteMasks classifyWithin(const char* at, const char* end) {
    const auto left = static_cast<std::size_t>(end - at);
    if (left >= 64) return LineBytes::classify(at);
    char padded[64];
    std::memset(padded, '\n', sizeof padded);
    std::memcpy(padded, at, left);
    return LineBytes::classify(padded);
}

}  // namespace

// Finds the quotes that open a value, word by word: those with a quote and a comma before them.
// Shifted masks bring the bytes before a byte, also those of the word before, to its bit.
class QuotedLine::Separators {
public:
    // False where a value has a blank at its edge that a separator shows.
    bool find(const ByteMasks& now) {
        opened_ = now.quotes & (now.commas << 1 | before_.commas >> 63) &
                  (now.quotes << 2 | before_.quotes >> 62);
        const std::uint64_t blankFirst = now.blanks & ((opened_ | first_) << 1 | openedBefore_);
        const std::uint64_t blankLast = opened_ & (now.blanks << 3 | before_.blanks >> 61);
        return (blankFirst | blankLast) == 0;
    }

    // The quotes of the word before that neither open nor close a value.
    std::uint64_t leftBefore() const { return left_ ^ opened_ << 62; }
    // The same of this word, as far as is known yet.
    std::uint64_t leftNow(const ByteMasks& now) const {
        return now.quotes ^ first_ ^ opened_ ^ opened_ >> 2;
    }
    std::uint64_t opened() const { return opened_; }

    void advance(const ByteMasks& now) {
        left_ = leftNow(now);
        openedBefore_ = (opened_ | first_) >> 63;
        before_ = now;
        first_ = 0;
    }

private:
    ByteMasks before_;
    std::uint64_t opened_ = 0;
    std::uint64_t openedBefore_ = 0;
    std::uint64_t left_ = 0;
    std::uint64_t first_ = 1;  // the line's first byte opens its first value
};

// Take away the quotes that open a value and those that close the value before, and none but the
// line's first and last are left. A quote that was taken for both stays and gives the line away.
bool QuotedLine::recognise(const char* line, const char* end) {
    if (line == end || *line != '"') return false;
    Separators separators;
    for (std::size_t word = 0; word < words; ++word) {
        ByteMasks now = classifyWithin(line + word * wordBits, end);
        const bool isLast = now.others != 0;
        const auto size = static_cast<std::size_t>(std::countr_zero(now.others));
        if (isLast) {
            const std::uint64_t inLine = bit(size) - 1;
            now = {now.quotes & inLine, now.commas & inLine, now.blanks & inLine, 0};
        }
        if (!separators.find(now)) return false;
        openings_[word] = separators.opened();
        if (isLast) {
            const std::uint64_t lastBefore = size == 0 ? bit(63) : 0;
            const std::uint64_t last = size == 0 ? 0 : bit(size - 1);
            return separators.leftBefore() == lastBefore && separators.leftNow(now) == last &&
                   takeEnd(line, word * wordBits + size, end);
        }
        if (separators.leftBefore() != 0) return false;
        separators.advance(now);
    }
    return false;
}

// What ended the line must be an end of line or the end of the text.
bool QuotedLine::takeEnd(const char* line, std::size_t size, const char* end) {
    const char* at = line + size;
    if (at[-2] == ' ') return false;
    size_ = size;
    if (at != end && *at == '\r') ++at;
    if (at != end && *at++ != '\n') return false;
    fullSize_ = static_cast<std::size_t>(at - line);
    return true;
}

unsigned QuotedLine::cutUp(char* line, std::uint16_t* next) const {
    unsigned count = 0;
    for (std::size_t word = 0; word * wordBits < size_; ++word) {
        for (std::uint64_t left = openings_[word]; left != 0; left &= left - 1) {
            const std::size_t opening =
                word * wordBits + static_cast<std::size_t>(std::countr_zero(left));
            line[opening - 2] = '\0';
            next[count++] = static_cast<std::uint16_t>(opening);
        }
    }
    line[size_ - 1] = '\0';
    next[count++] = static_cast<std::uint16_t>(size_ + 1);
    return count;
}
