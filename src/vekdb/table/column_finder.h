#pragma once

#include <vekdb/table.h>
#include "vekdb/query/label_range.h"

/// Finds the columns of a table, which outlives it, by the table's own `get_fieldnum`.
inline FindColumn columnFinder(const vekdb& table) {
    return [&table](const char* name) { return table.get_fieldnum(name); };
}
