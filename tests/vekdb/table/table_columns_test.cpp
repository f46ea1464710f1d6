#include <gtest/gtest.h>

#include <vekdb/table.h>
#include "testing/tables.h"

namespace {

constexpr unsigned none = 0xFFFFFFFF;

struct ThreeColumns : testing::Test {
    ThreeColumns() : table(textColumns({"Reel", "Scene", "Notes"})) {}
    vekdb table;
};

TEST_F(ThreeColumns, AreFoundWithoutRegardToCase) {
    EXPECT_EQ(1u, table.get_fieldnum("SCENE"));
    EXPECT_EQ(none, table.get_fieldnum("Scen"));
    EXPECT_EQ(none, table.get_fieldnum(""));
    EXPECT_EQ(none, vekdb().get_fieldnum("Reel"));
}

TEST_F(ThreeColumns, ARenamedOneIsFoundUnderBothNames) {
    EXPECT_TRUE(table.set_fieldname(0, "Tape"));
    EXPECT_EQ(0u, table.get_fieldnum("tape"));
    EXPECT_EQ(0u, table.get_fieldnum("reel"));
    EXPECT_STREQ("Tape", table.get_fieldname(0));
    EXPECT_EQ(0u, table.addField({"Reel", DBFieldTypes::text}));
    EXPECT_EQ(3u, table.get_num_fields());
}

TEST_F(ThreeColumns, RemovingByAFormerNameRemovesTheRenamedOne) {
    table.set_fieldname(0, "Tape");
    table.removeField("Reel");
    EXPECT_EQ(2u, table.get_num_fields());
    EXPECT_STREQ("Scene", table.get_fieldname(0));
    EXPECT_EQ(none, table.get_fieldnum("Reel"));
    EXPECT_EQ(none, table.get_fieldnum("Tape"));
}

TEST_F(ThreeColumns, NamingOutOfRangeFails) {
    EXPECT_FALSE(table.set_fieldname(3, "X"));
    EXPECT_EQ(none, table.get_fieldnum("X"));
}

TEST_F(ThreeColumns, AnEmptyNameKeepsTheFormerEntry) {
    EXPECT_TRUE(table.set_fieldname(1, nullptr));
    EXPECT_STREQ("", table.get_fieldname(1));
    EXPECT_EQ(1u, table.get_fieldnum("Scene"));
    EXPECT_TRUE(table.set_fieldname(2, ""));
    EXPECT_EQ(2u, table.get_fieldnum("Notes"));
}

TEST_F(ThreeColumns, ANameMayBeStoredFromItself) {
    EXPECT_TRUE(table.set_fieldname(1, table.get_fieldname(1)));
    EXPECT_STREQ("Scene", table.get_fieldname(1));
    EXPECT_TRUE(table.set_fieldname(1, table.get_fieldname(1) + 1));
    EXPECT_STREQ("cene", table.get_fieldname(1));
}

TEST_F(ThreeColumns, AmpersandsAreRemovedFromNames) {
    EXPECT_TRUE(table.set_fieldname(0, "R&D"));
    EXPECT_STREQ("RD", table.get_fieldname(0));
    EXPECT_TRUE(table.set_fieldname(0, "&&"));
    EXPECT_STREQ("", table.get_fieldname(0));
    EXPECT_STREQ("AB", vekdb(textColumns({"A&B"})).get_fieldname(0));
}

TEST_F(ThreeColumns, AmpersandsStayInAddedNames) {
    EXPECT_EQ(3u, table.addField({"R&D", DBFieldTypes::text}));
    EXPECT_STREQ("R&D", table.get_fieldname(3));
}

TEST(Columns, OfTwoWithOneNameTheLastNamedIsFoundUntilARemoval) {
    vekdb table(textColumns({"A", "a", "B"}));
    EXPECT_EQ(1u, table.get_fieldnum("A"));
    table.removeField("B");
    EXPECT_EQ(0u, table.get_fieldnum("A"));
}

TEST_F(ThreeColumns, TypesAreStored) {
    EXPECT_TRUE(table.set_fieldtype(0, DBFieldTypes::timecode));
    EXPECT_EQ(DBFieldTypes::timecode, table.get_fieldtype(0));
    auto own = static_cast<DBFieldTypes::eType>('x');
    EXPECT_TRUE(table.set_fieldtype(0, own));
    EXPECT_EQ(own, table.get_field_type(0));
    EXPECT_FALSE(table.set_fieldtype(3, own));
}

TEST_F(ThreeColumns, TypingWithNoneLeavesAnErrorAlsoOutOfRange) {
    EXPECT_FALSE(table.set_fieldtype(7, DBFieldTypes::none));
    dberror error;
    ASSERT_TRUE(table.read_error_info(error));
    EXPECT_EQ(2, error.values[0]);
    EXPECT_EQ(3, error.values[1]);
    EXPECT_EQ(0, error.values[2]);
    EXPECT_EQ(0, error.values[3]);
    EXPECT_TRUE(table.set_fieldtype(1, DBFieldTypes::none));
    EXPECT_EQ(DBFieldTypes::text, table.get_field_type(1));
}

TEST_F(ThreeColumns, WidthsAreNotKept) {
    table.setFieldWidth(0, 100);
    EXPECT_EQ(0u, table.get_fieldsize(0));
}

TEST_F(ThreeColumns, AddingAnExistingOneAddsNothing) {
    EXPECT_EQ(1u, table.addField({"sCENE", DBFieldTypes::numeric}));
    EXPECT_EQ(3u, table.get_num_fields());
    EXPECT_EQ(DBFieldTypes::text, table.get_field_type(1));
}

TEST_F(ThreeColumns, AddingGivesEveryRowOneMoreValueAndRemovingTakesItBack) {
    table.add_records(10);
    table.clear_changed();
    EXPECT_EQ(3u, table.addField({"Take", DBFieldTypes::none}));
    EXPECT_EQ(DBFieldTypes::none, table.get_field_type(3));
    dberror error;
    EXPECT_FALSE(table.read_error_info(error));
    EXPECT_EQ(4, table.get_record(9)->get_num_fields());
    table.removeField("take");
    EXPECT_EQ(3, table.get_record(9)->get_num_fields());
    EXPECT_EQ(none, table.get_fieldnum("Take"));
    EXPECT_FALSE(table.get_modified());
}

TEST_F(ThreeColumns, RemovingTakesTheValueOut) {
    addRow(table, {"A001", "12", "fine"});
    table.removeField("Scene");
    EXPECT_STREQ("A001", table.getField(0, 0).c_str());
    EXPECT_STREQ("fine", table.getField(0, 1).c_str());
    EXPECT_EQ(1u, table.get_fieldnum("Notes"));
    table.removeField("unknown");
    EXPECT_EQ(2u, table.get_num_fields());
}

TEST_F(ThreeColumns, MayBeRemovedByTheNameTheTableHolds) {
    table.removeField(table.get_fieldname(0));
    EXPECT_STREQ("Scene", table.get_fieldname(0));
}

TEST_F(ThreeColumns, HiddenRowsKeepTheirShorterLists) {
    addRow(table, {"hidden"});
    addRow(table, {"shown"});
    table.set_tag(1, 1);
    table.set_show_tags_only(1);
    table.addField({"Take", DBFieldTypes::text});
    table.set_show_tags_only(0);
    EXPECT_TRUE(table.getField(0, 3).empty());
    EXPECT_FALSE(table.set_field(0, 3, "x"));
    EXPECT_TRUE(table.set_field(1, 3, "x"));
}

TEST_F(ThreeColumns, RemovingWhileOnlyTaggedRowsAreShownReachesThose) {
    addRow(table, {"hidden", "h"});
    addRow(table, {"shown", "s"});
    table.set_tag(1, 1);
    table.set_show_tags_only(1);
    table.removeField("Reel");
    table.set_show_tags_only(0);
    EXPECT_STREQ("hidden", table.getField(0, 0).c_str());
    EXPECT_STREQ("s", table.getField(1, 0).c_str());
}

TEST_F(ThreeColumns, LookupsOfAddAndRemoveReachASubclass) {
    struct Blind : vekdb {
        using vekdb::vekdb;
        unsigned get_fieldnum(LightweightString<char>) const override { return 0xFFFFFFFF; }
    } blind(textColumns({"A"}));
    EXPECT_EQ(1u, blind.addField({"A", DBFieldTypes::text}));
    blind.removeField("A");
    EXPECT_EQ(2u, blind.get_num_fields());
}

// Shows the first row of all only, whatever the table holds.
struct FirstRowOnly : vekdb {
    using vekdb::vekdb;
    unsigned get_num_records() const override { return 1; }
    dbrecord* get_record(unsigned row) const override {
        ++asked;
        return row == 0 ? vekdb::get_record(0) : nullptr;
    }
    mutable unsigned asked = 0;
};

TEST(Columns, RowsAreReachedAsASubclassShowsThem) {
    FirstRowOnly table(textColumns({"A", "B"}));
    table.add_records(3);
    table.addField({"C", DBFieldTypes::text});
    EXPECT_EQ(1u, table.asked);
    EXPECT_EQ(3, table.vekdb::get_record(0)->get_num_fields());
    EXPECT_EQ(2, table.vekdb::get_record(2)->get_num_fields());
    table.removeField("A");
    EXPECT_EQ(4u, table.asked);
    EXPECT_EQ(2, table.vekdb::get_record(0)->get_num_fields());
    EXPECT_EQ(2, table.vekdb::get_record(2)->get_num_fields());
}

TEST(Columns, TheMostCanBeFoundChangedAndRemoved) {
    std::vector<DBFieldDesc> fields(65535, DBFieldDesc{"Same", DBFieldTypes::text});
    fields[65534].name = "Last";
    vekdb table(fields);
    addRow(table, {"first"});
    EXPECT_EQ(65534u, table.get_fieldnum("last"));
    EXPECT_EQ(65533u, table.get_fieldnum("same"));
    EXPECT_TRUE(table.set_field(0, 65534, "end"));
    EXPECT_EQ(3u, table.get_fieldsize(65534));
    EXPECT_EQ(65535u, vekdb(table, 1).get_num_fields());

    table.removeField("Same");
    EXPECT_EQ(65534u, table.get_num_fields());
    EXPECT_EQ(0u, table.get_fieldnum("same"));
    EXPECT_EQ(65533u, table.get_fieldnum("last"));
    EXPECT_STREQ("end", table.getField(0, 65533).c_str());
    EXPECT_EQ(65534u, table.addField({"New", DBFieldTypes::text}));
    EXPECT_TRUE(table.set_field(0, 65534, "new"));
}

TEST(Columns, NoMoreThanARecordHoldsValues) {
    std::vector<DBFieldDesc> fields(65535, DBFieldDesc{"", DBFieldTypes::text});
    vekdb table(fields);
    table.add_records(1);
    EXPECT_EQ(65535u, table.get_num_fields());
    EXPECT_EQ(none, table.addField({"One more", DBFieldTypes::text}));
    EXPECT_EQ(65535, table.get_record(0)->get_num_fields());
}

TEST(SameColumns, ComparesNamesExactlyAndTypesNotAtAll) {
    vekdb one(textColumns({"A", "B"})), same(textColumns({"A", "B"}));
    vekdb otherCase(textColumns({"A", "b"})), longer(textColumns({"A", "B", "C"}));
    same.set_fieldtype(0, DBFieldTypes::numeric);
    EXPECT_TRUE(one.sameColumns(&same));
    EXPECT_FALSE(one.sameColumns(&otherCase));
    EXPECT_FALSE(one.sameColumns(&longer));
    EXPECT_FALSE(one.sameColumns(nullptr));
    EXPECT_TRUE(vekdb().sameColumns(&static_cast<const vekdb&>(vekdb())));
}

TEST(SpecialLabels, AreTheTwelveNamesExactly) {
    vekdb table(textColumns({"Start time", "End time", "snd start", "snd end", "start 24P code",
                             "end 24P code", "start keycode", "end keycode", "start camcode",
                             "end camcode", "start inkcode", "end inkcode", "start time", ""}));
    for (unsigned i = 0; i < 12; ++i) EXPECT_TRUE(table.isSpecialLabelField(i)) << i;
    EXPECT_FALSE(table.isSpecialLabelField(12));
    EXPECT_FALSE(table.isSpecialLabelField(13));
    EXPECT_FALSE(table.isSpecialLabelField(14));
}

}  // namespace

TEST(AddingColumns, SeveralAtOnceTakeTheirPlacesOneAfterTheOther) {
    vekdb table(textColumns({"A", "B"}));
    table.add_records(2);
    const std::vector<unsigned> places = table.addFields(textColumns({"C", "b", "D", "c"}));
    EXPECT_EQ(places, (std::vector<unsigned>{2, 1, 3, 2}));
    EXPECT_EQ(table.get_num_fields(), 4u);
    EXPECT_EQ(table.get_record(1)->get_num_fields(), 4u);
}

TEST(AddingColumns, ThoseWithoutRoomAreTold) {
    vekdb table;
    std::vector<DBFieldDesc> fields;
    for (unsigned i = 0; i < 65537; ++i) {
        fields.push_back({("c" + std::to_string(i)).c_str(), DBFieldTypes::text});
    }
    const std::vector<unsigned> places = table.addFields(fields);
    EXPECT_EQ(places[65534], 65534u);
    EXPECT_EQ(places[65535], 0xFFFFFFFF);
    EXPECT_EQ(places[65536], 0xFFFFFFFF);
    EXPECT_EQ(table.get_num_fields(), 65535u);
}
