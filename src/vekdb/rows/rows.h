#pragma once

#include <cstddef>
#include <cstdint>

#include "vekdb/record/record_pool.h"
#include "vekdb/record/record_run.h"

/// The rows of a table in order, and which of them are shown while only tagged rows are.
///
/// The capacity that callers see grows in steps of 500 and never shrinks. Rows stand in one
/// array with a gap where the last deletion or insertion was, so a run of them in the order of the
/// rows, or against it, moves each row once. The tagged rows stand in an array of their own; the
/// slots behind the tagged count keep what they held, or null. Rows in it that were deleted are
/// told by their addresses alone, which no other row has until the array is filled again.
class Rows {
public:
    static constexpr unsigned chunk = 500;
    static constexpr unsigned none = 0xFFFFFFFF;

    Rows() = default;
    ~Rows() { release(); }
    Rows(const Rows&) = delete;
    Rows& operator=(const Rows&) = delete;

    unsigned count() const { return count_; }
    unsigned capacity() const { return capacity_; }
    /// The row at a raw position below the count.
    dbrecord* at(unsigned raw) const { return slots_[raw < gapAt_ ? raw : raw + gap_]; }

    unsigned shownCount() const { return tagsOnly_ != 0 ? taggedCount_ : count_; }
    /// The row at a shown position, or null.
    dbrecord* shown(unsigned position) const {
        if (position >= shownCount()) return nullptr;
        return tagsOnly_ != 0 ? tagged_[position] : at(position);
    }
    /// Shown rows that stand behind each other, from a position below their count on.
    RecordRun shownFrom(unsigned position) const;
    /// All rows, those that are not shown included.
    RowsInOrder inOrder() const;
    unsigned newRow(unsigned raw) const;
    unsigned rawRow(unsigned shown) const;

    unsigned tagsOnly() const { return tagsOnly_; }
    void setTagsOnly(unsigned flag) { tagsOnly_ = flag; }
    void indexTags();

    void addChunk();
    /// Adds chunks until the capacity covers `rows`; throws BadAlloc where no table can.
    void cover(std::uint64_t rows);
    /// About so many more rows are to come: memory for them is taken in fewer steps.
    void expect(std::size_t more) noexcept;

    /// Appends `record`; the capacity covers it.
    void append(dbrecord* record);
    /// Opens `n` slots at `at`, filled from `records`; the capacity covers them.
    void insert(unsigned at, dbrecord* const* records, unsigned n);
    /// Destroys `n` rows from `first` on, all of them in range.
    void erase(unsigned first, unsigned n);
    /// The rows as one array of `count()`, for reordering in place.
    dbrecord** inOneArray();

    /// Destroys all rows and returns to capacity 0.
    void release();

    RecordPool& pool() { return pool_; }

private:
    void forgetDeleted();
    void moveGapTo(unsigned at);
    void makeRoom(std::size_t slots);
    void makeTaggedRoom();

    RecordPool pool_;
    dbrecord** slots_ = nullptr;
    std::size_t room_ = 0;
    std::size_t expected_ = 0;  // rows, by the time that all have come
    unsigned count_ = 0;
    unsigned capacity_ = 0;
    unsigned gapAt_ = 0;  // rows before the gap; all of them while there is none
    unsigned gap_ = 0;
    std::uint64_t order_ = 0;

    dbrecord** tagged_ = nullptr;
    std::size_t taggedRoom_ = 0;
    unsigned taggedCount_ = 0;
    unsigned tagsOnly_ = 0;
};
