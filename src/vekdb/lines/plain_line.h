#pragma once

#include <cstddef>
#include <cstdint>

#include "vekdb/bytes/line_bytes.h"

/// A line of plainly quoted values, `"..","..",".."`, in which nothing has to be moved: no quote,
/// backslash or control character in a value and no blank at a value's edge. Nearly every line
/// of a saved table is one.
class PlainLine {
public:
    /// No value of such a line can be long enough to be cut.
    static constexpr std::size_t longest = 4095;
    /// A line is told apart by no byte further on, its end of line included.
    static constexpr std::ptrdiff_t mostLookedAt = longest + 3;

    /// Looks at the line that begins at `line`, of a text that ends at `end`. False for every
    /// other line.
    bool recognise(const char* line, const char* end);

    /// How many values the line may have.
    unsigned mostValues() const { return static_cast<unsigned>(size_ / 3 + 1); }
    /// Ends each value of the line just recognised with a NUL, where its closing quote stands,
    /// and fills in the starts of the values as LineSlices keeps them; the first one starts
    /// behind the line's first byte. How many values there are.
    unsigned cutUp(char* line, std::uint16_t* next) const;
    /// The bytes of the line and its end of line.
    std::size_t fullSize() const { return fullSize_; }

private:
    static constexpr std::size_t wordBits = 64;
    static constexpr std::size_t words = (longest + 1) / wordBits;

    class Separators;

    unsigned classify(const char* line, const char* end);
    unsigned cutOffLast(unsigned word);
    bool takeEnd(const char* line, const char* end);

    std::size_t size_ = 0;
    std::size_t fullSize_ = 0;
    ByteMasks bytes_[words];
    std::uint64_t openings_[words];  // the quotes that open a value, save the first
};
