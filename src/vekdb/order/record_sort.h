#pragma once

#include <cstddef>

#include "vekdb/order/sort_items.h"

class dbrecord;

/// The order of records, none of them null, by the record comparison in force since the last
/// `sortPrepare`: descending when `direction` is negative, otherwise ascending. Records that
/// compare equal keep their order. Comparisons are counted in `comco`. When memory is exhausted
/// BadAlloc is thrown.
SortItems orderOfRecords(const dbrecord* const* records, std::size_t n, int direction);

/// A row to be sorted: its record, null for a row that has none any more, and a position that no
/// other entry has.
struct SortEntry {
    const dbrecord* record;
    unsigned position;
};

/// Sorts the entries in place as their records are ordered; where the comparison finds records
/// equal the lower position comes first. A row without a record is equal to every other: its
/// entry stays where it is, and the others are sorted around it. When memory is exhausted
/// BadAlloc is thrown and the entries stand as they did.
void sortRecordEntries(SortEntry* entries, std::size_t n, int direction);
