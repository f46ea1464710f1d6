#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <numeric>
#include <ostream>
#include <string>
#include <vector>

#include <vekdb/host/exceptions.h>
#include "testing/failing_allocator.h"
#include "testing/random.h"
#include "views/view_index.h"

namespace {

using Rows = std::vector<unsigned>;

/// An index of n rows, each showing its own number.
struct Filled : ViewIndex {
    explicit Filled(int n) {
        for (int i = 0; i < n; ++i) append(static_cast<unsigned>(i));
    }
};

Rows rowsOf(const ViewIndex& index) {
    Rows rows;
    for (int i = 0; i < index.count(); ++i) rows.push_back(index.sourceRow(i));
    return rows;
}

/// The tag bytes of all slots, those behind the last row too.
std::string slotsOf(const ViewIndex& index) {
    std::string slots;
    for (unsigned i = 0; i < index.capacity(); ++i) slots += index.slotTag(i) != 0 ? '1' : '0';
    return slots;
}

std::string tagsOf(const ViewIndex& index) {
    return slotsOf(index).substr(0, static_cast<std::size_t>(index.count()));
}

void tagRows(ViewIndex& index, std::vector<int> rows) {
    for (int row : rows) index.setTag(row, true);
}

void expectSame(const ViewIndex& a, const ViewIndex& b) {
    EXPECT_EQ(rowsOf(a), rowsOf(b));
    EXPECT_EQ(slotsOf(a), slotsOf(b));
}

struct Sizing {
    unsigned capacity;
    std::vector<int> wanted;
    std::vector<unsigned> capacities;
};

void PrintTo(const Sizing& sizing, std::ostream* out) {
    *out << "from a room for " << sizing.capacity;
}

class ViewIndexRoom : public testing::TestWithParam<Sizing> {};

/// An index without rows that has exactly this much room, which must be reachable by growth
/// from nothing.
void makeRoom(ViewIndex& index, unsigned capacity) {
    if (capacity > 0) index.sizeFor(static_cast<int>(capacity));
    ASSERT_EQ(capacity, index.capacity());
}

}  // namespace

TEST_P(ViewIndexRoom, FollowsTheRule) {
    ViewIndex index;
    makeRoom(index, GetParam().capacity);
    for (std::size_t i = 0; i < GetParam().wanted.size(); ++i) {
        index.sizeFor(GetParam().wanted[i]);
        EXPECT_EQ(GetParam().capacities[i], index.capacity()) << "step " << i;
    }
    EXPECT_EQ(0, index.count());
}

INSTANTIATE_TEST_SUITE_P(Steps, ViewIndexRoom,
                         testing::Values(Sizing{0, {1}, {20}}, Sizing{20, {21}, {40}},
                                         Sizing{20, {50}, {50}}, Sizing{40, {20}, {40}},
                                         Sizing{41, {20}, {20}}, Sizing{101, {30}, {50}},
                                         Sizing{100, {5, 5, 5, 25, 26}, {50, 25, 25, 25, 50}},
                                         Sizing{100, {50}, {100}}, Sizing{100, {49}, {50}},
                                         Sizing{0, {0}, {0}}, Sizing{100, {0, 1}, {0, 20}},
                                         Sizing{100, {-1, INT_MIN}, {50, 25}}));

TEST(ViewIndexRoom, StaysFromOneToTwentyFive) {
    ViewIndex index;
    makeRoom(index, 25);
    for (int n = 1; n <= 25; ++n) {
        index.sizeFor(n);
        EXPECT_EQ(25u, index.capacity());
    }
}

TEST(ViewIndexRoom, ComesUntagged) {
    ViewIndex index;
    makeRoom(index, 50);
    EXPECT_EQ(std::string(50, '0'), slotsOf(index));
}

