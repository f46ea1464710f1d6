#include "formats/log/mapped_columns.h"

#include <numeric>

#include "formats/log/column_map.h"

namespace vek::formats {

std::vector<unsigned> allColumns(const Log& log) {
    std::vector<unsigned> columns(log.columnCount());
    std::iota(columns.begin(), columns.end(), 0u);
    return columns;
}

std::vector<unsigned> mappedColumns(const Log& log) {
    if (log.parameter(columnMapName).empty()) return allColumns(log);
    std::vector<unsigned> columns = ColumnMap(log).shown();
    return columns.empty() ? allColumns(log) : columns;
}

}  // namespace vek::formats
