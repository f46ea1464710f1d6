#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "views/ranked_set.h"
#include "views/row_blocks.h"

/// The rows of a view in no order while many of them go one after the other: they are kept as
/// they were and each removal costs about a logarithm of the rows instead of a pass over them.
/// `settle` then tells, in one pass, the rows that as many single removals would have left.
///
/// "Original" numbers are those from before the first removal. A row's source row is its
/// original one less the source rows that were dropped below it.
class DeferredRemovals {
public:
    /// Null where the source rows are spread too far to keep account of.
    static std::unique_ptr<DeferredRemovals> start(const RowBlocks& rows);

    std::uint32_t count() const noexcept { return positions_.size(); }
    std::uint32_t sourceRow(std::uint32_t row) const noexcept;
    std::uint8_t tag(std::uint32_t row) const noexcept { return slot(row).tag; }
    void setTag(std::uint32_t row, std::uint8_t tag) noexcept {
        slots_[positions_.nth(row)].tag = tag;
    }
    /// The tag of the last row, found faster.
    std::uint8_t lastTag() noexcept;

    /// Whether removing a row here, or going on with a target, is the next step of the drop of
    /// a source row that has begun; with no drop begun, whether a drop may begin.
    bool continues(std::uint32_t target, std::uint32_t from) const noexcept;
    bool mayRemove(std::uint32_t at, std::uint32_t n) const noexcept;

    /// Drops source row `target`: lowers those above it, and answers the first row that shows
    /// it, which is to be removed before the next call goes on from there. The row count where
    /// there is none (left), which ends the drop.
    std::uint32_t drop(std::uint32_t target) noexcept;
    void remove(std::uint32_t at, std::uint32_t n) noexcept;

    /// Puts the rows that are left into the ones that it was started with.
    void settle(RowBlocks& rows) const noexcept;

private:
    DeferredRemovals(std::vector<ViewSlot> slots, std::uint32_t bound);

    void sortByRow();
    const ViewSlot& slot(std::uint32_t row) const noexcept { return slots_[positions_.nth(row)]; }
    std::uint32_t positionAt(std::uint32_t entry) const noexcept {
        return byRow_.empty() ? entry : byRow_[entry];
    }
    std::uint32_t rowAt(std::uint32_t entry) const noexcept {
        return slots_[positionAt(entry)].row;
    }
    std::uint32_t firstEntryOf(std::uint32_t row) const noexcept;
    std::uint32_t current(std::uint32_t original, bool lowered) const noexcept;

    std::vector<ViewSlot> slots_;
    std::uint32_t entries_;             // rows at the start
    RankedSet positions_;               // of the rows that are left, among those at the start
    RankedSet rows_;                    // source rows that were not dropped
    std::vector<std::uint32_t> byRow_;  // positions by source row; empty when they ascend
    std::uint32_t tail_;                // no row is left behind this position

    bool dropping_ = false;
    std::uint32_t target_ = 0;   // of the drop that has begun, as it was given,
    std::uint32_t dropped_ = 0;  // and the original source row that it means
    std::uint32_t entry_ = 0;    // the next of its rows, in the order by source row
    std::uint32_t reached_ = 0;  // rows before this one have been lowered by it
};
