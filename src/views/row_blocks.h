#pragma once

#include <cstdint>
#include <memory>
#include <vector>

/// One row of a view: the row of the source that it shows, and its tag.
struct ViewSlot {
    std::uint32_t row;
    std::uint8_t tag;
};

/// Rows in order, in blocks of some hundred. What is added to the source rows from some row on
/// is kept once for the blocks behind, so that inserting, taking out and renumbering cost about
/// the logarithm of the rows and work on one block. While no row was inserted or taken out in
/// the middle, a row is found by its number alone, and while every row shows the source row of
/// its own number, none is looked up at all.
///
/// Positions that are asked for must exist. What is `noexcept` takes no memory.
class RowBlocks {
public:
    /// A block that is filled in one go gets 2 to this power rows, and has room for a quarter
    /// more. Tests lower it so that a few rows are many blocks.
    struct Fill {
        static constexpr unsigned mostBits = 9;
        static inline unsigned bits = mostBits;
    };

private:
    static constexpr std::uint32_t mostRows = (1u << Fill::mostBits) * 5 / 4;

    struct Block {
        std::uint32_t rows[mostRows];
        std::uint8_t tags[mostRows];
    };
    using Blocks = std::vector<std::unique_ptr<Block>>;
    // A block, and what must be known of it without looking into it. A source row is what its
    // block holds plus the deltas of the block and of all before it.
    struct Entry {
        std::unique_ptr<Block> block;
        std::uint32_t rows;
        std::uint32_t delta;
        std::uint32_t first;  // the first of the block's rows, as the block holds it
    };
    struct Sum {
        std::uint32_t rows;
        std::uint32_t shift;
    };

public:
    std::uint32_t size() const noexcept { return size_; }
    std::uint32_t row(std::uint32_t at) const noexcept {
        if (same_) return at;
        if (even_) return entries_[at >> fillBits_].block->rows[at & (fill_ - 1)];
        seek(at);
        return entries_[last_.block].block->rows[at - last_.start] + last_.shift;
    }
    std::uint8_t tag(std::uint32_t at) const noexcept {
        if (even_) return entries_[at >> fillBits_].block->tags[at & (fill_ - 1)];
        seek(at);
        return entries_[last_.block].block->tags[at - last_.start];
    }
    void setTag(std::uint32_t at, std::uint8_t tag) noexcept;
    void set(std::uint32_t at, ViewSlot slot) noexcept;

    /// Memory for rows that are about to be inserted: none where a block has room for them.
    struct Spare {
        Blocks blocks;
        // Empty, with room for more than there are.
        std::vector<Entry> entries;
        std::vector<Sum> sums;
        Blocks unused;
    };
    Spare spareFor(std::uint32_t at, std::uint32_t n) const;
    /// For wherever they are inserted, also once rows behind the present ones came and went.
    Spare spareFor(std::uint32_t n) const;
    bool isEnough(const Spare& spare, std::uint32_t at, std::uint32_t n) const noexcept;
    /// Inserts n rows that show the source rows from `first` on, untagged.
    void insert(std::uint32_t at, std::uint32_t n, std::uint32_t first, Spare& spare) noexcept;
    /// Puts a row behind the last one where its block has room and nothing was inserted or taken
    /// out in the middle; else false, and nothing done.
    bool push(ViewSlot slot) noexcept {
        if (!even_ || entries_.empty() || entries_.back().rows >= fill_) return false;
        Entry& last = entries_.back();
        last.block->rows[last.rows] = slot.row;
        last.block->tags[last.rows++] = slot.tag;
        same_ = same_ && slot.row == size_;
        ++size_;
        summed_ = false;
        return true;
    }
    void erase(std::uint32_t at, std::uint32_t n) noexcept;
    void clear() noexcept { *this = RowBlocks(); }
    /// No rows, but the memory of as many, until it is let go.
    void forget() noexcept;
    void letGo() noexcept { unused_.clear(); }

    /// Adds to every source row from `at` on.
    void shiftFrom(std::uint32_t at, std::uint32_t by) noexcept;
    bool isAscending() const noexcept;
    /// Of ascending rows the first that is not below the source row; the size for none.
    std::uint32_t firstFrom(std::uint32_t row) const noexcept;
    /// From `from` on: lowers by one each source row above the target, up to the first that is
    /// the target, and answers where that stands; the size when there is none.
    std::uint32_t lowerAbove(std::uint32_t target, std::uint32_t from) noexcept;
    /// The first that shows the source row; the size for none.
    std::uint32_t find(std::uint32_t row) const noexcept;

    void tagAll(std::uint8_t tag) noexcept;
    void invertTags() noexcept;
    std::uint32_t countTags() const noexcept;

private:
    // A block's number, the rows before it, and what is added to the rows that it holds.
    struct Place {
        std::uint32_t block = 0;
        std::uint32_t start = 0;
        std::uint32_t shift = 0;
    };
    void seek(std::uint32_t at) const noexcept {
        if (at - last_.start >= entries_[last_.block].rows) last_ = findPlace(at);
    }
    Place placeOf(std::uint32_t at) const noexcept {
        seek(at);
        return last_;
    }
    Block& blockOf(const Place& place) const noexcept { return *entries_[place.block].block; }
    Place findPlace(std::uint32_t at) const noexcept;
    Place lastPlace() const noexcept { return placeOf(size_ - 1); }
    void sumUp() const noexcept;
    void addToSums(std::uint32_t block, std::uint32_t rows, std::uint32_t shift) noexcept;
    void forgetPlaces() noexcept;

    bool hasRoom(std::uint32_t at, std::uint32_t n) const noexcept;
    std::size_t blocksNeeded(std::uint32_t at, std::uint32_t n) const noexcept;
    void provide(Spare& spare, std::size_t blocks) const;
    void take(Spare& spare) noexcept;
    std::unique_ptr<Block> freshBlock(Spare& spare) noexcept;
    void insertHere(std::uint32_t at, std::uint32_t n, std::uint32_t first) noexcept;
    void insertBlocks(std::uint32_t block, std::uint32_t shift, std::uint32_t n,
                      std::uint32_t first, Spare& spare) noexcept;
    std::uint32_t topUp(std::uint32_t n, std::uint32_t first) noexcept;
    void split(const Place& place, std::uint32_t kept, Spare& spare) noexcept;
    void cut(std::uint32_t block, std::uint32_t from, std::uint32_t n) noexcept;
    void dropBlocks(std::uint32_t from, std::uint32_t end) noexcept;
    void addFrom(std::uint32_t block, std::uint32_t by) noexcept;
    void gather() noexcept;

    std::vector<Entry> entries_;
    std::uint32_t size_ = 0;
    std::uint32_t fillBits_ = Fill::bits;
    std::uint32_t fill_ = 1u << fillBits_;
    std::uint32_t most_ = fill_ + fill_ / 4;
    bool same_ = true;  // every row shows the source row of its own number
    bool even_ = true;  // every block but the last is filled, and nothing is added
    // A binary indexed tree over the entries, made when it is first needed after blocks came or
    // went. Its memory is there whenever theirs is.
    mutable std::vector<Sum> sums_;
    Blocks unused_;  // as well
    mutable bool summed_ = false;
    mutable Place last_;  // where the last question was answered
};
