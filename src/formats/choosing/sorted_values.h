#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "formats/log/log.h"

namespace vek::formats {

/// The values that a column has, each once, in the order that sorting by the column gives rows.
/// They are the log's own cells.
struct SortedValues {
    std::vector<std::string_view> values;
    /// Whether a value is the same to a sort as the one before it: "1" behind "01".
    std::vector<bool> isSameAsBefore;
    /// For each row of the table the place of its value.
    std::vector<std::uint32_t> placeOf;
};

/// Rows with one value are told apart by a hash, so that only one of them is sorted.
SortedValues sortedValues(const Log& log, unsigned column);

}  // namespace vek::formats
