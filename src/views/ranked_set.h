#pragma once

#include <cstdint>
#include <vector>

/// A set of numbers below a bound that starts full and only loses members. Answers how many
/// members lie below a number, and which is the n-th, in about the logarithm of the bound.
class RankedSet {
public:
    explicit RankedSet(std::uint32_t bound);

    std::uint32_t size() const noexcept { return size_; }
    bool contains(std::uint32_t number) const noexcept {
        return (wordOf(number) >> (number % 64) & 1) != 0;
    }
    /// How many members are less than a number up to the bound.
    std::uint32_t countBelow(std::uint32_t number) const noexcept;
    /// The member with n members below it; n is less than the size.
    std::uint32_t nth(std::uint32_t n) const noexcept;
    /// Takes a member out.
    void erase(std::uint32_t number) noexcept;

private:
    static constexpr std::uint32_t blockWords = 8;
    static constexpr std::uint32_t blockBits = blockWords * 64;

    // Part of the set: its words, and the members of the block before each of them.
    struct Block {
        std::uint64_t words[blockWords];
        std::uint16_t before[blockWords];
    };

    std::uint64_t wordOf(std::uint32_t number) const noexcept {
        return blocks_[number / blockBits].words[number / 64 % blockWords];
    }
    std::uint32_t membersBefore(std::uint32_t block) const noexcept;
    void lookAtBlockOf(std::uint32_t n) const noexcept;

    std::vector<Block> blocks_;
    // A binary indexed tree over the blocks' members: entry i holds those of the (i & -i)
    // blocks up to number i - 1.
    std::vector<std::uint32_t> sums_;
    std::uint32_t size_;
    std::uint32_t topStep_ = 1;  // the largest power of two that is a block number
    // The block that was looked at last and the members before it: one question is mostly
    // followed by another near by.
    mutable std::uint32_t block_ = 0;
    mutable std::uint32_t before_ = 0;
};
