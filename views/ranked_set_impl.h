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
        return (words_[number / 64] >> (number % 64) & 1) != 0;
    }
    /// How many members are less than a number up to the bound.
    std::uint32_t countBelow(std::uint32_t number) const noexcept;
    /// The member with n members below it; n is less than the size.
    std::uint32_t nth(std::uint32_t n) const noexcept;
    /// Takes a member out.
    void erase(std::uint32_t number) noexcept;

private:
    // A block is as many words as one line of memory; sums_ is a binary indexed tree over the
    // blocks' members, so that entry i holds the members of the (i & -i) blocks up to i.
    static constexpr std::uint32_t blockWords = 8;
    static constexpr std::uint32_t blockBits = blockWords * 64;

    std::vector<std::uint64_t> words_;
    std::vector<std::uint32_t> sums_;
    std::uint32_t size_;
    std::uint32_t topStep_ = 1;  // the largest power of two that is a block number
};
