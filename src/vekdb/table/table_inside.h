#pragma once

#include <vekdb/table.h>
#include "vekdb/table/table_parts.h"

/// For the rooms above the table on its own floor: its parts, as a class derived from it may reach
/// them. Nothing is ever made of this class.
class TableInside final : public vekdb {
public:
    TableInside() = delete;
    static TableParts& of(vekdb& table) {
        TableParts& (vekdb::*parts)() = &TableInside::parts;
        return (table.*parts)();
    }
};
