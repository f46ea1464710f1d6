#pragma once

#include <vekdb/table.h>
#include "vekdb/table/table_parts.h"

/// The parts of a table, for the rooms above it on its own floor.
struct TableInside {
    static TableParts& of(vekdb& table) { return table.parts(); }
    static const TableParts& of(const vekdb& table) { return table.parts(); }
};