TEST(ViewIndexRoom, KeepsRowsAndTagsWhenItGrows) {
    Filled index(20);
    tagRows(index, {0, 7, 19});
    index.append(99);
    EXPECT_EQ(40u, index.capacity());
    EXPECT_EQ("100000010000000000010", tagsOf(index));
    EXPECT_EQ(99u, index.sourceRow(20));
}

TEST(ViewIndexRoom, LosesTheSlotsBehindTheRowsWhenItGrows) {
    Filled index(20);
    tagRows(index, {19});
    index.remove(19, 1);
    EXPECT_EQ(1u, index.slotTag(19));
    index.sizeFor(30);
    EXPECT_EQ(40u, index.capacity());
    EXPECT_EQ(0u, index.slotTag(19));
}

TEST(ViewIndexRoom, ShrinkingBelowTheRowsKeepsOnlyWhatIsWanted) {
    Filled index(60);
    index.tagAll(true);
    index.sizeFor(1);
    EXPECT_EQ(40u, index.capacity());
    EXPECT_EQ(60, index.count());
    EXPECT_EQ(std::string(20, '1') + std::string(20, '0'), slotsOf(index));
}

TEST(ViewIndexRoom, RemovingComparesWithTheRowsThereWereBefore) {
    ViewIndex index;
    index.openGap(0, 45);
    index.sizeFor(46);
    ASSERT_EQ(90u, index.capacity());
    index.tagAll(true);
    index.remove(5, 30);
    EXPECT_EQ(45u, index.capacity());
    EXPECT_EQ(15, index.count());
    EXPECT_EQ(std::string(45, '1'), slotsOf(index));
}

TEST(ViewIndexRoom, RowsWithoutRoomReadAsNoRows) {
    Filled index(60);
    index.sizeFor(1);
    EXPECT_EQ(40, index.backedCount());
    EXPECT_EQ(0u, index.sourceRow(39));  // past the 20 kept
    EXPECT_EQ(ViewIndex::noRow, index.sourceRow(40));
    EXPECT_EQ(0u, index.tag(59));
    index.setTag(59, true);
    index.setSourceRow(59, 3);
    index.tagAll(true);
    index.invertTags();
    EXPECT_EQ(0u, index.countTags());
    EXPECT_EQ(-1, index.find(59));
    index.raiseFrom(0, 5);
    EXPECT_EQ(60, index.lowerAbove(1000, 0));
    index.append(7);
    EXPECT_EQ(61, index.count());
    EXPECT_EQ(7u, index.sourceRow(60));
    EXPECT_EQ(0u, index.sourceRow(59));
}

TEST(ViewIndexRoom, RowsWithoutRoomCanBeMovedAndTakenOut) {
    Filled index(60);
    index.sizeFor(0);
    EXPECT_EQ(60, index.count());
    EXPECT_EQ(0u, index.capacity());
    EXPECT_EQ(0u, index.countTags());
    index.remove(10, 20);
    EXPECT_EQ(40, index.count());
    EXPECT_EQ(40u, index.capacity());
    index.sizeFor(0);
    EXPECT_EQ(5, index.openGap(5, 2));
    EXPECT_EQ(42, index.count());
    EXPECT_EQ(Rows(42), rowsOf(index));
    index.sizeFor(0);
    const std::vector<unsigned> none;
    index.reorder(none.data());
    EXPECT_EQ(42, index.count());
}

TEST(ViewIndex, IsEmptyAtFirst) {
    ViewIndex index;
    EXPECT_EQ(0, index.count());
    EXPECT_EQ(0u, index.capacity());
    EXPECT_EQ(ViewIndex::noRow, index.sourceRow(0));
    EXPECT_EQ(0u, index.slotTag(0));
    EXPECT_EQ(-1, index.find(0));
}

