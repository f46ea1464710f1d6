#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "vekdb/query/label_range.h"
#include "vekdb/record/record_access.h"
#include "vekdb/record/record_run.h"

/// The first eight bytes of a row's start and end, as numbers that are ordered as the bytes are.
struct RangeKey {
    static RangeKey of(std::string_view start, std::string_view end);

    std::uint64_t start;  // above every text where there is none
    std::uint64_t end;
};

/// Tells of a row, by its key, whether its range can hold a text at all.
class RangeFilter {
public:
    /// Knows no keys and rules nothing out.
    RangeFilter() = default;
    /// The keys are one a row; the text is not empty.
    RangeFilter(const RangeKey* keys, std::string_view text);

    bool isOn() const { return keys_ != nullptr; }
    /// False where the row's values are needed to tell.
    bool rulesOut(const dbrecord& record, unsigned row) {
        if (!RecordAccess::isKeyed(record)) {
            ++unknown_;
            return false;
        }
        const std::uint64_t start = keys_[row].start & compared_;
        const std::uint64_t end = keys_[row].end & compared_;
        return start > text_ || (start < text_ && end < text_);
    }
    /// How many rows have changed since their keys were made, or have none.
    unsigned unknown() const { return unknown_; }

private:
    const RangeKey* keys_ = nullptr;
    std::uint64_t text_ = 0;
    std::uint64_t compared_ = 0;  // ones for the bytes that the text has
    unsigned unknown_ = 0;
};

/// Keys of the rows for queries that ask two columns again and again for the ranges that hold a
/// text, as they do while a player runs. A row is told apart by its key without a look at its
/// values. Made when a pair of columns is asked for a second time; gone when rows change places.
/// A record loses its mark with its first change, and its key does not count any more.
class LabelRangeKeys {
public:
    /// For one pass over all rows; off where no range is asked for.
    RangeFilter filterFor(const RangeQuestion* asked, const RowsInOrder& rows);
    /// What the pass found: keys that rule too little out are given up.
    void note(const RangeFilter& filter, unsigned rows);
    void forget() { *this = LabelRangeKeys(); }

private:
    bool areOf(LabelColumns columns, const RowsInOrder& rows) const;
    void make(const RowsInOrder& rows);
    void makeOf(const RecordRun& run, RangeKey* keys);

    LabelColumns columns_;
    std::uint64_t order_ = 0;
    unsigned timesAsked_ = 0;
    std::unique_ptr<RangeKey[]> keys_;  // one a row
};
