#pragma once

#include <vekdb/table.h>
#include "vekdb/lines/record_lines.h"
#include "vekdb/lines/row_sieve.h"
#include "vekdb/table/table_parts.h"

/// Appends records to a table, one a line, until a line says that there are no more: an
/// essentially empty one, or one with another number of values than the table has columns.
class RecordLoader {
public:
    /// With `skipFirst` the first line is passed over. The sieve outlives the loader.
    RecordLoader(vekdb& table, TableParts& parts, RecordLines& lines, const RowSieve& sieve,
                 bool skipFirst)
        : table_(table), parts_(parts), lines_(lines), sieve_(sieve), skips_(skipFirst) {}

    /// Reads at most `most` records and appends those that the sieve takes; how many it read.
    unsigned load(int most);

private:
    class Row;

    bool readNext(dbrecord& record);
    bool isComplete(const LineScan& line);
    bool replacePassedOver(dbrecord& record);
    void expectRest(unsigned most);

    vekdb& table_;
    TableParts& parts_;
    RecordLines& lines_;
    const RowSieve& sieve_;
    bool skips_;
    unsigned loaded_ = 0;
};