TEST(ViewIndex, RowsOutOfRangeReadAsNoRowUntagged) {
    Filled index(3);
    index.tagAll(true);
    for (int row : {-1, 3, INT_MIN, INT_MAX}) {
        EXPECT_EQ(ViewIndex::noRow, index.sourceRow(row));
        EXPECT_EQ(0u, index.tag(row));
        index.setTag(row, true);
        index.setSourceRow(row, 9);
    }
    EXPECT_EQ((Rows{0, 1, 2}), rowsOf(index));
    EXPECT_EQ(std::string("111") + std::string(17, '0'), slotsOf(index));
}

TEST(ViewIndex, AppendKeepsTheTagOfTheSlot) {
    Filled index(5);
    tagRows(index, {4});
    index.remove(4, 1);
    index.append(0);
    EXPECT_EQ((Rows{0, 1, 2, 3, 0}), rowsOf(index));
    EXPECT_EQ("00001", tagsOf(index));
}

TEST(ViewIndex, RemovingLeavesTheLastTagOneSlotPastTheEnd) {
    Filled index(5);
    tagRows(index, {4});
    index.remove(0, 1);
    index.append(0);
    EXPECT_EQ((Rows{1, 2, 3, 4, 0}), rowsOf(index));
    EXPECT_EQ("00011", tagsOf(index));
}

TEST(ViewIndex, AGapMovesTheRowsBehindItWithTheirTagsAndKeepsItsOwn) {
    Filled index(3);
    tagRows(index, {0, 2});
    EXPECT_EQ(0, index.openGap(0, 1));
    index.setSourceRow(0, 10);
    EXPECT_EQ((Rows{10, 0, 1, 2}), rowsOf(index));
    EXPECT_EQ("1101", tagsOf(index));
}

TEST(ViewIndex, AGapIsCutToTheRowsThereAre) {
    Filled index(3);
    EXPECT_EQ(0, index.openGap(-5, 1));
    EXPECT_EQ(4, index.openGap(99, 2));
    EXPECT_EQ(6, index.count());
}

TEST(ViewIndex, AGapOfNothingAdjustsTheRoomOnly) {
    Filled index(20);
    index.sizeFor(50);
    ASSERT_EQ(50u, index.capacity());
    index.openGap(3, 0);
    EXPECT_EQ(25u, index.capacity());
    EXPECT_EQ(20, index.count());
    ViewIndex empty;
    empty.sizeFor(20);
    empty.openGap(0, 0);
    EXPECT_EQ(0u, empty.capacity());
}

TEST(ViewIndex, RemovingAllRowsFreesTheRoom) {
    Filled index(5);
    index.tagAll(true);
    index.remove(0, 5);
    EXPECT_EQ(0, index.count());
    EXPECT_EQ(0u, index.capacity());
}

TEST(ViewIndex, ForgettingRowsKeepsTheRoomAndItsTags) {
    Filled index(5);
    index.tagAll(true);
    index.forgetRows();
    EXPECT_EQ(0, index.count());
    EXPECT_EQ(20u, index.capacity());
    index.append(8);
    EXPECT_EQ("1", tagsOf(index));
}

TEST(ViewIndex, LoweringStopsAtTheTarget) {
    ViewIndex index;
    for (unsigned row : {5u, 3u, 9u, 3u, 7u}) index.append(row);
    EXPECT_EQ(1, index.lowerAbove(3, 0));
    EXPECT_EQ((Rows{4, 3, 9, 3, 7}), rowsOf(index));
    EXPECT_EQ(3, index.lowerAbove(3, 2));
    EXPECT_EQ((Rows{4, 3, 8, 3, 7}), rowsOf(index));
    EXPECT_EQ(5, index.lowerAbove(3, 4));
    EXPECT_EQ((Rows{4, 3, 8, 3, 6}), rowsOf(index));
    EXPECT_EQ(5, index.lowerAbove(3, 17));
}

TEST(ViewIndex, LoweringComparesWithoutSign) {
    Filled index(2);
    EXPECT_EQ(2, index.lowerAbove(0xFFFFFFFF, 0));
    EXPECT_EQ((Rows{0, 1}), rowsOf(index));
}

