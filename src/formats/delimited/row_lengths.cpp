#include "formats/delimited/row_lengths.h"

#include <algorithm>

namespace vek::formats {

namespace {

bool isUnnamed(const Log& log, unsigned column) {
    return !log.unnamed.empty() && log.unnamed.contains(log.columnName(column));
}

}  // namespace

Sheet unnamedLast(const Sheet& sheet) {
    Sheet out = sheet;
    std::stable_partition(out.columns.begin(), out.columns.end(),
                          [&](unsigned column) { return !isUnnamed(sheet.log, column); });
    return out;
}

RowLengths::RowLengths(const Sheet& sheet, bool areKept)
    : sheet_(sheet), named_(sheet.columns.size()), areKept_(areKept) {
    if (!areKept) return;
    while (named_ > 0 && isUnnamed(sheet.log, sheet.columns[named_ - 1])) --named_;
}

std::size_t RowLengths::of(unsigned row) const {
    if (!areKept_) return named_;
    const std::size_t length = cameWith(row);
    // A lone empty value would be an empty line, which is no row.
    const bool isBlank = length == 1 && named_ > 1 && sheet_.cell(row, 0).empty();
    return isBlank ? 2 : length;
}

std::size_t RowLengths::cameWith(unsigned row) const {
    const std::vector<OddRow>& odd = sheet_.log.oddRows;
    const unsigned base = sheet_.view->baseIndex(row);
    auto at = std::lower_bound(odd.begin(), odd.end(), base,
                               [](const OddRow& one, unsigned r) { return one.row < r; });
    if (at == odd.end() || at->row != base) return upToLastValue(row, named_);
    std::size_t least = 0;
    for (std::size_t i = 0; i < sheet_.columns.size(); ++i) {
        if (sheet_.columns[i] < at->values) least = i + 1;
    }
    return upToLastValue(row, std::max<std::size_t>(least, 1)) + at->behind;
}

std::size_t RowLengths::upToLastValue(unsigned row, std::size_t least) const {
    std::size_t length = sheet_.columns.size();
    while (length > least && sheet_.cell(row, static_cast<unsigned>(length - 1)).empty()) --length;
    return length;
}

void nameColumns(Log& log, const std::vector<unsigned>& columns) {
    if (std::any_of(columns.begin(), columns.end(),
                    [&](unsigned column) { return isUnnamed(log, column); })) {
        log.unnamed.clear();
    }
}

}  // namespace vek::formats
