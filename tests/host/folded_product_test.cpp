#include "host/folded_product.h"

#include <gtest/gtest.h>

#include "testing/random.h"

TEST(FoldedProduct, LaysBothHalvesOverEachOther) {
    constexpr std::uint64_t all = ~std::uint64_t{0};
    EXPECT_EQ(foldedProduct(0, all), 0u);
    EXPECT_EQ(foldedProduct(3, 5), 15u);
    EXPECT_EQ(foldedProduct(std::uint64_t{1} << 63, 6), 3u);
    EXPECT_EQ(foldedProduct(all, all), all);
}

TEST(FoldedProduct, IsTheSameMadeOfHalves) {
    testing_support::Random random;
    for (int turn = 0; turn < 10000; ++turn) {
        const std::uint64_t a = random.below(~std::size_t{0}) >> random.below(64);
        const std::uint64_t b = random.below(~std::size_t{0}) >> random.below(64);
        ASSERT_EQ(foldedProductByHalves(a, b), foldedProduct(a, b)) << a << ' ' << b;
    }
    constexpr std::uint64_t all = ~std::uint64_t{0};
    EXPECT_EQ(foldedProductByHalves(all, all), foldedProduct(all, all));
}
