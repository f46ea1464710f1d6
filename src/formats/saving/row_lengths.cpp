#include "formats/saving/row_lengths.h"

#include <algorithm>

#include "formats/log/column_names.h"

namespace vek::formats {

std::vector<unsigned> unnamedLast(const Log& log, const std::vector<unsigned>& columns) {
    std::vector<unsigned> out = columns;
    std::stable_partition(out.begin(), out.end(),
                          [&](unsigned column) { return !isUnnamed(log, column); });
    return out;
}

RowLengths::RowLengths(const Log& log, const std::vector<unsigned>& columns)
    : source_(*log.source), named_(columns.size()), cameNamed_(source_.named) {
    for (unsigned column : columns) cameFrom_.push_back(source_.whereFrom(column));
    while (named_ > 0 && isUnnamed(log, columns[named_ - 1])) --named_;
}

std::size_t RowLengths::of(const Sheet& sheet, unsigned row, std::size_t came) const {
    const std::size_t length = inPlaceOf(sheet, row, came);
    // A lone empty value would be an empty line, which is no row.
    const bool isBlank = length == 1 && named_ > 1 && sheet.cell(row, 0).empty();
    return isBlank ? 2 : length;
}

std::size_t RowLengths::inPlaceOf(const Sheet& sheet, unsigned row, std::size_t came) const {
    if (came == 0 || came == cameNamed_) return upToLastValue(sheet, row, named_);
    const std::size_t behind = came - std::min(came, source_.columns.size());
    const std::size_t least = std::max<std::size_t>(leastOf(came - behind), 1);
    return upToLastValue(sheet, row, least) + behind;
}

// Up to the last column that the row had a value for.
std::size_t RowLengths::leastOf(std::size_t came) const {
    std::size_t least = 0;
    for (std::size_t i = 0; i < cameFrom_.size(); ++i) {
        if (cameFrom_[i] < came) least = i + 1;
    }
    return least;
}

std::size_t RowLengths::upToLastValue(const Sheet& sheet, unsigned row, std::size_t least) const {
    std::size_t length = sheet.columns.size();
    while (length > least && sheet.cell(row, static_cast<unsigned>(length - 1)).empty()) --length;
    return length;
}

}  // namespace vek::formats
