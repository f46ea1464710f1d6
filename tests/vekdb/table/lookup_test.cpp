#include <gtest/gtest.h>

#include <vekdb/host/cookie.h>
#include <vekdb/table.h>
#include "testing/failing_allocator.h"
#include "testing/tables.h"

namespace {

constexpr unsigned none = 0xFFFFFFFF;

Cookie cookieOf(unsigned char number, unsigned char type = 'M', std::uint16_t field = 0) {
    Cookie cookie;
    cookie.uuid.bytes[15] = number;
    cookie.type = type;
    cookie.field = field;
    return cookie;
}

std::string textOf(const Cookie& cookie) {
    return cookie.asString(false).c_str();
}

/// A table of the columns "Name" and "COOKIE" whose row n has the cookie n + 1.
struct Lookup : testing::Test {
    Lookup() : table(textColumns({"Name", "COOKIE"})) {
        addRow(table, {"alpha", textOf(cookieOf(1)).c_str()});
        addRow(table, {"beta", textOf(cookieOf(2)).c_str()});
        addRow(table, {"beta two", textOf(cookieOf(3)).c_str()});
    }
    vekdb table;
};

// --- findFirst

TEST_F(Lookup, FindsTheFirstRowOfAWholeValue) {
    addRow(table, {"beta", ""});
    EXPECT_EQ(1u, table.findFirst("Name", "beta", 0));
    EXPECT_EQ(2u, table.findFirst("Name", "beta two", 0));
    EXPECT_EQ(none, table.findFirst("Name", "bet", 0));
}

TEST_F(Lookup, APrefixLengthComparesSoManyCharacters) {
    EXPECT_EQ(1u, table.findFirst("Name", "bet", 3));
    EXPECT_EQ(1u, table.findFirst("Name", "beyond", 2));
    EXPECT_EQ(2u, table.findFirst("Name", "beta town", 6));
    EXPECT_EQ(none, table.findFirst("Name", "bet", 4));
    EXPECT_EQ(1u, table.findFirst("Name", "beta", -1));
}

TEST_F(Lookup, ValuesCompareWithCaseAndColumnNamesWithout) {
    EXPECT_EQ(none, table.findFirst("Name", "Beta", 0));
    EXPECT_EQ(none, table.findFirst("Name", "Beta", 2));
    EXPECT_EQ(1u, table.findFirst("nAmE", "beta", 0));
}

TEST_F(Lookup, AColumnNameThatDoesNotExistFindsNothing) {
    EXPECT_EQ(none, table.findFirst("Scene", "beta", 0));
}

TEST_F(Lookup, ATableWithoutRecordsHoldsNothing) {
    vekdb empty(textColumns({"Name"}));
    EXPECT_EQ(none, empty.findFirst("Name", "", 0));
}

TEST_F(Lookup, NullArgumentsFindNothing) {
    EXPECT_EQ(none, table.findFirst(nullptr, "beta", 0));
    EXPECT_EQ(none, table.findFirst("Name", nullptr, 0));
}

TEST_F(Lookup, AnEmptyTextFindsTheFirstEmptyValue) {
    addRow(table, {""});
    EXPECT_EQ(3u, table.findFirst("Name", "", 0));
}

TEST_F(Lookup, ScansTheRowsThatAreShown) {
    table.set_tag(2, 1);
    table.set_show_tags_only(1);
    EXPECT_EQ(0u, table.findFirst("Name", "beta two", 0));
    EXPECT_EQ(none, table.findFirst("Name", "alpha", 0));
}

TEST_F(Lookup, SeesValuesThatWereChangedThroughTheirRecord) {
    EXPECT_EQ(none, table.findFirst("Name", "gamma", 0));
    table.get_record(1)->set_field(0, "gamma");
    EXPECT_EQ(1u, table.findFirst("Name", "gamma", 0));
}

TEST_F(Lookup, ACookieIsFoundByItsIdentityWhateverTheCaseOfTheColumnName) {
    EXPECT_EQ(2u, table.findFirst("cooKie", textOf(cookieOf(3, 'B', 9)).c_str(), 0));
}

TEST_F(Lookup, ACookieThatIsNotInTheMapIsStillFoundAsText) {
    EXPECT_EQ(0u, table.getRowIndexByID(cookieOf(1)));
    addRow(table, {"late", textOf(cookieOf(7)).c_str()});  // the map does not hear of it
    EXPECT_EQ(none, table.getRowIndexByID(cookieOf(7)));
    EXPECT_EQ(3u, table.findFirst("cookie", textOf(cookieOf(7)).c_str(), 0));
    EXPECT_EQ(none, table.findFirst("cookie", textOf(cookieOf(8)).c_str(), 0));
}

TEST_F(Lookup, ATableWithoutACookieColumnFindsNoCookie) {
    vekdb plain(textColumns({"Name"}));
    addRow(plain, {"a"});
    EXPECT_EQ(none, plain.findFirst("cookie", textOf(cookieOf(1)).c_str(), 0));
    EXPECT_EQ(none, plain.getRowIndexByID(cookieOf(1)));
}

// --- getRowIndexByID

TEST_F(Lookup, RowsAreFoundByIdentityAlone) {
    EXPECT_EQ(1u, table.getRowIndexByID(cookieOf(2)));
    EXPECT_EQ(1u, table.getRowIndexByID(cookieOf(2, 'B')));
    EXPECT_EQ(1u, table.getRowIndexByID(cookieOf(2, 'I', 77)));
    EXPECT_EQ(none, table.getRowIndexByID(cookieOf(4)));
}

TEST_F(Lookup, TheFirstRowWithAnIdentityWins) {
    addRow(table, {"again", textOf(cookieOf(2, 'B')).c_str()});
    EXPECT_EQ(1u, table.getRowIndexByID(cookieOf(2, 'B')));
}

TEST(LookupOfMany, EachIdentityHasItsFirstRowHoweverManyRowsThereAre) {
    for (const unsigned rows : {1u, 31u, 32u, 33u, 64u, 250u}) {
        vekdb table(textColumns({"Cookie"}));
        for (unsigned round = 0; round < 2; ++round) {
            for (unsigned row = 0; row < rows; ++row) {
                addRow(table, {textOf(cookieOf(static_cast<unsigned char>(row + 1))).c_str()});
            }
        }
        for (unsigned row = 0; row < rows; ++row) {
            const Cookie identity = cookieOf(static_cast<unsigned char>(row + 1));
            ASSERT_EQ(row, table.getRowIndexByID(identity)) << rows << " rows";
        }
        EXPECT_EQ(none, table.getRowIndexByID(cookieOf(static_cast<unsigned char>(rows + 1))));
    }
}

TEST_F(Lookup, RowsWithoutAReadableCookieShareTheNilIdentity) {
    addRow(table, {"no cookie", "garbage"});
    addRow(table, {"empty", ""});
    EXPECT_EQ(3u, table.getRowIndexByID(Cookie()));
    EXPECT_EQ(3u, table.findFirst("cookie", "other garbage", 0));
}

TEST_F(Lookup, TheMapGoesStaleWhenRowsAreSorted) {
    EXPECT_EQ(0u, table.getRowIndexByID(cookieOf(1)));
    table.sort(-1, 0);
    EXPECT_STREQ("alpha", table.getField(2, 0).c_str());
    EXPECT_EQ(0u, table.getRowIndexByID(cookieOf(1)));
}

TEST_F(Lookup, TheMapDoesNotHearOfChangedValues) {
    EXPECT_EQ(0u, table.getRowIndexByID(cookieOf(1)));
    table.set_field(0, 1, "nothing");
    EXPECT_EQ(0u, table.getRowIndexByID(cookieOf(1)));
}

TEST_F(Lookup, DeletingAndInsertingRowsBuildsTheMapAnew) {
    EXPECT_EQ(2u, table.getRowIndexByID(cookieOf(3)));
    table.delete_records(0, 1);
    EXPECT_EQ(none, table.getRowIndexByID(cookieOf(1)));
    EXPECT_EQ(1u, table.getRowIndexByID(cookieOf(3)));
    table.insert_records(0, 2);
    EXPECT_EQ(3u, table.getRowIndexByID(cookieOf(3)));
}

TEST_F(Lookup, InsertingOrDeletingNoRowsBuildsTheMapAnewToo) {
    const NoticeTexts deletions(table, "recordsDeleted");
    EXPECT_EQ(2u, table.getRowIndexByID(cookieOf(3)));
    table.set_field(2, 1, "nothing");
    table.insert_records(0, 0);
    EXPECT_EQ(none, table.getRowIndexByID(cookieOf(3)));
    EXPECT_EQ(0u, table.getRowIndexByID(cookieOf(1)));
    table.set_field(0, 1, "nothing");
    table.delete_records(0, 0);
    EXPECT_EQ(none, table.getRowIndexByID(cookieOf(1)));
    EXPECT_TRUE(deletions.texts.empty());
}

TEST_F(Lookup, DeletingNoRowsBehindTheLastKeepsTheMap) {
    EXPECT_EQ(2u, table.getRowIndexByID(cookieOf(3)));
    table.set_field(2, 1, "nothing");
    table.delete_records(table.get_num_records(), 0);
    EXPECT_EQ(2u, table.getRowIndexByID(cookieOf(3)));
}

TEST_F(Lookup, FreeEmptiesTheMap) {
    EXPECT_EQ(0u, table.getRowIndexByID(cookieOf(1)));
    table.free();
    EXPECT_EQ(none, table.getRowIndexByID(cookieOf(1)));
}

TEST_F(Lookup, StoringACookieOnAnEmptyMapMakesAMapOfThatOneRow) {
    table.set_field(1, cookieOf(9));
    EXPECT_EQ(1u, table.getRowIndexByID(cookieOf(9)));
    EXPECT_EQ(none, table.getRowIndexByID(cookieOf(1)));
    EXPECT_EQ(0u, table.findFirst("cookie", textOf(cookieOf(1)).c_str(), 0));
    table.insert_records(3, 1);
    EXPECT_EQ(0u, table.getRowIndexByID(cookieOf(1)));
}

TEST_F(Lookup, StoringACookieOnAMapLeavesTheRowsFormerIdentityInIt) {
    EXPECT_EQ(1u, table.getRowIndexByID(cookieOf(2)));
    table.set_field(1, cookieOf(9));
    EXPECT_EQ(1u, table.getRowIndexByID(cookieOf(9)));
    EXPECT_EQ(1u, table.getRowIndexByID(cookieOf(2)));
}

TEST_F(Lookup, AMapBuiltWhileOnlyTaggedRowsAreShownHoldsTheirNumbers) {
    table.set_tag(2, 1);
    table.set_show_tags_only(1);
    EXPECT_EQ(0u, table.getRowIndexByID(cookieOf(3)));
    EXPECT_EQ(none, table.getRowIndexByID(cookieOf(1)));
}

struct ShoutsItsCookies : vekdb {
    using vekdb::vekdb;
    LightweightString<char> getField(unsigned row, unsigned field) const override {
        ++asked;
        return vekdb::getField(row, field);
    }
    mutable unsigned asked = 0;
};

TEST_F(Lookup, ASubclassSeesItsValuesRead) {
    ShoutsItsCookies sub(textColumns({"Cookie"}));
    addRow(sub, {textOf(cookieOf(1)).c_str()});
    addRow(sub, {textOf(cookieOf(2)).c_str()});
    EXPECT_EQ(1u, sub.getRowIndexByID(cookieOf(2)));
    EXPECT_EQ(2u, sub.asked);
    sub.getRowIndexByID(cookieOf(1));
    EXPECT_EQ(2u, sub.asked);  // built once
}

TEST_F(Lookup, AMapThatRanOutOfMemoryIsBuiltAnew) {
    const unsigned failures = testing_support::failEachAllocation(
        [&] { table.getRowIndexByID(cookieOf(1)); },
        [&] {
            ASSERT_EQ(2u, table.getRowIndexByID(cookieOf(3)));
            table.insert_records(3, 1);
            table.delete_records(3, 1);  // the map is empty again
        });
    EXPECT_GT(failures, 1u);
}

}  // namespace
