#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "testing/deferral.h"
#include "testing/failing_allocator.h"
#include "testing/random.h"
#include "views/row_blocks.h"

namespace {

using testing_support::Random;

// The same rows in blocks and in one list.
struct Both {
    RowBlocks blocks;
    std::vector<ViewSlot> plain;

    void insert(std::uint32_t at, std::uint32_t n, std::uint32_t first) {
        RowBlocks::Spare spare = blocks.spareFor(at, n);
        ASSERT_TRUE(blocks.isEnough(spare, at, n));
        {
            const testing_support::FailingAllocator failing(1);
            blocks.insert(at, n, first, spare);
        }
        for (std::uint32_t i = 0; i < n; ++i) {
            plain.insert(plain.begin() + at + i, {first + i, 0});
        }
    }
    void erase(std::uint32_t at, std::uint32_t n) {
        blocks.erase(at, n);
        plain.erase(plain.begin() + at, plain.begin() + at + n);
    }
    void shiftFrom(std::uint32_t at, std::uint32_t by) {
        blocks.shiftFrom(at, by);
        for (std::size_t i = at; i < plain.size(); ++i) plain[i].row += by;
    }
    void lowerAbove(std::uint32_t target, std::uint32_t from) {
        std::size_t i = from;
        for (; i < plain.size() && plain[i].row != target; ++i) {
            if (plain[i].row > target) --plain[i].row;
        }
        EXPECT_EQ(std::min(i, plain.size()), blocks.lowerAbove(target, from));
    }
    std::size_t find(std::uint32_t row) const {
        const auto shows = [row](const ViewSlot& slot) { return slot.row == row; };
        return static_cast<std::size_t>(std::find_if(plain.begin(), plain.end(), shows) -
                                        plain.begin());
    }
    std::size_t firstFrom(std::uint32_t row) const {
        const auto below = [row](const ViewSlot& slot) { return slot.row < row; };
        return static_cast<std::size_t>(std::partition_point(plain.begin(), plain.end(), below) -
                                        plain.begin());
    }
    bool ascends() const {
        return std::is_sorted(plain.begin(), plain.end(),
                              [](const ViewSlot& a, const ViewSlot& b) { return a.row < b.row; });
    }
    void expectSame() {
        ASSERT_EQ(plain.size(), blocks.size());
        std::uint32_t tagged = 0;
        for (std::uint32_t i = 0; i < plain.size(); ++i) {
            ASSERT_EQ(plain[i].row, blocks.row(i)) << i;
            ASSERT_EQ(plain[i].tag, blocks.tag(i)) << i;
            tagged += plain[i].tag;
        }
        ASSERT_EQ(tagged, blocks.countTags());
        ASSERT_EQ(ascends(), blocks.isAscending());
    }
};

void randomStep(Both& both, Random& random, std::uint32_t much) {
    const auto size = static_cast<std::uint32_t>(both.plain.size());
    const auto at = static_cast<std::uint32_t>(random.below(size + 1));
    const auto row = static_cast<std::uint32_t>(random.below(size + 10));
    const auto behind = static_cast<std::uint32_t>(size - at);
    switch (random.below(14)) {
        case 0:
            both.insert(at, static_cast<std::uint32_t>(random.below(much)), row);
            break;
        case 1:
            both.erase(at, static_cast<std::uint32_t>(random.below(std::min(behind, much) + 1)));
            break;
        case 2:
            both.insert(size, 1, row);
            break;
        case 3:
            both.shiftFrom(at, random.oneIn(2) ? 1 : ~0u);
            break;
        case 4:
            both.lowerAbove(row, at);
            break;
        case 5:
            if (behind == 0) break;
            both.blocks.set(at, {row, 1});
            both.plain[at] = {row, 1};
            break;
        case 6:
            if (behind == 0) break;
            both.blocks.setTag(at, 1);
            both.plain[at].tag = 1;
            break;
        case 7:
            both.blocks.invertTags();
            for (ViewSlot& slot : both.plain) slot.tag ^= 1;
            break;
        case 8:
            EXPECT_EQ(both.find(row), both.blocks.find(row));
            break;
        case 9:
            if (both.ascends()) {
                EXPECT_EQ(both.firstFrom(row), both.blocks.firstFrom(row));
            }
            break;
        case 10:
            if (random.oneIn(20)) both.erase(0, size);
            break;
        default:
            if (random.oneIn(2)) {
                both.insert(at, 1, row);
            } else if (behind > 0) {
                both.erase(at, 1);
            }
    }
}

void runRandomly(int rounds, int steps, std::uint32_t much) {
    Random random;
    for (int round = 0; round < rounds && !testing::Test::HasFailure(); ++round) {
        Both both;
        for (int step = 0; step < steps; ++step) {
            randomStep(both, random, random.oneIn(10) ? much : 4);
            if (random.oneIn(6)) {
                ASSERT_NO_FATAL_FAILURE(both.expectSame());
            }
        }
        both.expectSame();
    }
}

TEST(RowBlocks, SmallOnesHoldWhatOneListHolds) {
    const SmallBlocks small;
    runRandomly(1500, 60, 40);
}

TEST(RowBlocks, LargeOnesHoldWhatOneListHolds) {
    runRandomly(20, 300, 3000);
}

// As a view over all rows does it: rows come and go anywhere, the rest are renumbered.
TEST(RowBlocks, AscendingRowsAreRenumberedAsOneListIs) {
    const SmallBlocks small;
    Random random;
    Both both;
    both.insert(0, 200, 0);
    for (int step = 0; step < 4000; ++step) {
        const auto at = static_cast<std::uint32_t>(random.below(both.plain.size()));
        const std::uint32_t row = both.blocks.row(at);
        if (random.oneIn(2)) {
            both.shiftFrom(at, 1);
            both.insert(at, 1, row);
        } else if (both.plain.size() > 50) {
            both.erase(at, 1);
            both.shiftFrom(at, ~0u);
        }
        ASSERT_EQ(both.firstFrom(row), both.blocks.firstFrom(row));
        if (step % 50 == 0) {
            ASSERT_NO_FATAL_FAILURE(both.expectSame());
        }
    }
}

}  // namespace