TEST(ViewIndex, RaisingStartsAtARow) {
    Filled index(4);
    index.raiseFrom(2, 10);
    EXPECT_EQ((Rows{0, 1, 12, 13}), rowsOf(index));
}

TEST(ViewIndex, RunsAreOfSourceRowsEachOneMore) {
    ViewIndex index;
    for (unsigned row : {5u, 6u, 7u, 3u, 4u}) index.append(row);
    EXPECT_EQ(3, index.consecutiveRun(0, 5));
    EXPECT_EQ(2, index.consecutiveRun(0, 2));
    EXPECT_EQ(1, index.consecutiveRun(2, 3));
    EXPECT_EQ(2, index.consecutiveRun(3, 2));
}

TEST(ViewIndex, ReorderingTakesTagsAlong) {
    Filled index(4);
    tagRows(index, {1, 2});
    const unsigned positions[] = {2, 0, 3, 1};
    index.reorder(positions);
    EXPECT_EQ((Rows{2, 0, 3, 1}), rowsOf(index));
    EXPECT_EQ("1001", tagsOf(index));
}

TEST(ViewIndex, FindsTheFirstOfARow) {
    ViewIndex index;
    for (unsigned row : {4u, 2u, 4u}) index.append(row);
    EXPECT_EQ(0, index.find(4));
    EXPECT_EQ(1, index.find(2));
    EXPECT_EQ(-1, index.find(7));
}

TEST(ViewIndex, TagsAreSetInvertedAndCounted) {
    Filled index(4);
    tagRows(index, {1});
    EXPECT_EQ(1u, index.countTags());
    index.invertTags();
    EXPECT_EQ("1011", tagsOf(index));
    EXPECT_EQ(3u, index.countTags());
    index.tagAll(true);
    EXPECT_EQ("1111", tagsOf(index));
    index.tagAll(false);
    EXPECT_EQ(std::string(20, '0'), slotsOf(index));
}

TEST(ViewIndex, MoreRowsThanCanBeCountedExhaustMemory) {
    Filled index(2);
    EXPECT_THROW(index.openGap(0, INT_MAX), Quor::Exception::BadAlloc);
    EXPECT_THROW(index.insertOneByOne(nullptr, INT_MAX, 0), Quor::Exception::BadAlloc);
    EXPECT_EQ((Rows{0, 1}), rowsOf(index));
    EXPECT_EQ(20u, index.capacity());
}

TEST(ViewIndex, ExhaustedMemoryLeavesItAsItWas) {
    Filled index(100);
    tagRows(index, {3, 99});
    const Rows rows = rowsOf(index);
    const std::string slots = slotsOf(index);
    int failures = 0;
    const std::vector<unsigned> added(200, 7);
    for (int step = 0; step < 3; ++step) {
        testing_support::FailingAllocator failing(1);
        try {
            if (step == 0) index.insertOneByOne(added.data(), 200, 5);
            if (step == 1) index.openGap(0, 100);
            if (step == 2) index.sizeFor(1000);
        } catch (const Quor::Exception::BadAlloc&) {
            ++failures;
        }
    }
    EXPECT_EQ(3, failures);
    EXPECT_EQ(rows, rowsOf(index));
    EXPECT_EQ(slots, slotsOf(index).substr(0, slots.size()));
}

TEST(ViewIndex, RowsGoWithoutMemoryAsTheyGoWithIt) {
    for (int left = 0; left <= 100; ++left) {
        Filled plain(100);
        Filled exhausted(100);
        tagRows(plain, {3, 60, 99});
        tagRows(exhausted, {3, 60, 99});
        plain.remove(0, 100 - left);
        {
            testing_support::FailingAllocator failing(1);
            exhausted.remove(0, 100 - left);
        }
        ASSERT_EQ(rowsOf(plain), rowsOf(exhausted)) << left;
        ASSERT_EQ(slotsOf(plain), slotsOf(exhausted)) << left;
        ASSERT_EQ(plain.capacity(), exhausted.capacity()) << left;
    }
}

