#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "views/ranked_set.h"

/// One row of a view in the memory of its index.
struct ViewSlot {
    std::uint32_t row;
    std::uint8_t tag;
};

/// The rows of a view while many of them go one after the other: the slots stay where they were
/// and each removal costs about a logarithm of the rows instead of a pass over them. `settle`
/// then moves the rows together, in one pass, into exactly the slots that as many single
/// removals would have left behind: rows, tags, and the tag bytes behind the last row.
///
/// "Original" numbers are those from before the first removal. A row's source row is its
/// original one less the source rows that were dropped below it.
class DeferredRemovals {
public:
    /// Null where the source rows are spread too far to keep account of.
    /// `slots` are `count` rows, then the slots behind them up to `capacity`.
    static std::unique_ptr<DeferredRemovals> start(ViewSlot* slots, std::uint32_t count,
                                                   std::uint32_t capacity);

    std::uint32_t count() const noexcept { return positions_.size(); }
    std::uint32_t sourceRow(std::uint32_t row) const noexcept;
    ViewSlot& slot(std::uint32_t row) const noexcept { return slots_[positions_.nth(row)]; }
    std::uint8_t slotTag(std::uint32_t slot) const noexcept;

    /// Whether removing a row here, or going on with a target, is the next step of the drop of
    /// a source row that has begun; with no drop begun, whether a drop may begin.
    bool continues(std::uint32_t target, std::uint32_t from) const noexcept;
    bool mayRemove(std::uint32_t at, std::uint32_t n) const noexcept;

    /// Drops source row `target`: lowers those above it, and answers the first row that shows
    /// it, which is to be removed before the next call goes on from there. The row count where
    /// there is none (left), which ends the drop.
    std::uint32_t drop(std::uint32_t target) noexcept;
    /// Takes rows out. The slots behind the rest keep the tags of the last rows there were.
    void remove(std::uint32_t at, std::uint32_t n) noexcept;
    /// The slots from `kept` on are fresh ones, and there are `capacity` of them in all.
    void changeRoom(std::uint32_t capacity, std::uint32_t kept);

    /// Leaves the rows and tags in the slots. Nothing else may be called afterwards.
    void settle() noexcept;

private:
    DeferredRemovals(ViewSlot* slots, std::uint32_t count, std::uint32_t capacity,
                     std::uint32_t bound);

    void sortByRow();
    std::uint32_t positionAt(std::uint32_t entry) const noexcept {
        return byRow_.empty() ? entry : byRow_[entry];
    }
    std::uint32_t rowAt(std::uint32_t entry) const noexcept {
        return slots_[positionAt(entry)].row;
    }
    std::uint32_t firstEntryOf(std::uint32_t row) const noexcept;
    std::uint32_t current(std::uint32_t original, bool lowered) const noexcept;

    ViewSlot* slots_;
    std::uint32_t entries_;  // rows at the start
    RankedSet positions_;    // of the rows that are left, among those at the start
    RankedSet rows_;         // source rows that were not dropped
    std::vector<std::uint32_t> byRow_;      // positions by source row; empty when they ascend
    std::vector<std::uint8_t> staleTags_;   // by slot; those below the row count mean nothing
    std::uint32_t tail_;                    // no row is left behind this position

    bool dropping_ = false;
    std::uint32_t target_ = 0;    // of the drop that has begun, as it was given,
    std::uint32_t dropped_ = 0;   // and the original source row that it means
    std::uint32_t entry_ = 0;     // the next of its rows, in the order by source row
    std::uint32_t reached_ = 0;   // rows before this one have been lowered by it
};
