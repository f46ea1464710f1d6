#pragma once

#include <cstdint>
#include <memory>

#include "views/deferred_removals.h"

/// The rows of a view: an ordered list of source rows, each with a tag bit. Nobody else knows
/// how it is laid out.
///
/// It owns the rule by which its room grows and shrinks, and the tag bytes in the slots behind
/// the last row: a row that comes to stand in a used slot starts out with the tag left there,
/// and a slot of fresh room starts out untagged. The row count can exceed the room, after
/// `sizeFor` was called with less; rows without room read as no row, untagged.
///
/// Many removals one after the other are deferred: they cost about a logarithm each, and the
/// first call that needs the rows in one piece puts them there. No caller can tell.
class ViewIndex {
public:
    static constexpr unsigned noRow = 0xFFFFFFFF;

    /// Removals are deferred once they have passed over each of at least `leastRows` rows
    /// `passes` times. Tests set these so that small indexes take either way.
    struct Deferral {
        static inline int leastRows = 256;
        static inline unsigned passes = 8;
    };

    ViewIndex() noexcept = default;
    ViewIndex(const ViewIndex&) = delete;
    ViewIndex& operator=(const ViewIndex&) = delete;
    ~ViewIndex();

    int count() const noexcept { return count_; }
    unsigned capacity() const noexcept { return capacity_; }
    /// The rows that have room: all of them, save after a `sizeFor` with less.
    int backedCount() const noexcept;
    bool holds(int row) const noexcept { return row >= 0 && row < backedCount(); }

    /// `noRow` and 0 for a row that the index does not hold.
    unsigned sourceRow(int row) const noexcept {
        if (!holds(row)) return noRow;
        return deferred_ == nullptr ? slots_[row].row : deferredRow(row);
    }
    unsigned tag(int row) const noexcept {
        if (!holds(row)) return 0;
        return deferred_ == nullptr ? slots_[row].tag : deferredTag(row);
    }
    unsigned slotTag(unsigned slot) const noexcept;
    void setTag(int row, bool value) noexcept;
    void setSourceRow(int row, unsigned sourceRow) noexcept;

    /// No rows and no room.
    void clear() noexcept;
    /// No rows; the room stays, with the tags in it.
    void forgetRows() noexcept;
    /// Adjusts the room to n rows, by one step of the rule; the row count stays.
    void sizeFor(int n);

    void append(unsigned sourceRow);
    /// Memory for an index that is about to hold more rows, taken before anything is changed.
    struct Room {
        std::unique_ptr<ViewSlot[]> slots;
        unsigned capacity;
    };
    /// The room that `n` rows more need, and the one that the first `n` rows need after `clear`
    /// or after the last row went. No memory where the room there is will do.
    Room roomForMore(int n) const;
    static Room roomForFirst(int n);

    /// Moves the rows from `at` on up by n and answers where, `at` being cut to the rows there
    /// are. The rows in the gap, counted from now on, are for the caller to set. n is not
    /// negative. Takes no memory while the index is as it was when the room was taken.
    int openGap(int at, int n, Room room);
    int openGap(int at, int n) { return openGap(at, n, roomForMore(n)); }
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
    using Slot = ViewSlot;

    unsigned capacityFor(int n) const noexcept;
    void changeRoomFor(int n) noexcept;
    void shrinkInPlace(unsigned capacity, int wanted) noexcept;
    unsigned keptIn(unsigned capacity, int wanted) const noexcept;
    int countWith(int more) const;
    void moveTo(Slot* room, unsigned capacity, int wanted) noexcept;
    void moveSlots(int from, int to) noexcept;

    unsigned deferredRow(int row) const noexcept;
    unsigned deferredTag(int row) const noexcept;
    void noteRead() const noexcept;
    void settle() const noexcept;
    void considerDeferring(int work) noexcept;
    void removeDeferred(int at, int n) noexcept;

    mutable Slot* slots_ = nullptr;
    unsigned capacity_ = 0;
    int count_ = 0;
    mutable std::unique_ptr<DeferredRemovals> deferred_;
    bool midDrop_ = false;              // a drop has begun and not ended, and is not deferred
    mutable std::uint64_t reads_ = 0;   // while deferred
    mutable std::uint64_t strain_ = 0;  // rows passed over by removals since they were in one piece
};
