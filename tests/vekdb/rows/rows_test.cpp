#include "vekdb/rows/rows.h"

#include <gtest/gtest.h>

#include "testing/failing_allocator.h"
#include "testing/random.h"
#include "vekdb/record/record_access.h"

namespace {

using Model = std::vector<dbrecord*>;

Model contentsOf(const Rows& rows) {
    Model all;
    for (unsigned i = 0; i < rows.count(); ++i) all.push_back(rows.at(i));
    return all;
}

TEST(Rows, StartWithoutRoom) {
    Rows rows;
    EXPECT_EQ(0u, rows.count());
    EXPECT_EQ(0u, rows.capacity());
    EXPECT_EQ(nullptr, rows.shown(0));
}

TEST(Rows, CapacityCoversInStepsOfFiveHundred) {
    Rows rows;
    rows.cover(1);
    EXPECT_EQ(500u, rows.capacity());
    rows.cover(500);
    EXPECT_EQ(500u, rows.capacity());
    rows.cover(501);
    EXPECT_EQ(1000u, rows.capacity());
    rows.addChunk();
    EXPECT_EQ(1500u, rows.capacity());
    rows.release();
    EXPECT_EQ(0u, rows.capacity());
}

long allocationsToCover(Rows& rows, unsigned from, unsigned to) {
    const testing_support::CountingAllocator counted;
    for (unsigned n = from; n <= to; ++n) rows.cover(n);
    return counted.allocations();
}

TEST(Rows, TakeRoomForExpectedOnesInOneStepAndNoMoreThanSomeTimesThoseThatCame) {
    Rows expecting;
    expecting.cover(1);
    expecting.expect(20000);
    EXPECT_EQ(1, allocationsToCover(expecting, 2, 20000));
    EXPECT_EQ(20000u, expecting.capacity());

    Rows deceived;
    deceived.expect(std::size_t{1} << 40);
    const testing_support::CountingAllocator counted;
    deceived.cover(1);
    EXPECT_LE(counted.lastSize(), 500 * 64 * sizeof(void*));
}

TEST(Rows, StandInOrderAsRunsUnderANumberThatChangesWithTheirPlaces) {
    Rows rows;
    rows.cover(10);
    for (int i = 0; i < 10; ++i) rows.append(rows.pool().create(1));
    const std::uint64_t before = rows.inOrder().order;
    rows.erase(3, 2);
    const RowsInOrder standing = rows.inOrder();
    EXPECT_NE(before, standing.order);
    ASSERT_EQ(8u, standing.count());
    Model found;
    for (const RecordRun& run : standing.runs) {
        found.insert(found.end(), run.records, run.records + run.count);
    }
    EXPECT_EQ(contentsOf(rows), found);
    rows.inOneArray();
    EXPECT_NE(standing.order, rows.inOrder().order);
    const std::uint64_t released = rows.inOrder().order;
    rows.release();
    EXPECT_NE(released, rows.inOrder().order);
}

TEST(Rows, AreOneArrayForReordering) {
    Rows rows;
    rows.cover(4);
    for (int i = 0; i < 4; ++i) rows.append(rows.pool().create(1));
    Model before = contentsOf(rows);
    rows.erase(1, 1);
    dbrecord** array = rows.inOneArray();
    EXPECT_EQ(before[0], array[0]);
    EXPECT_EQ(before[2], array[1]);
    EXPECT_EQ(before[3], array[2]);
    std::swap(array[0], array[2]);
    EXPECT_EQ(before[3], rows.at(0));
}

TEST(Rows, KeepTheOrderOfAPlainListUnderAnyEdits) {
    testing_support::Random random;
    Rows rows;
    Model model;
    for (int step = 0; step < 5000; ++step) {
        unsigned at = static_cast<unsigned>(random.below(model.size() + 1));
        unsigned n = 1 + static_cast<unsigned>(random.below(4));
        switch (random.below(3)) {
            case 0: {
                rows.cover(std::uint64_t{rows.count()} + 1);
                model.push_back(rows.pool().create(0));
                rows.append(model.back());
                break;
            }
            case 1: {
                rows.cover(std::uint64_t{rows.count()} + n);
                Model made;
                for (unsigned i = 0; i < n; ++i) made.push_back(rows.pool().create(0));
                rows.insert(at, made.data(), n);
                model.insert(model.begin() + at, made.begin(), made.end());
                break;
            }
            default: {
                n = std::min<unsigned>(n, static_cast<unsigned>(model.size()) - at);
                if (n == 0) break;
                rows.erase(at, n);
                model.erase(model.begin() + at, model.begin() + at + n);
            }
        }
        ASSERT_EQ(model, contentsOf(rows)) << "step " << step;
    }
}

// The shown rows as the pieces give them that follow each other.
Model piecesOf(const Rows& rows, unsigned& pieces) {
    Model all;
    for (pieces = 0; all.size() < rows.shownCount(); ++pieces) {
        const RecordRun piece = rows.shownFrom(static_cast<unsigned>(all.size()));
        if (piece.count == 0) break;
        all.insert(all.end(), piece.records, piece.records + piece.count);
    }
    return all;
}

TEST(Rows, OnBothSidesOfADeletionAreTwoPieces) {
    Rows rows;
    rows.cover(10);
    for (int i = 0; i < 10; ++i) rows.append(rows.pool().create(1));
    unsigned pieces = 0;
    EXPECT_EQ(contentsOf(rows), piecesOf(rows, pieces));
    EXPECT_EQ(1u, pieces);
    rows.erase(3, 2);
    EXPECT_EQ(contentsOf(rows), piecesOf(rows, pieces));
    EXPECT_EQ(2u, pieces);
    rows.erase(0, 3);
    EXPECT_EQ(contentsOf(rows), piecesOf(rows, pieces));
    EXPECT_EQ(1u, pieces);
}

TEST(Rows, ThatAreTaggedAreOnePieceWhileOnlyTheyAreShown) {
    Rows rows;
    rows.cover(10);
    for (int i = 0; i < 10; ++i) rows.append(rows.pool().create(1));
    const Model all = contentsOf(rows);
    rows.erase(4, 1);
    for (unsigned row : {1u, 5u, 9u}) RecordAccess::setTag(*all[row], 1);
    rows.indexTags();
    rows.setTagsOnly(1);
    unsigned pieces = 0;
    EXPECT_EQ((Model{all[1], all[5], all[9]}), piecesOf(rows, pieces));
    EXPECT_EQ(1u, pieces);
    EXPECT_EQ(2u, rows.shownFrom(1).count);
}

TEST(RecordPool, GivesAPlaceAgainOnlyAfterItsRecordWent) {
    RecordPool pool;
    dbrecord* first = pool.create(2);
    dbrecord* second = pool.create(*first);
    EXPECT_NE(first, second);
    first->set_field(0, "x");
    pool.destroy(first);
    dbrecord* third = pool.create(3);
    EXPECT_NE(second, third);
    EXPECT_TRUE(third->is_blank());
    pool.destroy(second);
    pool.destroy(third);
    pool.destroy(nullptr);
}

}  // namespace
