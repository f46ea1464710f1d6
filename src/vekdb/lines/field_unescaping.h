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
class FieldUnescaper {
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
