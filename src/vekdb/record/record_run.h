#pragma once

#include <cstdint>

class dbrecord;

/// Records of rows that stand one behind the other. A row may have none.
struct RecordRun {
    dbrecord* const* records;
    unsigned count;
};

/// All rows in order, as runs, and a number that is another one whenever a row may have another
/// place than before.
struct RowsInOrder {
    RecordRun runs[2];
    std::uint64_t order;

    unsigned count() const { return runs[0].count + runs[1].count; }
};
