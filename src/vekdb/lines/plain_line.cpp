#include "vekdb/lines/plain_line.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "vekdb/bytes/value_cuts.h"

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
// What a word shows of the bytes before it is carried over from the word before.
class PlainLine::Separators {
public:
    // False where a value has a blank at its edge that a separator shows.
    bool find(const ByteMasks& now) {
        opened_ =
            now.quotes & (now.commas << 1 | carriedCommas_) & (now.quotes << 2 | carriedQuotes_);
        const std::uint64_t blankFirst = now.blanks & ((opened_ | first_) << 1 | carriedOpened_);
        const std::uint64_t blankLast = opened_ & (now.blanks << 3 | carriedBlanks_);
        return (blankFirst | blankLast) == 0;
    }

    std::uint64_t opened() const { return opened_; }
    // The quotes of the word before that neither open nor close a value.
    std::uint64_t leftBefore() const { return left_ ^ opened_ << 62; }
    // The same of this word, as far as is known yet.
    std::uint64_t leftNow(const ByteMasks& now) const {
        return now.quotes ^ first_ ^ opened_ ^ opened_ >> 2;
    }

    void advance(const ByteMasks& now) {
        left_ = leftNow(now);
        carriedCommas_ = now.commas >> 63;
        carriedQuotes_ = now.quotes >> 62;
        carriedBlanks_ = now.blanks >> 61;
        carriedOpened_ = (opened_ | first_) >> 63;
        first_ = 0;
    }

private:
    std::uint64_t opened_ = 0;
    std::uint64_t left_ = 0;
    std::uint64_t carriedCommas_ = 0;
    std::uint64_t carriedQuotes_ = 0;
    std::uint64_t carriedBlanks_ = 0;
    std::uint64_t carriedOpened_ = 0;
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
    const unsigned inLast = cutOffLast(count - 1);
    Separators separators;
    for (unsigned word = 0; word + 1 < count; ++word) {
        if (!separators.find(bytes_[word]) || separators.leftBefore() != 0) return false;
        openings_[word] = separators.opened();
        separators.advance(bytes_[word]);
    }
    const ByteMasks& now = bytes_[count - 1];
    if (!separators.find(now)) return false;
    openings_[count - 1] = separators.opened();
    const std::uint64_t lastBefore = inLast == 0 ? bit(63) : 0;
    const std::uint64_t last = inLast == 0 ? 0 : bit(inLast - 1);
    return separators.leftBefore() == lastBefore && separators.leftNow(now) == last &&
           takeEnd(line, end);
}

// What stands behind the line is none of it; how many bytes of the last word are.
unsigned PlainLine::cutOffLast(unsigned word) {
    ByteMasks& now = bytes_[word];
    const auto size = static_cast<unsigned>(std::countr_zero(now.others));
    const std::uint64_t inLine = bit(size) - 1;
    now = {now.quotes & inLine, now.commas & inLine, now.blanks & inLine, 0};
    size_ = word * wordBits + size;
    return size;
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
    const auto words = static_cast<unsigned>((size_ + wordBits - 1) / wordBits);
    std::uint16_t* const last = cutValues(line, openings_, words, next);
    line[size_ - 1] = '\0';
    *last = static_cast<std::uint16_t>(size_ + 1);
    return static_cast<unsigned>(last + 1 - next);
}
