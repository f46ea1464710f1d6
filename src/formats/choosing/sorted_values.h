#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include <vekdb/views/view.h>
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

/// Sorts the values of one column after the other. It keeps the log's view for all of them, which
/// takes as long to make as the log has columns; the log stays as it is meanwhile.
class ValueSorting {
public:
    explicit ValueSorting(const Log& log);

    /// Rows with one value are told apart by a hash, so that only one of them is sorted.
    SortedValues valuesOf(unsigned column);

private:
    std::vector<unsigned> sortedRows(const std::vector<unsigned>& rows, unsigned column);
    /// Which of the sorted rows are the same to a sort by the column as those before them.
    std::vector<bool> samesOf(const std::vector<unsigned>& rows, unsigned column);

    const Log& log_;
    VDBView view_;
};

/// Those of one column.
SortedValues sortedValues(const Log& log, unsigned column);

}  // namespace vek::formats
