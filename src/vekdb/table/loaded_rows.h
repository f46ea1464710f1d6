#pragma once

#include "vekdb/lines/record_receiver.h"
#include "vekdb/table/row_sieve.h"

class RecordLines;
class vekdb;
struct TableParts;

/// Appends the records of a file that its sieve takes to the rows of a table.
class LoadedRows final : private RecordReceiver {
public:
    /// The sieve outlives these.
    LoadedRows(vekdb& table, TableParts& parts, const RowSieve& sieve)
        : table_(table), parts_(parts), sieve_(sieve) {}
    LoadedRows(const LoadedRows&) = delete;
    LoadedRows& operator=(const LoadedRows&) = delete;
    ~LoadedRows();

    /// How many records were read, `most` at most; none while the rows fill the capacity.
    unsigned readFrom(RecordLines& lines, bool skipFirst, int most);

private:
    dbrecord& first() override;
    dbrecord& take(dbrecord& read) override;
    bool takesAll() const override { return sieve_.isOpen(); }
    void expect(std::size_t more) override;
    void refuse(unsigned records) override;

    vekdb& table_;
    TableParts& parts_;
    const RowSieve& sieve_;
    dbrecord* open_ = nullptr;  // not yet one of the rows
};
