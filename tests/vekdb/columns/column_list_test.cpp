#include "vekdb/columns/column_list.h"

#include <gtest/gtest.h>

namespace {

ColumnList threeColumns() {
    ColumnList columns;
    columns.setCount(3);
    columns.makePlaces();
    columns.setName(0, "Reel");
    columns.setName(1, "Start time");
    columns.setName(2, "Notes");
    for (unsigned i = 0; i < 3; ++i) columns.setType(i, DBFieldTypes::text);
    columns.flagSpecialLabels();
    return columns;
}

TEST(ColumnList, WithoutColumnsFindsNothing) {
    const ColumnList columns;
    EXPECT_EQ(0u, columns.count());
    EXPECT_EQ(ColumnList::none, columns.find("Reel"));
    EXPECT_TRUE(columns.name(0).empty());
    EXPECT_EQ(DBFieldTypes::none, columns.type(0));
    EXPECT_FALSE(columns.isSpecial(0));
}

TEST(ColumnList, AnnouncedColumnsWithoutPlacesHaveNeitherNameNorType) {
    ColumnList columns;
    columns.setCount(4);
    EXPECT_EQ(4u, columns.count());
    EXPECT_TRUE(columns.name(3).empty());
    EXPECT_FALSE(columns.setName(0, "A"));
    EXPECT_FALSE(columns.setType(0, DBFieldTypes::text));
    EXPECT_EQ(ColumnList::none, columns.find("A"));
    columns.flagSpecialLabels();
    EXPECT_FALSE(columns.isSpecial(3));
    columns.append({"B", DBFieldTypes::text});
    EXPECT_EQ(4u, columns.find("B"));
    EXPECT_TRUE(columns.setName(0, "A"));
}

TEST(ColumnList, NamesAreFoundInAnyCaseOfSevenBitLetters) {
    ColumnList columns = threeColumns();
    EXPECT_EQ(1u, columns.find("START TIME"));
    columns.setName(0, "\xC9");
    EXPECT_EQ(0u, columns.find("\xC9"));
    EXPECT_EQ(ColumnList::none, columns.find("\xE9"));
}

TEST(ColumnList, AFormerNameStaysUntilARemoval) {
    ColumnList columns = threeColumns();
    columns.setName(0, "Tape");
    columns.setName(0, nullptr);
    EXPECT_EQ(0u, columns.find("Reel"));
    EXPECT_EQ(0u, columns.find("Tape"));
    columns.remove(2);
    EXPECT_EQ(ColumnList::none, columns.find("Reel"));
    EXPECT_EQ(ColumnList::none, columns.find("Tape"));
    EXPECT_EQ(1u, columns.find("Start time"));
}

TEST(ColumnList, RemovingMovesNamesAndTypesDownTogether) {
    ColumnList columns = threeColumns();
    columns.setType(2, DBFieldTypes::numeric);
    columns.remove(0);
    EXPECT_EQ(2u, columns.count());
    EXPECT_STREQ("Start time", columns.name(0).c_str());
    EXPECT_EQ(DBFieldTypes::numeric, columns.type(1));
    EXPECT_EQ(1u, columns.find("notes"));
    EXPECT_TRUE(columns.name(2).empty());
}

TEST(ColumnList, TheFlagsOfSpecialLabelsKeepTheirPlacesWhenAColumnGoes) {
    ColumnList columns = threeColumns();
    EXPECT_FALSE(columns.isSpecial(0));
    EXPECT_TRUE(columns.isSpecial(1));
    columns.remove(0);
    EXPECT_FALSE(columns.isSpecial(0));
    EXPECT_TRUE(columns.isSpecial(1));
    EXPECT_TRUE(columns.isSpecialName(0));
    columns.append({"End time", DBFieldTypes::timecode});
    EXPECT_FALSE(columns.isSpecial(2));
    EXPECT_TRUE(columns.isSpecial(3));
    columns.flagSpecialLabels();
    EXPECT_TRUE(columns.isSpecial(2));
    EXPECT_FALSE(columns.isSpecial(3));
}

TEST(ColumnList, RenamingLeavesTheFlagOfASpecialLabel) {
    ColumnList columns = threeColumns();
    columns.setName(1, "Foo");
    columns.setName(0, "End time");
    EXPECT_TRUE(columns.isSpecial(1));
    EXPECT_FALSE(columns.isSpecial(0));
}

TEST(ColumnList, AnAddedColumnIsFlaggedAlsoWhereTheOthersNeverWere) {
    ColumnList columns;
    columns.setCount(2);
    columns.makePlaces();
    columns.append({"snd start", DBFieldTypes::text});
    EXPECT_FALSE(columns.isSpecial(1));
    EXPECT_TRUE(columns.isSpecial(2));
}

TEST(ColumnList, ACopyTakesNamesTypesFormerNamesAndNoFlags) {
    ColumnList columns = threeColumns();
    columns.setName(0, "Tape");
    ColumnList copy;
    copy.copyFrom(columns);
    EXPECT_EQ(3u, copy.count());
    EXPECT_EQ(0u, copy.find("Reel"));
    EXPECT_STREQ("Tape", copy.name(0).c_str());
    EXPECT_FALSE(copy.isSpecial(1));
    copy.copyFrom(copy);
    EXPECT_EQ(0u, copy.find("tape"));
}

TEST(ColumnList, ClearingForgetsAll) {
    ColumnList columns = threeColumns();
    columns.clear();
    EXPECT_EQ(0u, columns.count());
    EXPECT_EQ(ColumnList::none, columns.find("Reel"));
    EXPECT_FALSE(columns.isSpecial(1));
    columns.append({"A", DBFieldTypes::text});
    EXPECT_EQ(0u, columns.find("a"));
}

}  // namespace
