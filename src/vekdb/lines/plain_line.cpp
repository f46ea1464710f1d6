#include "vekdb/lines/plain_line.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace {

constexpr std::uint64_t bit(std::size_t i) {
    return std::uint64_t{1} << i;
}

// The kinds of the first bytes of a text that is shorter than a block. Line feeds stand in for
// more.
ByteMasks classifyShort(const char* at, std::size_t size) {
    char padded[64];
    std::memset(padded, '\n', sizeof padded);
    std::memcpy(padded, at, size);
    return LineBytes::classify(padded);
}

}  // namespace

// Finds the quotes that open a value, word by word: those with a quote and a comma before them.
// Shifted masks bring the bytes before a byte, also those of the word before, to its bit.
class PlainLine::Separators {
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

// Sorts the bytes of the line, word by word, up to the one that ends it; how many words. None
// where the line is too long.
unsigned PlainLine::classify(const char* line, const char* end) {
    const auto left = static_cast<std::size_t>(end - line);
    const auto whole = static_cast<unsigned>(std::min(left / wordBits, words));
    const unsigned found = whole == 0 ? 0 : classifyBlocks(line, whole, bytes_);
    if (found > 0 && bytes_[found - 1].others != 0) return found;
    if (whole == words) return 0;
    bytes_[whole] = classifyShort(line + whole * wordBits, left % wordBits);
    return whole + 1;
}

// Take away the quotes that open a value and those that close the value before, and none but the
// line's first and last are left. A quote that was taken for both stays and gives the line away.
bool PlainLine::recognise(const char* line, const char* end) {
    if (line == end || *line != '"') return false;
    const unsigned count = classify(line, end);
    if (count == 0) return false;
    Separators separators;
    for (unsigned word = 0; word + 1 < count; ++word) {
        if (!separators.find(bytes_[word]) || separators.leftBefore() != 0) return false;
        openings_[word] = separators.opened();
        separators.advance(bytes_[word]);
    }
    return recogniseLast(separators, count - 1) && takeEnd(line, end);
}

bool PlainLine::recogniseLast(Separators& separators, unsigned word) {
    ByteMasks& now = bytes_[word];
    const auto size = static_cast<std::size_t>(std::countr_zero(now.others));
    const std::uint64_t inLine = bit(size) - 1;
    now = {now.quotes & inLine, now.commas & inLine, now.blanks & inLine, 0};
    if (!separators.find(now)) return false;
    openings_[word] = separators.opened();
    size_ = word * wordBits + size;
    const std::uint64_t lastBefore = size == 0 ? bit(63) : 0;
    const std::uint64_t last = size == 0 ? 0 : bit(size - 1);
    return separators.leftBefore() == lastBefore && separators.leftNow(now) == last;
}

// What ended the line must be an end of line or the end of the text.
bool PlainLine::takeEnd(const char* line, const char* end) {
    const char* at = line + size_;
    if (at[-2] == ' ') return false;
    if (at != end && *at == '\r') ++at;
    if (at != end && *at++ != '\n') return false;
    fullSize_ = static_cast<std::size_t>(at - line);
    return true;
}

unsigned PlainLine::cutUp(char* line, std::uint16_t* next) const {
    std::uint16_t* to = next;
    const std::size_t size = size_;
    for (std::size_t first = 0; first < size; first += wordBits) {
        for (std::uint64_t left = openings_[first / wordBits]; left != 0; left &= left - 1) {
            const std::size_t opening = first + static_cast<std::size_t>(std::countr_zero(left));
            line[opening - 2] = '\0';
            *to++ = static_cast<std::uint16_t>(opening);
        }
    }
    line[size - 1] = '\0';
    *to++ = static_cast<std::uint16_t>(size + 1);
    return static_cast<unsigned>(to - next);
}
