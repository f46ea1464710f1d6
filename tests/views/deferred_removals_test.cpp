#include <gtest/gtest.h>

#include <vector>

#include "testing/random.h"
#include "views/ranked_set_impl.h"
#include "views/view_index_impl.h"

namespace {

using testing_support::Random;

TEST(RankedSet, CountsAndFindsAsAPlainListDoes) {
    Random random;
    for (std::uint32_t bound : {1u, 63u, 64u, 65u, 511u, 512u, 513u, 5000u}) {
        RankedSet set(bound);
        std::vector<std::uint32_t> plain(bound);
        for (std::uint32_t i = 0; i < bound; ++i) plain[i] = i;
        while (!plain.empty()) {
            ASSERT_EQ(plain.size(), set.size());
            const std::size_t at = random.below(plain.size());
            ASSERT_EQ(plain[at], set.nth(static_cast<std::uint32_t>(at)));
            ASSERT_EQ(at, set.countBelow(plain[at]));
            ASSERT_TRUE(set.contains(plain[at]));
            ASSERT_EQ(plain.size(), set.countBelow(bound));
            set.erase(plain[at]);
            ASSERT_FALSE(set.contains(plain[at]));
            plain.erase(plain.begin() + static_cast<std::ptrdiff_t>(at));
            if (bound > 1000 && plain.size() > 20 && random.oneIn(2)) {
                set.erase(plain.back());
                plain.pop_back();
            }
        }
    }
}

// Lets every index take one way or the other while it is in scope.
class DeferralFrom {
public:
    DeferralFrom(int leastRows, unsigned passes) {
        ViewIndex::Deferral::leastRows = leastRows;
        ViewIndex::Deferral::passes = passes;
    }
    ~DeferralFrom() {
        ViewIndex::Deferral::leastRows = leastRows_;
        ViewIndex::Deferral::passes = passes_;
    }

private:
    int leastRows_ = ViewIndex::Deferral::leastRows;
    unsigned passes_ = ViewIndex::Deferral::passes;
};

constexpr int never = 1 << 30;

// Two indexes that are given the same operations, of which one defers at once.
struct BothWays {
    template <class Operation>
    void each(Operation operation) {
        {
            DeferralFrom plainOnly(never, 0);
            operation(plain);
        }
        DeferralFrom atOnce(1, 0);
        operation(deferring);
    }
    // Reading settles after a while, so only some steps are compared in full.
    void expectSame(int step) {
        ASSERT_EQ(plain.count(), deferring.count()) << step;
        ASSERT_EQ(plain.capacity(), deferring.capacity()) << step;
        for (int i = 0; i < plain.count(); ++i) {
            ASSERT_EQ(plain.sourceRow(i), deferring.sourceRow(i)) << step << " row " << i;
            ASSERT_EQ(plain.tag(i), deferring.tag(i)) << step << " row " << i;
        }
        for (unsigned i = 0; i < plain.capacity(); ++i) {
            ASSERT_EQ(plain.slotTag(i), deferring.slotTag(i)) << step << " slot " << i;
        }
    }
    ViewIndex plain, deferring;
};

// As a view does it: every row that shows the target goes, one after the other; `stop` leaves
// the drop in the middle.
void dropAll(ViewIndex& index, unsigned target, int stop, std::vector<int>& places) {
    int row = index.lowerAbove(target, 0);
    while (row < index.count() && stop-- != 0) {
        index.remove(row, 1);
        places.push_back(row);
        row = index.lowerAbove(target, row);
    }
}

void fill(BothWays& both, Random& random) {
    const int rows = static_cast<int>(random.below(60));
    const bool identity = random.oneIn(3);
    for (int i = 0; i < rows; ++i) {
        const unsigned source = identity ? unsigned(i) : unsigned(random.below(rows + 5));
        const bool tag = random.oneIn(2);
        both.each([&](ViewIndex& index) {
            index.append(source);
            index.setTag(i, tag);
        });
    }
}

void randomStep(BothWays& both, Random& random) {
    const int count = both.plain.count();
    const int at = static_cast<int>(random.below(count + 1));
    switch (random.below(12)) {
        default: {
            const unsigned target = unsigned(random.below(count + 4)) - (random.oneIn(9) ? 5 : 0);
            const int stop = random.oneIn(10) ? static_cast<int>(random.below(2)) : -1;
            std::vector<int> plain, deferred;
            std::vector<int>* places = &plain;
            both.each([&](ViewIndex& index) {
                dropAll(index, target, stop, *places);
                places = &deferred;
            });
            EXPECT_EQ(plain, deferred);
            break;
        }
        case 0:
        case 1:
        case 2: {
            if (at == count) break;
            const int n = 1 + static_cast<int>(random.below(std::min(count - at, 4)));
            both.each([&](ViewIndex& index) { index.remove(at, n); });
            break;
        }
        case 3:
            both.each([&](ViewIndex& index) { index.setTag(at, true); });
            break;
        case 4:
            if (random.oneIn(4)) both.each([&](ViewIndex& index) { index.append(unsigned(at)); });
            break;
        case 5: {
            if (!random.oneIn(6)) break;
            both.each([&](ViewIndex& index) {
                int gap = index.openGap(at, 2);
                index.setSourceRow(gap, 7);
                index.setSourceRow(gap + 1, 8);
            });
            break;
        }
        case 6:
            if (random.oneIn(6)) both.each([&](ViewIndex& index) { index.invertTags(); });
            break;
        case 7:
            if (random.oneIn(6)) both.each([&](ViewIndex& index) { index.sizeFor(count); });
            break;
    }
}

TEST(DeferredRemovals, CannotBeToldFromRemovalsOneByOne) {
    Random random;
    for (int round = 0; round < 1500 && !testing::Test::HasFailure(); ++round) {
        BothWays both;
        fill(both, random);
        for (int step = 0; step < 40; ++step) {
            randomStep(both, random);
            ASSERT_EQ(both.plain.count(), both.deferring.count());
            ASSERT_EQ(both.plain.capacity(), both.deferring.capacity());
            if (random.oneIn(8)) both.expectSame(step);
        }
        both.expectSame(-1);
    }
}

TEST(DeferredRemovals, ShowTheHalfDoneDropAsItStands) {
    BothWays both;
    for (unsigned source : {5u, 3u, 9u, 3u, 4u, 8u}) {
        both.each([&](ViewIndex& index) { index.append(source); });
    }
    both.each([](ViewIndex& index) {
        ASSERT_EQ(1, index.lowerAbove(3, 0));
        index.remove(1, 1);
        ASSERT_EQ(2, index.lowerAbove(3, 1));
        EXPECT_EQ(4u, index.sourceRow(0));
        EXPECT_EQ(8u, index.sourceRow(1));
        EXPECT_EQ(3u, index.sourceRow(2));
        EXPECT_EQ(4u, index.sourceRow(3));
        EXPECT_EQ(8u, index.sourceRow(4));
    });
    both.expectSame(0);
}

TEST(DeferredRemovals, AreNotTriedOnRowsFarApart) {
    BothWays both;
    for (unsigned source : {1u, 4000000000u, 3u}) {
        both.each([&](ViewIndex& index) { index.append(source); });
    }
    std::vector<int> places;
    both.each([&](ViewIndex& index) { dropAll(index, 1, -1, places); });
    both.expectSame(0);
    EXPECT_EQ((std::vector<int>{0, 0}), places);
}

}  // namespace
