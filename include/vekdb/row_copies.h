#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include <vekdb/host/visibility.h>

class ValueCopies;
class dbrecord;
class vekdb;

/// Gives a table rows made of those of other tables, many at a time: where the values stand in a
/// record as they are wanted, both rows share their text; others are copied one behind the other.
/// No value gets memory of its own, and values are kept byte for byte.
///
/// As with `vekdb::add_vekdb`, rows that are appended are neither tagged nor marked as changed, and
/// nobody is told. Where memory ends, the rows that were appended stay, the last one perhaps empty.
class VEKDB_PUBLIC RowCopies {
public:
    /// The table outlives this. Its columns are all there; while only its tagged rows are shown,
    /// nothing is appended.
    explicit RowCopies(vekdb& table);
    ~RowCopies();
    RowCopies(const RowCopies&) = delete;
    RowCopies& operator=(const RowCopies&) = delete;

    /// Appends a row with the first values of a record, at most so many and no more than the
    /// table has columns. False, and nothing done, while only tagged rows are shown.
    bool append(const dbrecord& row, unsigned most = 0xFFFF);
    /// The same with values that stand anywhere.
    bool append(const std::string_view* values, std::size_t count);
    /// Gives a shown row other values, which may be some of its own, and marks it and its table as
    /// changed. False, and nothing done, for a row that is not there.
    bool replace(unsigned row, const std::string_view* values, std::size_t count);

private:
    dbrecord* newRow();
    void give(dbrecord& record, const std::string_view* values, std::size_t count);

    vekdb& table_;
    std::unique_ptr<ValueCopies> copies_;
    std::vector<std::string_view> values_;
};
