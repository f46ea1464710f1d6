#include "formats/log/column_map.h"

#include <algorithm>
#include <new>
#include <string>

namespace vek::formats {

ColumnMap::ColumnMap(const Log& log) {
    std::vector<DBFieldDesc> columns;
    for (unsigned i = 0; i < log.columnCount(); ++i) {
        columns.push_back({cellText(std::to_string(nextName_++)), DBFieldTypes::text});
    }
    columns_.addFields(columns);
    const std::string text = log.parameter(columnMapName);
    columns_.set_param_val(columnMapName, text.c_str());
    // A value that there is no memory for is stored as an empty one.
    const char* const stored = columns_.get_param_val(columnMapName);
    if (stored == nullptr || text != stored) throw std::bad_alloc();
    map_.setSourceDb(VDBView(&columns_));
}

std::vector<unsigned> ColumnMap::shown() const {
    std::vector<unsigned> columns;
    for (unsigned n = 0; n < map_.numVisible(); ++n) {
        const int column = map_.getVisibleFieldIndex(static_cast<int>(n));
        if (column >= 0) columns.push_back(static_cast<unsigned>(column));
    }
    return columns;
}

// A map is read three characters an entry, so positions from 100 on cannot stand in it as hidden;
// columns that do not stand in it are not shown either.
void ColumnMap::show(const std::vector<unsigned>& columns) {
    map_.clear();
    for (unsigned column : columns) append(column, true);
    const unsigned hidden = std::min(columns_.get_num_fields(), 99u);
    for (unsigned column = 0; column < hidden; ++column) append(column, false);
}

void ColumnMap::added() {
    columns_.addField({cellText(std::to_string(nextName_++)), DBFieldTypes::text});
    append(columns_.get_num_fields() - 1, true);
}

void ColumnMap::removed(unsigned column) {
    const LightweightString<char> name = columns_.get_fieldname(column);
    map_.remove(name);
    columns_.removeField(name);
}

void ColumnMap::append(unsigned column, bool isShown) {
    map_.append(columns_.get_fieldname(column), isShown);
}

}  // namespace vek::formats
