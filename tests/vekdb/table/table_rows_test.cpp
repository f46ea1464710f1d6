#include <gtest/gtest.h>

#include <climits>

#include <vekdb/host/exceptions.h>
#include <vekdb/table.h>
#include "testing/failing_allocator.h"
#include "testing/tables.h"
#include "vekdb/rows/rows.h"

namespace {

constexpr unsigned none = 0xFFFFFFFF;
using Texts = std::vector<std::string>;

struct Lettered : testing::Test {
    explicit Lettered(unsigned rows = 8) : table(textColumns({"Name", "Other"})) {
        for (unsigned i = 0; i < rows; ++i) {
            char name[2] = {static_cast<char>('a' + i), '\0'};
            addRow(table, {name});
        }
        table.clear_changed();
    }
    std::string names() const {
        std::string all;
        for (const std::string& name : columnOf(table, 0)) all += name.empty() ? "-" : name;
        return all;
    }
    vekdb table;
};

TEST_F(Lettered, AddingNoneReturnsTheCountAndAddsNothing) {
    EXPECT_EQ(8u, table.add_records(0));
    EXPECT_EQ(8u, table.add_records(-1));
    EXPECT_EQ(8u, table.add_records(INT_MIN));
    EXPECT_EQ(8u, table.get_num_records());
    EXPECT_EQ(500u, table.get_capacity());
}

TEST_F(Lettered, AddedRowsAreEmptyAttachedAndUnannounced) {
    NoticeTexts deleted(table, "recordsDeleted"), changed(table, "recordsChanged");
    EXPECT_EQ(8u, table.add_records(2));
    EXPECT_EQ("abcdefgh--", names());
    EXPECT_EQ(&table, table.get_record(9)->get_container());
    EXPECT_EQ(2, table.get_record(9)->get_num_fields());
    EXPECT_FALSE(table.get_modified());
    EXPECT_FALSE(table.get_record(9)->get_changed());
    EXPECT_TRUE(deleted.texts.empty());
    EXPECT_TRUE(changed.texts.empty());
}

TEST(TableRows, FiveHundredAndOneRowsTakeTwoChunks) {
    vekdb table(textColumns({"A"}));
    EXPECT_EQ(0u, table.add_records(501));
    EXPECT_EQ(1000u, table.get_capacity());
    vekdb other(textColumns({"A"}));
    other.add_records(500);
    EXPECT_EQ(500u, other.get_capacity());
}

TEST(TableRows, MoreRowsThanATableCanCountExhaustMemoryAtOnce) {
    Rows rows;
    EXPECT_THROW(rows.cover(0xFFFFFFFF), Quor::Exception::BadAlloc);
    EXPECT_THROW(rows.cover(std::uint64_t{1} << 40), Quor::Exception::BadAlloc);
    EXPECT_EQ(0u, rows.capacity());
}

TEST_F(Lettered, InsertedRowsStandBeforeTheirPlace) {
    table.insert_records(2, 2);
    EXPECT_EQ("ab--cdefgh", names());
    EXPECT_EQ(&table, table.get_record(2)->get_container());
    EXPECT_FALSE(table.get_modified());
    table.insert_records(0, 1);
    EXPECT_EQ("-ab--cdefgh", names());
}

TEST_F(Lettered, InsertingPastTheEndAppends) {
    table.insert_records(8, 1);
    table.insert_records(100, 1);
    table.insert_records(none, 1);
    EXPECT_EQ("abcdefgh---", names());
}

// What was made before memory ended has its place for the next row.
TEST_F(Lettered, InsertingThatFailsKeepsNoPlacesOfRows) {
    using testing_support::FailingAllocator;
    for (int i = 0; i < 300; ++i) {
        const FailingAllocator failing(i == 0 ? 3 : 2, FailingAllocator::Failing::fromThereOn);
        EXPECT_THROW(table.insert_records(2, 2000), Quor::Exception::BadAlloc);
    }
    const testing_support::CountingAllocator counting;
    table.insert_records(0, 1);
    EXPECT_LE(counting.allocations(), 1);
    EXPECT_EQ("-abcdefgh", names());
}

TEST_F(Lettered, InsertingNoneDoesNothing) {
    table.insert_records(0, 0);
    table.insert_records(0, -5);
    EXPECT_EQ("abcdefgh", names());
}

TEST_F(Lettered, InsertingGrowsTheCapacity) {
    table.insert_records(3, 500);
    EXPECT_EQ(1000u, table.get_capacity());
    EXPECT_STREQ("d", table.getField(503, 0).c_str());
}

TEST_F(Lettered, DeletionIsCutAtTheEndAndAnnounced) {
    NoticeTexts deleted(table, "recordsDeleted");
    table.delete_records(5, 10);
    EXPECT_EQ("abcde", names());
    EXPECT_EQ(Texts{"5 6 7 "}, deleted.texts);
    EXPECT_FALSE(deleted.objects[0]);
    EXPECT_TRUE(table.get_modified());
}

TEST_F(Lettered, DeletingPastTheEndDoesNothing) {
    NoticeTexts deleted(table, "recordsDeleted");
    table.delete_records(8, 1);
    table.delete_records(3, 0);
    table.delete_records(3, -1);
    EXPECT_EQ("abcdefgh", names());
    EXPECT_TRUE(deleted.texts.empty());
    EXPECT_FALSE(table.get_modified());
}

TEST_F(Lettered, DeletionUnheardMarksTheTableModified) {
    table.delete_records(0, 1);
    EXPECT_TRUE(table.get_modified());
}

TEST_F(Lettered, AListenerSeesTheNewCountAndTheOldModifiedFlag) {
    struct Listener {
        int told(const NotifyMsg&) {
            count = table->get_num_records();
            modified = table->get_modified();
            return 0;
        }
        vekdb* table;
        unsigned count = 0;
        bool modified = true;
    } listener{&table};
    auto guard = table.registerNotification(
        Quor::Ptr<iCallbackBase<int, NotifyMsg>>(
            new MethodCallback<Listener, NotifyMsg, int>(&listener, &Listener::told)),
        NotifyMsgTypeDictionary::instance().intern("recordsDeleted"));
    table.delete_records(2, 3);
    EXPECT_EQ(5u, listener.count);
    EXPECT_FALSE(listener.modified);
    EXPECT_TRUE(table.get_modified());
}

TEST_F(Lettered, ModifiedIsSetAlsoWhenAListenerThrows) {
    struct Thrower {
        int told(const NotifyMsg&) { throw 7; }
    } thrower;
    auto guard = table.registerNotification(
        Quor::Ptr<iCallbackBase<int, NotifyMsg>>(
            new MethodCallback<Thrower, NotifyMsg, int>(&thrower, &Thrower::told)),
        NotifyMsgTypeDictionary::instance().intern("recordsDeleted"));
    EXPECT_THROW(table.delete_records(2, 1), int);
    EXPECT_TRUE(table.get_modified());
    EXPECT_EQ("abdefgh", names());
}

TEST_F(Lettered, DeletionsInAnyOrderKeepTheOthersInOrder) {
    table.delete_records(5, 1);
    table.delete_records(1, 2);
    table.delete_records(3, 1);
    EXPECT_EQ("adeh", names());
    table.add_records(1);
    table.insert_records(1, 1);
    EXPECT_EQ("a-deh-", names());
    table.delete_records(0, 100);
    EXPECT_EQ("", names());
}

TEST_F(Lettered, TaggedRunsAreDeletedOneNoticeEach) {
    for (unsigned row : {0u, 1u, 3u}) table.set_tag(row, 1);
    NoticeTexts deleted(table, "recordsDeleted");
    EXPECT_EQ(3u, table.delete_tagged_records());
    EXPECT_EQ("cefgh", names());
    EXPECT_EQ((Texts{"0 1 ", "1 "}), deleted.texts);
}

TEST_F(Lettered, ARunThatReachesTheEndIsDeletedToo) {
    for (unsigned row : {2u, 6u, 7u}) table.set_tag(row, 1);
    NoticeTexts deleted(table, "recordsDeleted");
    EXPECT_EQ(3u, table.delete_tagged_records());
    EXPECT_EQ("abdef", names());
    EXPECT_EQ((Texts{"2 ", "5 6 "}), deleted.texts);
}

TEST_F(Lettered, OnlyTheTagOneIsDeleted) {
    table.set_tag(2, 2);
    table.set_tag(3, 257);
    EXPECT_EQ(1u, table.delete_tagged_records());
    EXPECT_EQ("abcefgh", names());
}

TEST_F(Lettered, DeletingTaggedRowsCallsDeleteRecordsOfASubclass) {
    struct Seen : vekdb {
        using vekdb::vekdb;
        void delete_records(unsigned first, int n) override {
            calls.push_back({first, n});
            vekdb::delete_records(first, n);
        }
        std::vector<std::pair<unsigned, int>> calls;
    } seen(textColumns({"A"}));
    seen.add_records(5);
    for (unsigned row : {0u, 1u, 3u}) seen.set_tag(row, 1);
    EXPECT_EQ(3u, seen.delete_tagged_records());
    EXPECT_EQ((std::vector<std::pair<unsigned, int>>{{0, 2}, {1, 1}}), seen.calls);
}

TEST(TableRows, DeletingTaggedRowsOfAnEmptyTableIsZero) {
    vekdb table(textColumns({"A"}));
    EXPECT_EQ(0u, table.delete_tagged_records());
    table.set_show_tags_only(1);
    EXPECT_EQ(none, table.delete_tagged_records());
}

TEST_F(Lettered, RenumberingIsRefusedWhileOnlyTaggedRowsAreShown) {
    table.set_tag(1, 1);
    table.set_show_tags_only(1);
    NoticeTexts deleted(table, "recordsDeleted");
    EXPECT_EQ(none, table.add_records(1));
    EXPECT_EQ(none, table.delete_tagged_records());
    table.insert_records(0, 1);
    table.delete_records(0, 1);
    table.set_show_tags_only(0);
    EXPECT_EQ("abcdefgh", names());
    EXPECT_TRUE(deleted.texts.empty());
}

TEST_F(Lettered, ARowIsCopiedFromAnotherTableWithBlanksDropped) {
    vekdb other(textColumns({"X", "Y"}));
    addRow(other, {"  x", "y"});
    table.set_tag(3, 1);
    table.copy_record(3, &other, 0);
    EXPECT_STREQ("x", table.getField(3, 0).c_str());
    EXPECT_STREQ("y", table.getField(3, 1).c_str());
    EXPECT_EQ(1u, table.get_tag(3));
    EXPECT_EQ(&table, table.get_record(3)->get_container());
    EXPECT_TRUE(table.get_modified());
}

TEST_F(Lettered, ARowIsCopiedOntoItself) {
    table.get_record(2)->setField(1, " c");
    table.copy_record(2, &table, 2);
    EXPECT_STREQ("c", table.getField(2, 0).c_str());
    EXPECT_STREQ("c", table.getField(2, 1).c_str());
}

TEST_F(Lettered, CopyingFromOrToNothingDoesNothing) {
    vekdb other(textColumns({"X", "Y"}));
    dbrecord loose(2);
    table.copy_record(0, &other, 0);
    table.copy_record(0, static_cast<vekdb*>(nullptr), 0);
    table.copy_record(0, static_cast<const dbrecord*>(nullptr));
    table.copy_record(8, &loose);
    EXPECT_EQ("abcdefgh", names());
    EXPECT_FALSE(table.get_modified());
}

TEST_F(Lettered, ACopiedRowTakesTheSourceRowsLength) {
    dbrecord five(5);
    table.copy_record(0, &five);
    EXPECT_EQ(5, table.get_record(0)->get_num_fields());
}

TEST_F(Lettered, ADummyRecordIsTheCallersAndBelongsNowhere) {
    dbrecord* dummy = table.make_dummy_record();
    EXPECT_EQ(2, dummy->get_num_fields());
    EXPECT_TRUE(dummy->is_blank());
    EXPECT_EQ(nullptr, dummy->get_container());
    delete dummy;
}

TEST_F(Lettered, ClearChangedClearsEveryFlagAndCountsAllRows) {
    table.set_field(0, 0, "x");
    table.set_field(7, 0, "y");
    table.set_tag(0, 1);
    table.set_show_tags_only(1);
    EXPECT_EQ(8u, table.clear_changed());
    EXPECT_FALSE(table.get_modified());
    table.set_show_tags_only(0);
    EXPECT_FALSE(table.get_record(7)->get_changed());
}

// One pass: as many moves as rows, however many runs go.
TEST(TableRows, DeletingEveryOtherRowKeepsTheRest) {
    vekdb table(textColumns({"N"}));
    constexpr unsigned rows = 20000;
    table.add_records(rows);
    for (unsigned row = 0; row < rows; ++row) {
        table.set_field(row, 0, static_cast<int>(row));
        table.set_tag(row, row % 2 == 0);
    }
    EXPECT_EQ(rows / 2, table.delete_tagged_records());
    for (unsigned row = 0; row < rows / 2; ++row) {
        int value = -1;
        ASSERT_TRUE(table.in_field(row, 0, value));
        ASSERT_EQ(static_cast<int>(2 * row + 1), value);
    }
}

}  // namespace
