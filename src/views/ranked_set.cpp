#include "views/ranked_set.h"

#include <algorithm>
#include <bit>

namespace {

std::uint32_t membersOf(std::uint64_t bits) {
    return static_cast<std::uint32_t>(std::popcount(bits));
}

std::uint64_t firstBits(std::uint32_t n) {
    return n < 64 ? (std::uint64_t{1} << n) - 1 : ~std::uint64_t{0};
}

// The place of the n-th set bit, of which there are more than n.
std::uint32_t nthBit(std::uint64_t bits, std::uint32_t n) noexcept {
    std::uint32_t place = 0;
    for (std::uint32_t half = 32; half >= 16; half /= 2) {
        const std::uint32_t below = membersOf(bits & firstBits(half));
        if (n >= below) {
            n -= below;
            bits >>= half;
            place += half;
        }
    }
    for (; n > 0; --n) bits &= bits - 1;
    return place + static_cast<std::uint32_t>(std::countr_zero(bits));
}

}  // namespace

RankedSet::RankedSet(std::uint32_t bound)
    : blocks_(bound / blockBits + 1), sums_(blocks_.size() + 1, 0), size_(bound) {
    std::uint32_t left = bound;
    for (Block& block : blocks_) {
        std::uint32_t before = 0;
        for (std::uint32_t i = 0; i < blockWords; ++i) {
            const std::uint32_t here = std::min<std::uint32_t>(left, 64);
            block.words[i] = firstBits(here);
            block.before[i] = static_cast<std::uint16_t>(before);
            before += here;
            left -= here;
        }
    }
    for (std::uint32_t i = 1; i < sums_.size(); ++i) {
        const std::uint64_t first = std::uint64_t{i - (i & -i)} * blockBits;
        const std::uint64_t end = std::min<std::uint64_t>(std::uint64_t{i} * blockBits, bound);
        sums_[i] = static_cast<std::uint32_t>(first < end ? end - first : 0);
        if ((i & (i - 1)) == 0) topStep_ = i;
    }
}

std::uint32_t RankedSet::membersBefore(std::uint32_t block) const noexcept {
    std::uint32_t members = 0;
    for (; block > 0; block &= block - 1) {
        members += sums_[block];
    }
    return members;
}

std::uint32_t RankedSet::countBelow(std::uint32_t number) const noexcept {
    const std::uint32_t block = number / blockBits;
    if (block != block_) {
        before_ = membersBefore(block);
        block_ = block;
    }
    const std::uint32_t word = number / 64 % blockWords;
    const std::uint64_t below = blocks_[block].words[word] & firstBits(number % 64);
    return before_ + blocks_[block].before[word] + membersOf(below);
}

// Goes to the block that holds the member with n members below it.
void RankedSet::lookAtBlockOf(std::uint32_t n) const noexcept {
    block_ = 0;
    before_ = 0;
    for (std::uint32_t step = topStep_; step > 0; step /= 2) {
        const std::uint32_t next = block_ + step;
        if (next < blocks_.size() && before_ + sums_[next] <= n) {
            block_ = next;
            before_ += sums_[next];
        }
    }
}

std::uint32_t RankedSet::nth(std::uint32_t n) const noexcept {
    const auto inBlock = [&] {
        const Block& block = blocks_[block_];
        return block.before[blockWords - 1] + membersOf(block.words[blockWords - 1]);
    };
    if (n < before_ || n - before_ >= inBlock()) lookAtBlockOf(n);
    const Block& block = blocks_[block_];
    n -= before_;
    std::uint32_t word = blockWords - 1;
    while (block.before[word] > n) --word;
    return (block_ * blockWords + word) * 64 + nthBit(block.words[word], n - block.before[word]);
}

void RankedSet::erase(std::uint32_t number) noexcept {
    const std::uint32_t at = number / blockBits;
    Block& block = blocks_[at];
    std::uint32_t word = number / 64 % blockWords;
    block.words[word] &= ~(std::uint64_t{1} << number % 64);
    while (++word < blockWords) --block.before[word];
    for (std::uint32_t i = at + 1; i < sums_.size(); i += i & -i) {
        --sums_[i];
    }
    if (at < block_) --before_;
    --size_;
}