TEST(ViewIndexOneByOne, AtTheEndEachRowKeepsItsSlotsTag) {
    Filled index(5);
    index.tagAll(true);
    index.remove(2, 3);
    const unsigned rows[] = {7, 8};
    index.setTag(1, false);
    index.insertOneByOne(rows, 2, 2);
    EXPECT_EQ((Rows{0, 1, 7, 8}), rowsOf(index));
    EXPECT_EQ("1011", tagsOf(index));
}

TEST(ViewIndexOneByOne, InsideEachRowTakesTheTagOfTheFirstDisplaced) {
    Filled index(2);
    tagRows(index, {0});
    const unsigned rows[] = {2, 3, 4};
    index.insertOneByOne(rows, 3, 0);
    EXPECT_EQ((Rows{2, 3, 4, 0, 1}), rowsOf(index));
    EXPECT_EQ("11110", tagsOf(index));
}

TEST(ViewIndexOneByOne, BeforeTheFirstRowComesOutReversed) {
    const unsigned rows[] = {2, 3, 4, 5};
    Filled two(1), one(1), far(1);
    two.insertOneByOne(rows, 4, -2);
    EXPECT_EQ((Rows{4, 5, 3, 2, 0}), rowsOf(two));
    one.insertOneByOne(rows, 3, -1);
    EXPECT_EQ((Rows{3, 4, 2, 0}), rowsOf(one));
    far.insertOneByOne(rows, 3, INT_MIN);
    EXPECT_EQ((Rows{4, 3, 2, 0}), rowsOf(far));
}

TEST(ViewIndexOneByOne, BeforeNoRowAtAllTheTagIsThatOfTheFirstSlot) {
    ViewIndex index;
    index.append(9);
    index.setTag(0, true);
    index.forgetRows();
    const unsigned rows[] = {2, 3, 4};
    index.insertOneByOne(rows, 3, -1);
    EXPECT_EQ((Rows{3, 4, 2}), rowsOf(index));
    EXPECT_EQ("111", tagsOf(index));
}

TEST(ViewIndexOneByOne, NothingChangesForNoRows) {
    Filled index(20);
    index.sizeFor(50);
    index.insertOneByOne(nullptr, 0, 1);
    EXPECT_EQ(50u, index.capacity());
    EXPECT_EQ(20, index.count());
}

// Two indexes are put through the same random steps, but for the insertions, which one of them
// gets singly.
TEST(ViewIndexOneByOne, GivesWhatSingleInsertionsGive) {
    testing_support::Random random;
    for (int run = 0; run < 2000; ++run) {
        ViewIndex together, singly;
        for (int step = 0; step < 12; ++step) {
            const int count = together.count();
            const int n = random.between(0, random.oneIn(4) ? 70 : 5);
            const int at = random.between(-4, count + 3);
            const int kind = random.between(0, 5);
            Rows rows(static_cast<std::size_t>(n));
            std::iota(rows.begin(), rows.end(), 1000u * static_cast<unsigned>(step));
            if (kind <= 2) {
                together.insertOneByOne(rows.data(), n, at);
                for (int i = 0; i < n; ++i) {
                    const int place = singly.openGap(at + i, 1);
                    singly.setSourceRow(place, rows[static_cast<std::size_t>(i)]);
                }
            }
            for (ViewIndex* index : {&together, &singly}) {
                if (kind == 3 && count > 0) {
                    const int from = std::clamp(at, 0, count - 1);
                    index->remove(from, std::min(n, count - from));
                } else if (kind == 4) {
                    index->setTag(at, n % 2 == 0);
                    index->setTag(n, true);
                } else if (kind == 5 && n == 0) {
                    index->forgetRows();
                }
            }
            ASSERT_NO_FATAL_FAILURE(expectSame(together, singly));
            if (HasFailure()) return;
        }
    }
}
