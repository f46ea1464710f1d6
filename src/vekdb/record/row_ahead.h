#pragma once

#include "vekdb/record/record_access.h"
#include "vekdb/record/record_run.h"

/// For passes over the rows that read a value of each: starts to fetch from memory what the rows
/// ahead will need, so that the waits for several rows run side by side with the work on one. A
/// value stands behind the record and the record's slices, so these are fetched further ahead.
class RowAhead {
public:
    /// For passes that look at the records alone.
    static constexpr unsigned noValue = 0xFFFFFFFF;

    /// Called for each row. Always inlined, as what it calls.
    [[gnu::always_inline]] static void fetchValue(const RecordRun& run, unsigned row,
                                                  unsigned column) {
        if (row + recordsAhead >= run.count) return;
        __builtin_prefetch(run.records[row + recordsAhead]);
        if (column == noValue) return;
        const dbrecord* slices = run.records[row + slicesAhead];
        const dbrecord* text = run.records[row + textAhead];
        if (slices != nullptr) RecordAccess::expectView(*slices);
        if (text != nullptr) RecordAccess::expectValue(*text, column);
    }

private:
    static constexpr unsigned recordsAhead = 48;
    static constexpr unsigned slicesAhead = 32;
    static constexpr unsigned textAhead = 16;
};
