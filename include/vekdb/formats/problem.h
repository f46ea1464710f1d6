#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vek {

/// Something odd that a reader found, in a log that could be read all the same. A value.
struct Problem {
    std::size_t line = 0;       ///< from 1 on; 0 when it belongs to no line
    std::string column = {};    ///< the name of a column, "" for none
    std::string found = {};     ///< what is there
    std::string expected = {};  ///< what should be
    std::string outcome = {};   ///< what was made of it, or what to do
    bool isDamage = true;       ///< false for what is odd and yet right

    /// "FILE:LINE:COLUMN: found, expected ...; outcome", as far as there is something to say.
    std::string text(std::string_view file) const;
};

}  // namespace vek
