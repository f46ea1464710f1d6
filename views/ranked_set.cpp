#include "views/ranked_set_impl.h"

#include <algorithm>
#include <bit>

RankedSet::RankedSet(std::uint32_t bound)
    : words_((std::size_t{bound} / blockBits + 1) * blockWords, 0),
      sums_(words_.size() / blockWords + 1, 0),
      size_(bound) {
    std::fill_n(words_.begin(), bound / 64, ~std::uint64_t{0});
    if (bound % 64 != 0) words_[bound / 64] = (std::uint64_t{1} << bound % 64) - 1;
    const auto blocks = static_cast<std::uint32_t>(sums_.size() - 1);
    for (std::uint32_t block = 1; block <= blocks; ++block) {
        const std::uint32_t first = (block - (block & -block)) * blockBits;
        const std::uint64_t end = std::uint64_t{block} * blockBits;
        if (first < bound) sums_[block] = static_cast<std::uint32_t>(
            std::min<std::uint64_t>(end, bound) - first);
        if ((block & (block - 1)) == 0) topStep_ = block;
    }
}

std::uint32_t RankedSet::countBelow(std::uint32_t number) const noexcept {
    std::uint32_t below = 0;
    for (std::uint32_t block = number / blockBits; block > 0; block &= block - 1) {
        below += sums_[block];
    }
    const std::uint32_t word = number / 64;
    for (std::uint32_t i = number / blockBits * blockWords; i < word; ++i) {
        below += static_cast<std::uint32_t>(std::popcount(words_[i]));
    }
    const std::uint64_t lower = (std::uint64_t{1} << number % 64) - 1;
    return below + static_cast<std::uint32_t>(std::popcount(words_[word] & lower));
}

std::uint32_t RankedSet::nth(std::uint32_t n) const noexcept {
    std::uint32_t block = 0;
    for (std::uint32_t step = topStep_; step > 0; step /= 2) {
        if (block + step < sums_.size() && sums_[block + step] <= n) {
            block += step;
            n -= sums_[block];
        }
    }
    std::uint32_t word = block * blockWords;
    for (std::uint32_t here; n >= (here = static_cast<std::uint32_t>(
                                       std::popcount(words_[word])));
         ++word) {
        n -= here;
    }
    std::uint64_t bits = words_[word];
    for (; n > 0; --n) bits &= bits - 1;
    return word * 64 + static_cast<std::uint32_t>(std::countr_zero(bits));
}

void RankedSet::erase(std::uint32_t number) noexcept {
    words_[number / 64] &= ~(std::uint64_t{1} << number % 64);
    for (std::uint32_t block = number / blockBits + 1; block < sums_.size();
         block += block & -block) {
        --sums_[block];
    }
    --size_;
}
