#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

/// What was found in one line.
struct LineScan {
    std::size_t steps = 0;   ///< one a value, one a skipped control character
    std::size_t values = 0;  ///< all of them, also those that no record has room for
};

/// Takes a record line apart into its values, by every rule of the format: quotes and doubled
/// quotes, backslashes, blanks at the edges, skipped control characters, the cut of a value that
/// has reached 4095 bytes. Meant to be used for many lines, one after the other.
class LineScanner {
public:
    static constexpr std::size_t mostValues = 0xFFFF;
    static constexpr std::size_t longestValue = 4095;

    /// Moves the values of `line` together at `out`, a NUL behind each. `out` is the line itself
    /// or another place; either way one byte more than the line is written at most. What was
    /// found before is forgotten.
    LineScan scan(std::string_view line, char* out);

    /// The values that were kept, at most 65,535.
    unsigned count() const { return static_cast<unsigned>(next_.size()); }
    std::string_view value(unsigned i) const;
    /// Where the value behind value i starts, or would start, counted from `out`.
    std::size_t next(unsigned i) const { return next_[i]; }

private:
    char* out_ = nullptr;
    std::vector<std::size_t> next_;
};

/// A line of plainly quoted values, `"..","..",".."`, in which nothing has to be moved: no quote,
/// backslash or control character in a value and no blank at a value's edge. Nearly every line
/// of a saved table is one.
class QuotedLine {
public:
    /// No value of such a line can be long enough to be cut.
    static constexpr std::size_t longest = 4095;
    static constexpr unsigned gap = 3;

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

    bool takeEnd(const char* line, std::size_t size, const char* end);

    std::size_t size_ = 0;
    std::size_t fullSize_ = 0;
    std::uint64_t openings_[words];  // the quotes that open a value, save the first
};
