#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "views/deferred_removals.h"

/// The rows of a view: an ordered list of source rows, each with a tag bit. Nobody else knows
/// how it is laid out.
///
/// It owns the rule by which its room grows and shrinks, and the tag bytes in the slots behind
/// the last row: a row that comes to stand in a used slot starts out with the tag left there,
/// and a slot of fresh room starts out untagged. The row count can exceed the room, after
/// `sizeFor` was called with less; rows without room read as no row, untagged.
///
/// While source rows ascend, what is inserted, taken out and renumbered costs about a logarithm.
/// In rows of no order, many removals one after the other are deferred: they cost about a
/// logarithm each, and the first call that needs the rows in one piece puts them there. No
/// caller can tell.
class ViewIndex {
public:
    static constexpr unsigned noRow = 0xFFFFFFFF;

    /// Removals from rows of no order are deferred once they have passed over each of at least
    /// `leastRows` rows `passes` times. Tests set these so that small indexes take either way.
    struct Deferral {
        static inline int leastRows = 256;
        static inline unsigned passes = 8;
    };

    ViewIndex() noexcept = default;
    ViewIndex(const ViewIndex&) = delete;
    ViewIndex& operator=(const ViewIndex&) = delete;
    ~ViewIndex() = default;

    int count() const noexcept { return count_; }
    unsigned capacity() const noexcept { return capacity_; }
    /// The rows that have room: all of them, save after a `sizeFor` with less.
    int backedCount() const noexcept {
        return unsigned(count_) <= capacity_ ? count_ : int(capacity_);
    }
    bool holds(int row) const noexcept { return row >= 0 && row < backedCount(); }

    /// `noRow` and 0 for a row that the index does not hold.
    unsigned sourceRow(int row) const noexcept {
        if (!holds(row)) return noRow;
        return deferred_ == nullptr ? rows_.row(unsigned(row)) : deferredRow(row);
    }
    unsigned tag(int row) const noexcept {
        if (!holds(row)) return 0;
        return deferred_ == nullptr ? rows_.tag(unsigned(row)) : deferredTag(row);
    }
    unsigned slotTag(unsigned slot) const noexcept;
    void setTag(int row, bool value) noexcept;
    void setSourceRow(int row, unsigned sourceRow) noexcept;

    /// No rows and no room.
    void clear() noexcept;
    /// No rows; the room stays, with the tags in it.
    void forgetRows() noexcept;
    /// Lets go of memory that forgotten rows had and nobody needed since.
    void letGo() noexcept { rows_.letGo(); }
    /// Adjusts the room to n rows, by one step of the rule; the row count stays.
    void sizeFor(int n);

    void append(unsigned sourceRow);
    /// Memory for an index that is about to hold more rows, taken before anything is changed.
    struct Room {
        unsigned capacity;
        std::vector<bool> usedTags;
        RowBlocks::Spare rows;
    };
    /// The room that `n` rows more at `at` need, and the one that the first `n` rows need after
    /// `clear` or after the last row went. No memory where what there is will do.
    Room roomForMore(int at, int n) const;
    static Room roomForFirst(int n);

    /// Moves the rows from `at` on up by n and answers where, `at` being cut to the rows there
    /// are. The rows in the gap, counted from now on, are for the caller to set. n is not
    /// negative.
    int openGap(int at, int n);
    /// Inserts rows that show n source rows from `first` on. Takes no memory while the index is
    /// as it was when the room was taken.
    void insertRun(int at, int n, unsigned first, Room room);
    /// What n insertions of one row each would do, the first at `at` and each one behind the
    /// one before.
    void insertOneByOne(const unsigned* sourceRows, int n, int at);
    /// Takes out n rows from `at` on, all of which must exist. Where there is no memory for a
    /// smaller room, the rows stay in the one that they have.
    void remove(int at, int n) noexcept;

    void raiseFrom(int at, unsigned by) noexcept;
    /// From row `from` on: lowers by one each source row above the target, up to the first that
    /// is the target, and answers where that stands; the row count when there is none.
    int lowerAbove(unsigned target, int from) noexcept;
    /// How many rows from `at` on, at most so many, show source rows in an unbroken run.
    int consecutiveRun(int at, int atMost) const noexcept;
    /// Row i becomes the one that stood at positions[i], for each row that has room.
    void reorder(const unsigned* positions);

    void tagAll(bool value) noexcept;
    void invertTags() noexcept;
    unsigned countTags() const noexcept;
    /// The first row that shows the source row, or -1.
    int find(unsigned sourceRow) const noexcept;

private:
    enum class Order { ascending, none, unknown };

    bool push(unsigned sourceRow) noexcept;
    unsigned capacityFor(int n) const noexcept;
    unsigned keptIn(unsigned capacity, int wanted) const noexcept;
    int countWith(int more) const;
    void changeRoomFor(int n);
    void changeRoom(unsigned capacity, unsigned kept) noexcept;
    void giveRoomlessRows(unsigned count);
    int insert(int at, int n, unsigned first, Room room);
    void appendAll(const unsigned* sourceRows, int n);
    void takeTagsFromSlots(int at, int n) noexcept;
    void moveDownWithoutRoom(int at, int n) noexcept;
    void tryRoomFor(int n) noexcept;

    void leaveTags(unsigned from, unsigned end) noexcept;
    bool usedTag(unsigned slot) const noexcept { return slot < usedEnd_ && usedTags_[slot]; }

    bool ascends() const noexcept;
    void forgetOrderOfNothing() noexcept;
    void noteOrderOf(int at, int n) noexcept;

    unsigned deferredRow(int row) const noexcept;
    unsigned deferredTag(int row) const noexcept;
    void noteRead() const noexcept;
    void settle() const noexcept;
    void considerDeferring() noexcept;
    void removeDeferred(int at, int n) noexcept;

    mutable RowBlocks rows_;  // those that have room; while deferred, as they were before
    unsigned capacity_ = 0;
    int count_ = 0;
    // The tags left in slots behind the last row, by slot. Those from `usedEnd_` on are fresh.
    std::vector<bool> usedTags_;
    unsigned usedEnd_ = 0;
    mutable Order order_ = Order::ascending;  // of the source rows
    mutable std::unique_ptr<DeferredRemovals> deferred_;
    mutable std::uint64_t reads_ = 0;  // while deferred
    std::uint64_t strain_ = 0;         // rows of no order passed over since the last deferral
    unsigned drops_ = 0;               // while deferred
    mutable unsigned patience_ = 1;    // how much more strain it takes, where deferring did not pay
};
