#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <vekdb/formats/log.h>
#include <vekdb/table.h>
#include "column_lookup.h"

namespace vek::sql {

/// A log as a connection has it in memory, and the changes of a transaction with what takes each
/// of them back. Rows keep their numbers as long as it lives: one that is deleted leaves a gap, one
/// that is inserted stands behind all others. Shared by the table and the cursors that go over it.
class LogImage {
public:
    /// `places`: where the columns of the table stand in the log, none where both are the same.
    explicit LogImage(Log log, std::vector<unsigned> places = {})
        : log_(std::move(log)), places_(std::move(places)) {}

    Log& log() { return log_; }
    const Log& log() const { return log_; }
    /// Rows with those that went.
    unsigned rowCount() const { return table().get_num_records(); }
    bool isThere(unsigned row) const {
        return row < rowCount() && (row >= gone_.size() || !gone_[row]);
    }
    std::string_view cell(unsigned row, unsigned column) const {
        return cellOf(*record(row), column);
    }
    /// It stays where it is as long as the image, whatever becomes of its row.
    const dbrecord* record(unsigned row) const { return table().get_record(row); }
    std::string_view cellOf(const dbrecord& record, unsigned column) const {
        return record.fieldView(placeOf(column));
    }
    std::size_t lineOf(unsigned row) const { return log_.at(row).line(); }
    bool isTagged(unsigned row) const { return log_.at(row).isTagged(); }

    /// These throw a Refusal where they cannot be, and the log is as it was then.
    void set(unsigned row, unsigned column, std::string_view text);
    void setTagged(unsigned row, unsigned tagColumn, bool isTagged);
    unsigned addRow();
    void removeRow(unsigned row);

    /// How many changes there are, and the way back to when there were so many.
    std::size_t changes() const { return journal_.size(); }
    void undoTo(std::size_t changes) noexcept;
    /// Whether memory ended on that way, so that the log is not what it was.
    bool isBroken() const { return isBroken_; }
    /// Whether rows went or came, so that those of the file are counted in another way.
    bool isRenumbered() const;
    /// Those of the table that did not go.
    std::vector<unsigned> rowsThere() const;
    void forgetJournal();

    /// The rows of a column by their cells: null where that does not pay, for a column that was
    /// asked for only once.
    const ColumnLookup* lookup(unsigned column);

private:
    // One of each cell that is changed, so small; what stood there is at the end of `before_`.
    struct Change {
        std::uint64_t before;  // how long `before_` was
        std::uint32_t row;
        std::uint16_t column;
        enum Kind : std::uint8_t { cell, added, removed } kind;
    };

    vekdb& table() const { return log_.table(); }
    unsigned placeOf(unsigned column) const { return places_.empty() ? column : places_[column]; }
    void setGone(unsigned row, bool isGone);
    void note(Change::Kind kind, unsigned row, unsigned column, std::string_view before);
    void dropLast() noexcept;
    void undo(const Change& change);

    struct Asked {
        unsigned count = 0;
        std::unique_ptr<ColumnLookup> lookup;
    };

    Log log_;
    std::vector<unsigned> places_;
    std::vector<bool> gone_;
    std::deque<Change> journal_;  // which grows without being copied
    std::string before_;
    bool isBroken_ = false;
    std::map<unsigned, Asked> lookups_;
};

}  // namespace vek::sql
