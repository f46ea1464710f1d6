#include <gtest/gtest.h>

#include <vekdb/table.h>
#include "testing/tables.h"

namespace {

constexpr unsigned none = 0xFFFFFFFF;

struct FiveRows : testing::Test {
    FiveRows() : table(textColumns({"Name"})) {
        for (const char* name : {"a", "b", "c", "d", "e"}) addRow(table, {name});
        table.clear_changed();
    }
    void tag(std::vector<unsigned> rows) {
        for (unsigned row : rows) table.set_tag(row, 1);
    }
    vekdb table;
};

TEST_F(FiveRows, TagsKeepTheirLowEightBits) {
    table.set_tag(0, 256);
    table.set_tag(1, -1);
    table.set_tag(2, 7);
    EXPECT_EQ(0u, table.get_tag(0));
    EXPECT_EQ(255u, table.get_tag(1));
    EXPECT_EQ(7u, table.get_tag(2));
}

TEST_F(FiveRows, TagsOfMissingRowsDoNothing) {
    table.set_tag(5, 1);
    table.invert_tag(5);
    EXPECT_EQ(none, table.get_tag(5));
    EXPECT_EQ(0u, table.get_num_tags());
}

TEST_F(FiveRows, InvertingMakesZeroOneAndAnyOtherZero) {
    table.set_tag(1, 9);
    table.invert_tag(0);
    table.invert_tag(1);
    EXPECT_EQ(1u, table.get_tag(0));
    EXPECT_EQ(0u, table.get_tag(1));
}

TEST_F(FiveRows, TagsMarkNothingChanged) {
    table.set_all_tags(1);
    table.invert_all_tags();
    table.invert_tag(0);
    EXPECT_FALSE(table.get_modified());
    EXPECT_FALSE(table.get_record(0)->get_changed());
}

TEST_F(FiveRows, EveryNonZeroTagCounts) {
    table.set_tag(0, 1);
    table.set_tag(3, 2);
    EXPECT_EQ(2u, table.get_num_tags());
}

TEST_F(FiveRows, OnlyTaggedRowsAreShownWhenAsked) {
    tag({1, 4});
    table.set_show_tags_only(2);
    EXPECT_EQ(2u, table.get_show_tags_only());
    EXPECT_EQ((std::vector<std::string>{"b", "e"}), columnOf(table, 0));
    EXPECT_EQ(nullptr, table.get_record(2));
    table.set_show_tags_only(0);
    EXPECT_EQ(5u, table.get_num_records());
}

TEST_F(FiveRows, ShowingTaggedRowsWithoutAnyShowsNothing) {
    table.set_show_tags_only(1);
    EXPECT_EQ(0u, table.get_num_records());
    EXPECT_EQ(nullptr, table.get_record(0));
    EXPECT_EQ(none, table.get_new_row(0));
    EXPECT_EQ(none, table.get_raw_row(0));
}

TEST_F(FiveRows, RowNumbersTranslateBothWays) {
    tag({1, 4});
    EXPECT_EQ(3u, table.get_new_row(3));
    EXPECT_EQ(99u, table.get_raw_row(99));
    table.set_show_tags_only(1);
    EXPECT_EQ(1u, table.get_new_row(4));
    EXPECT_EQ(none, table.get_new_row(0));
    EXPECT_EQ(none, table.get_new_row(77));
    EXPECT_EQ(4u, table.get_raw_row(1));
    EXPECT_EQ(none, table.get_raw_row(3));
}

TEST_F(FiveRows, TheSlotBehindTheTaggedRowsIsLookedUpToo) {
    tag({0, 1, 2});
    table.set_show_tags_only(1);
    EXPECT_EQ(none, table.get_raw_row(3));
    table.set_tag(2, 0);
    table.set_show_tags_only(1);
    EXPECT_EQ(2u, table.get_raw_row(2));
    EXPECT_EQ(none, table.get_raw_row(3));
}

TEST(TaggedRows, TheSlotBehindAFullArrayIsEmpty) {
    vekdb table(textColumns({"A"}));
    table.add_records(500);
    table.set_all_tags(1);
    table.set_show_tags_only(1);
    EXPECT_EQ(none, table.get_raw_row(500));
    EXPECT_EQ(499u, table.get_raw_row(499));
}

TEST_F(FiveRows, TheSlotBehindTheTaggedRowsIsLookedUpAfterOtherRowsWereDeleted) {
    table.set_all_tags(1);
    table.index_tags();
    table.delete_records(0, 1);
    table.set_tag(1, 0);
    table.set_show_tags_only(1);
    ASSERT_EQ(3u, table.get_num_records());
    EXPECT_EQ(2u, table.get_raw_row(3));
}

TEST_F(FiveRows, RowsMadeInThePlaceOfDeletedOnesAreNotFoundBehindTheTaggedOnes) {
    table.set_all_tags(1);
    table.index_tags();
    table.delete_records(0, 5);
    table.set_show_tags_only(1);
    table.set_show_tags_only(0);
    table.add_records(5);
    for (int tagged = 0; tagged < 5; ++tagged) {
        table.set_show_tags_only(1);
        EXPECT_EQ(none, table.get_raw_row(static_cast<unsigned>(tagged)));
        table.set_show_tags_only(0);
        table.set_tag(static_cast<unsigned>(tagged), 1);
    }
}

TEST_F(FiveRows, ADestroyedRowIsNeverFoundBehindTheTaggedOnes) {
    tag({0, 1, 2});
    table.set_show_tags_only(1);
    table.set_show_tags_only(0);
    table.delete_records(2, 1);
    table.add_records(1);
    table.set_show_tags_only(1);
    EXPECT_EQ(2u, table.get_num_records());
    EXPECT_EQ(none, table.get_raw_row(2));
}

TEST_F(FiveRows, UntaggingAShownRowLeavesItShownUntilTheNextIndexing) {
    tag({1, 4});
    table.set_show_tags_only(1);
    table.set_tag(0, 0);
    EXPECT_EQ(2u, table.get_num_records());
    EXPECT_EQ(1u, table.get_num_tags());
    table.index_tags();
    EXPECT_EQ(1u, table.get_num_records());
    EXPECT_STREQ("e", table.getField(0, 0).c_str());
}

TEST_F(FiveRows, InvertingAllTagsReachesHiddenRowsAndSettingAllDoesNot) {
    tag({1});
    table.set_show_tags_only(1);
    table.invert_all_tags();
    table.set_all_tags(5);
    table.set_show_tags_only(0);
    EXPECT_EQ(1u, table.get_tag(0));
    EXPECT_EQ(5u, table.get_tag(1));
    EXPECT_EQ(1u, table.get_tag(4));
}

TEST_F(FiveRows, ValuesAreThoseOfTheShownRowsWhileOnlyTaggedOnesAre) {
    tag({1, 4});
    table.set_show_tags_only(1);
    EXPECT_TRUE(table.set_field(1, 0, "E"));
    EXPECT_FALSE(table.set_field(2, 0, "x"));
    EXPECT_STREQ("b", table.getField(0, 0).c_str());
    char buffer[2] = "#";
    EXPECT_FALSE(table.in_field(4, 0, buffer, 1));
    EXPECT_TRUE(table.in_field(1, 0, buffer, 1));
    EXPECT_STREQ("E", buffer);
    table.copy_record(0, &table, 1);
    EXPECT_EQ((std::vector<std::string>{"E", "E"}), columnOf(table, 0));
    EXPECT_EQ(1u, vekdb(table, nullptr).get_fieldsize(0));
    table.set_show_tags_only(0);
    EXPECT_EQ((std::vector<std::string>{"a", "E", "c", "d", "E"}), columnOf(table, 0));
}

TEST_F(FiveRows, TagsAreSetAndInvertedByShownRow) {
    tag({1, 4});
    table.set_show_tags_only(1);
    table.set_tag(1, 3);
    table.invert_tag(0);
    EXPECT_EQ(none, table.get_tag(4));
    table.set_show_tags_only(0);
    EXPECT_EQ(3u, table.get_tag(4));
    EXPECT_EQ(0u, table.get_tag(1));
}

TEST_F(FiveRows, SettingAllTagsCallsSetTagOfASubclassForEveryRawRow) {
    struct Seen : vekdb {
        using vekdb::vekdb;
        void set_tag(unsigned row, int value) override {
            rows.push_back(row);
            vekdb::set_tag(row, value);
        }
        std::vector<unsigned> rows;
    } seen(textColumns({"A"}));
    seen.add_records(3);
    seen.set_tag(1, 1);
    seen.set_show_tags_only(1);
    seen.rows.clear();
    seen.set_all_tags(2);
    EXPECT_EQ((std::vector<unsigned>{0, 1, 2}), seen.rows);
    seen.set_show_tags_only(0);
    EXPECT_EQ(2u, seen.get_tag(1));
    EXPECT_EQ(0u, seen.get_tag(2));
}

TEST_F(FiveRows, CountingTagsAsksGetTagOfASubclass) {
    struct Missing : vekdb {
        using vekdb::vekdb;
        unsigned get_tag(unsigned) const override { return 0xFFFFFFFF; }
    } missing(textColumns({"A"}));
    missing.add_records(3);
    EXPECT_EQ(3u, missing.get_num_tags());
}

}  // namespace
