#include <vekdb/column_sizes.h>

#include "vekdb/rows/field_sizes.h"
#include "vekdb/table/table_inside.h"

// What a table knows of its values is no change of it.
ColumnSizes::ColumnSizes(const vekdb& table)
    : parts_(TableInside::of(const_cast<vekdb&>(table))), isFirst_(parts_.knownSizes == nullptr) {
    if (!isFirst_) return;
    sizes_ = longestValues(parts_.rows, parts_.columns.count());
    parts_.knownSizes = &sizes_;
}

ColumnSizes::~ColumnSizes() {
    if (isFirst_) parts_.knownSizes = nullptr;
}
