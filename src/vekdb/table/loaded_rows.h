#pragma once

#include <cstddef>

#include "vekdb/table/row_sieve.h"

class RecordLines;
class vekdb;
struct LineScan;
struct TableParts;

/// Reads records, one a line, and appends those that its sieve takes to the rows of a table, until
/// a line says that there are no more: an essentially empty one, or one with another number of
/// values than there are columns.
class LoadedRows {
public:
    /// The sieve outlives these.
    LoadedRows(vekdb& table, TableParts& parts, const RowSieve& sieve)
        : table_(table), parts_(parts), sieve_(sieve) {}
    LoadedRows(const LoadedRows&) = delete;
    LoadedRows& operator=(const LoadedRows&) = delete;
    ~LoadedRows();

    /// How many records were read, `most` at most; none while the rows fill the capacity. With
    /// `skipFirst` the first line is passed over.
    unsigned readFrom(RecordLines& lines, bool skipFirst, int most);

private:
    bool readNext(RecordLines& lines, bool skipsThis);
    bool isComplete(RecordLines& lines, const LineScan& line);
    bool replacePassedOver(RecordLines& lines, bool skipsThis);
    void open();
    void take(RecordLines& lines);
    void expectRest(RecordLines& lines, unsigned most);

    vekdb& table_;
    TableParts& parts_;
    const RowSieve& sieve_;
    dbrecord* open_ = nullptr;  // what the next line is read into, not yet one of the rows
    unsigned read_ = 0;
};
