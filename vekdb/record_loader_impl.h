#pragma once

#include "vekdb/record_lines_impl.h"
#include "vekdb/table.h"
#include "vekdb/table_parts_impl.h"

/// Appends records to a table, one a line, until a line says that there are no more: an
/// essentially empty one, or one with another number of values than the table has columns.
class RecordLoader {
public:
    /// With `skipFirst` the first line is passed over.
    RecordLoader(vekdb& table, TableParts& parts, RecordLines& lines, bool skipFirst)
        : table_(table), parts_(parts), lines_(lines), skips_(skipFirst) {}

    /// Appends at most `most` records; how many it appended.
    unsigned load(int most);

private:
    class Row;

    bool appendNext();
    bool isComplete(const LineScan& line);
    bool replacePassedOver(dbrecord& record);

    vekdb& table_;
    TableParts& parts_;
    RecordLines& lines_;
    bool skips_;
    unsigned loaded_ = 0;
};
