#include "vekdb/order/sort_items.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "testing/random.h"

namespace {

using Keys = std::vector<SortItem>;
using Indices = std::vector<std::size_t>;

Keys randomKeys(testing_support::Random& random, std::size_t n, unsigned bits) {
    Keys keys;
    for (std::size_t i = 0; i < n; ++i) {
        const SortItem key = SortItem{random.below(1u << 31)} << 31 | random.below(1u << 31);
        keys.push_back(key & ((SortItem{1} << bits) - 1));
    }
    return keys;
}

Indices sorted(const Keys& keys, unsigned bits, const iTieBreak* ties) {
    SortItems items(keys.size());
    for (std::size_t i = 0; i < keys.size(); ++i) items.set(i, keys[i]);
    items.sort(bits, ties);
    Indices found;
    for (std::size_t i = 0; i < keys.size(); ++i) found.push_back(items[i]);
    return found;
}

// Puts the higher index first, or only odd ones before even ones.
struct Ties final : iTieBreak {
    explicit Ties(bool byOddness) : byOddness(byOddness) {}
    int decide(std::size_t a, std::size_t b) const override {
        if (byOddness) return static_cast<int>(b % 2) - static_cast<int>(a % 2);
        return int{a < b} - int{a > b};
    }
    bool byOddness;
};

Indices model(const Keys& keys, const iTieBreak* ties) {
    Indices expected(keys.size());
    for (std::size_t i = 0; i < keys.size(); ++i) expected[i] = i;
    std::stable_sort(expected.begin(), expected.end(), [&](std::size_t a, std::size_t b) {
        if (keys[a] != keys[b]) return keys[a] < keys[b];
        return ties != nullptr && ties->decide(a, b) < 0;
    });
    return expected;
}

TEST(SortItems, ComeInTheOrderOfTheirKeys) {
    testing_support::Random random;
    for (std::size_t n : {0u, 1u, 2u, 3u, 47u, 255u, 256u, 257u, 5000u}) {
        for (unsigned bits : {0u, 1u, 7u, 8u, 9u, 16u, 33u, 50u}) {
            const Keys keys = randomKeys(random, n, bits);
            ASSERT_EQ(model(keys, nullptr), sorted(keys, bits, nullptr)) << n << ' ' << bits;
        }
    }
}

TEST(SortItems, TakeKeysOfAllTheRoomThereIs) {
    testing_support::Random random;
    for (std::size_t n : {1u, 2u, 60u, 3000u}) {
        const unsigned room = std::min(SortItems(n).keyRoom(), 62u);
        EXPECT_GE(room, 51u);
        const Keys keys = randomKeys(random, n, room);
        ASSERT_EQ(model(keys, nullptr), sorted(keys, room, nullptr)) << n;
    }
}

TEST(SortItems, TiesAreDecidedAmongTheSameKeysOnly) {
    testing_support::Random random;
    for (bool byOddness : {false, true}) {
        const Ties ties(byOddness);
        for (std::size_t n : {0u, 1u, 2u, 3u, 100u, 3000u}) {
            for (unsigned bits : {0u, 1u, 4u, 10u, 20u}) {
                const Keys keys = randomKeys(random, n, bits);
                ASSERT_EQ(model(keys, &ties), sorted(keys, bits, &ties)) << n << ' ' << bits;
            }
        }
    }
}

}  // namespace
