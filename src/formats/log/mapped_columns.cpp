#include "formats/log/mapped_columns.h"

#include <vekdb/views/field_map.h>
#include "formats/log/column_names.h"
#include "formats/writing/writers.h"

namespace vek::formats {

std::vector<unsigned> mappedColumns(const Log& log) {
    if (log.parameter("V5_FIELD_MAP").empty()) return allColumns(log);
    DistinctNames distinct(log);
    FieldMap map(*log.table);
    std::vector<unsigned> columns;
    for (unsigned n = 0; n < map.numVisible(); ++n) {
        int column = map.getVisibleFieldIndex(static_cast<int>(n));
        if (column >= 0) columns.push_back(static_cast<unsigned>(column));
    }
    return columns.empty() ? allColumns(log) : columns;
}

}  // namespace vek::formats
