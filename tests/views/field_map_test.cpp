#include <vekdb/views/field_map.h>

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include <vekdb/table.h>
#include <vekdb/views/view_rep.h>

namespace {

std::vector<DBFieldDesc> columns(unsigned count) {
    std::vector<DBFieldDesc> fields;
    for (unsigned i = 0; i < count; ++i) {
        const std::string name = count <= 26 ? std::string(1, static_cast<char>('A' + i))
                                             : std::string("c").append(std::to_string(i + 1));
        fields.push_back({name.c_str(), DBFieldTypes::text});
    }
    return fields;
}

/// The names in order, the hidden ones in brackets.
std::string shape(const FieldMap& map) {
    std::string text;
    for (int i = 0; i < static_cast<int>(map.size()); ++i) {
        const bool visible = map.isVisible(i);
        text.append(i > 0 ? " " : "").append(visible ? "" : "(");
        text.append(map[i].c_str()).append(visible ? "" : ")");
    }
    return text;
}

/// What a view with this parameter gives.
std::string loaded(unsigned columnCount, const char* text) {
    vekdb table(columns(columnCount));
    table.add_param("V5_FIELD_MAP", text);
    return shape(FieldMap(table));
}

}  // namespace

TEST(FieldMap, StartsEmptyAndWithoutASource) {
    const FieldMap map;
    EXPECT_EQ(map.size(), 0U);
    EXPECT_FALSE(map.source());
    EXPECT_EQ(map.getFieldIdx("A"), -1);
    EXPECT_TRUE(map.asString().empty());
    EXPECT_EQ(map.getVisibleFieldIndex(0), -1);
}

TEST(FieldMap, WithoutTheParameterAllColumnsAreShownInOrder) {
    vekdb table(columns(3));
    const FieldMap map(table);
    EXPECT_EQ(shape(map), "A B C");
    EXPECT_STREQ(map.asString().c_str(), "1 2 3");
}

TEST(FieldMap, TheParameterGivesOrderAndVisibility) {
    EXPECT_EQ(loaded(2, "2 -1"), "B (A)");
    EXPECT_EQ(loaded(3, "1 -3 2"), "A (C) B");
}

TEST(FieldMap, TheTextThatWasReadIsGivenBack) {
    vekdb table(columns(3));
    for (const char* text : {"2 -1", "1 -3 2", "3", "-2", "1 2 3"}) {
        table.add_param("V5_FIELD_MAP", text);
        EXPECT_STREQ(FieldMap(table).asString().c_str(), text);
    }
}

TEST(FieldMap, ARepeatedNumberIsIgnored) {
    EXPECT_EQ(loaded(2, "1 1 2"), "A B");
    EXPECT_EQ(loaded(2, "1 -1 2"), "A B");
}

TEST(FieldMap, WhatIsNoNumberEndsTheReading) {
    EXPECT_EQ(loaded(2, "x 1"), "A B");
    EXPECT_EQ(loaded(2, "2 x 1"), "B");
    EXPECT_EQ(loaded(2, "-"), "A B");
    EXPECT_EQ(loaded(2, ""), "A B");
    EXPECT_EQ(loaded(2, "1,2"), "A");
    EXPECT_EQ(loaded(2, "2\xB2 1"), "B");
}

TEST(FieldMap, AnEntryIsReadFromThreeCharacters) {
    const std::string rest = loaded(150, "1234");
    EXPECT_EQ(rest, "c123");
    EXPECT_EQ(loaded(150, "-123 4"), "(c12) c4");
    EXPECT_EQ(loaded(150, "-100"), "(c10)");
    EXPECT_EQ(loaded(150, "12-5 3"), "c12 c3");
    EXPECT_EQ(loaded(150, "-99 149"), "(c99) c149");
}

TEST(FieldMap, OneBlankIsPassedOverAnEntryBehindMoreIsReadTwice) {
    EXPECT_EQ(loaded(3, "1  2"), "A B");
    EXPECT_EQ(loaded(3, "1   2"), "A B");
    EXPECT_EQ(loaded(3, "1    2"), "A");
    EXPECT_EQ(loaded(3, "1     2"), "A");
    EXPECT_EQ(loaded(3, " 2"), "B");
}

TEST(FieldMap, ZeroIsSkipped) {
    EXPECT_EQ(loaded(2, "0 2"), "B");
    EXPECT_EQ(loaded(2, "-0 2"), "B");
    EXPECT_EQ(loaded(2, "0"), "A B");
}

TEST(FieldMap, ReadingEndsWhereItCannotGetOn) {
    EXPECT_EQ(loaded(2, "+1"), "A");
    EXPECT_EQ(loaded(2, "+2 1"), "B");
    EXPECT_EQ(loaded(2, "1\t2"), "A B");
}

TEST(FieldMap, ANumberWithoutAColumnGivesTheNamelessEntryOnce) {
    vekdb table(columns(2));
    table.add_param("V5_FIELD_MAP", "9 -8 1");
    const FieldMap map(table);
    ASSERT_EQ(map.size(), 2U);
    EXPECT_TRUE(map[0].empty());
    EXPECT_TRUE(map.isVisible(0));
    EXPECT_STREQ(map[1].c_str(), "A");
    EXPECT_STREQ(map.asString().c_str(), "0 1");
}

TEST(FieldMap, NamesAreFoundWithoutRegardToCase) {
    vekdb table(
        std::vector<DBFieldDesc>{{"Reel", DBFieldTypes::text}, {"Scene", DBFieldTypes::text}});
    const FieldMap map(table);
    EXPECT_EQ(map.getFieldIdx("sCENE"), 1);
    EXPECT_TRUE(map.containsField("REEL"));
    EXPECT_FALSE(map.containsField("Notes"));
    EXPECT_FALSE(map.containsField(nullptr));
    EXPECT_TRUE(map.isVisible("scene"));
    EXPECT_FALSE(map.isVisible("Notes"));
}

TEST(FieldMap, PositionsOutOfRangeAreNotThere) {
    vekdb table(columns(2));
    FieldMap map(table);
    for (int i : {-1, 2, 1000, -1000}) {
        EXPECT_TRUE(map.getName(i).empty());
        EXPECT_TRUE(map[i].empty());
        EXPECT_FALSE(map.isVisible(i));
        map.set(i, "X", false);
        map.setName(i, "X");
        map.setVisible(i, true);
        map.invertVisible(i);
        map.swap(i, 0);
        map.swap(0, i);
    }
    EXPECT_EQ(shape(map), "A B");
}

TEST(FieldMap, AppendIgnoresANameThatIsThere) {
    FieldMap map;
    map.append("Reel", true);
    map.append("REEL", false);
    map.append("Scene", false);
    EXPECT_EQ(shape(map), "Reel (Scene)");
}

TEST(FieldMap, SetReplacesWithoutLookingForTheName) {
    vekdb table(columns(3));
    FieldMap map(table);
    map.set(0, "B", false);
    map.setName(2, "b");
    EXPECT_EQ(shape(map), "(B) B b");
    EXPECT_EQ(map.getFieldIdx("b"), 0);
}

TEST(FieldMap, VisibilityIsSetAndFlipped) {
    vekdb table(columns(3));
    FieldMap map(table);
    map.setVisible(0, false);
    map.invertVisible(1);
    map.invertVisible(1);
    map.invertVisible(2);
    EXPECT_EQ(shape(map), "(A) B (C)");
    EXPECT_EQ(map.numVisible(), 1U);
    EXPECT_STREQ(map.asString().c_str(), "-1 2 -3");
}

TEST(FieldMap, SwapExchangesNamesAndFlags) {
    vekdb table(columns(3));
    FieldMap map(table);
    map.setVisible(2, false);
    map.swap(0, 2);
    EXPECT_EQ(shape(map), "(C) B A");
    map.swap(1, 1);
    EXPECT_EQ(shape(map), "(C) B A");
}

TEST(FieldMap, RemoveMovesTheLaterEntriesUp) {
    vekdb table(columns(3));
    FieldMap map(table);
    map.setVisible(2, false);
    EXPECT_TRUE(map.remove("a"));
    EXPECT_EQ(shape(map), "B (C)");
}

TEST(FieldMap, RemoveOfAnAbsentNameChangesNothing) {
    vekdb table(columns(2));
    FieldMap map(table);
    EXPECT_FALSE(map.remove("Notes"));
    EXPECT_EQ(shape(map), "A B");
}

TEST(FieldMap, ClearKeepsTheSource) {
    vekdb table(columns(2));
    FieldMap map(table);
    const VDBViewRep* source = map.source().get();
    map.clear();
    EXPECT_EQ(map.size(), 0U);
    EXPECT_TRUE(map.asString().empty());
    EXPECT_EQ(map.source().get(), source);
}

TEST(FieldMap, VisibleEntriesAreCountedForTheSourceColumn) {
    vekdb table(columns(3));
    table.add_param("V5_FIELD_MAP", "-1 3 2");
    const FieldMap map(table);
    EXPECT_EQ(map.getVisibleFieldIndex(0), 2);
    EXPECT_EQ(map.getVisibleFieldIndex(1), 1);
    EXPECT_EQ(map.getVisibleFieldIndex(2), -1);
    EXPECT_EQ(map.getVisibleFieldIndex(-1), -1);
    EXPECT_EQ(map.getVisibleFieldIndex(INT_MIN), -1);
}

TEST(FieldMap, AHiddenFirstColumnMakesTheSecondTheFirstVisible) {
    vekdb table(columns(2));
    FieldMap map(table);
    map.setVisible(0, false);
    EXPECT_EQ(map.getVisibleFieldIndex(0), 1);
}

TEST(FieldMap, WithoutASourceEntriesAreNumberedByPosition) {
    FieldMap map;
    map.append("Scene", true);
    map.append("Reel", false);
    EXPECT_STREQ(map.asString().c_str(), "1 -2");
}

TEST(FieldMap, ANameTheSourceHasNotIsWrittenAsZero) {
    vekdb table(columns(2));
    FieldMap map(table);
    map.append("Gone", true);
    map.append("Lost", false);
    EXPECT_STREQ(map.asString().c_str(), "1 2 0 -0");
    table.add_param("V5_FIELD_MAP", map.asString().c_str());
    EXPECT_EQ(shape(FieldMap(table)), "A B");
}

TEST(FieldMap, BindingAgainKeepsTheEntriesThatAreThere) {
    vekdb first(columns(2));
    vekdb second(columns(4));
    second.add_param("V5_FIELD_MAP", "4 -1");
    FieldMap map(first);
    map.setSourceDb(VDBView(&second));
    EXPECT_EQ(shape(map), "A B D");
}

TEST(FieldMap, BindingAgainDoesNotAddAllColumnsToAMap) {
    vekdb table(columns(3));
    FieldMap map;
    map.append("C", false);
    map.setSourceDb(VDBView(&table));
    EXPECT_EQ(shape(map), "(C)");
    EXPECT_STREQ(map.asString().c_str(), "-3");
}

TEST(FieldMap, ANullSourceIsBoundAndNothingIsRead) {
    vekdb table(columns(2));
    FieldMap map(table);
    map.setSourceDb(VDBView());
    EXPECT_FALSE(map.source());
    EXPECT_EQ(shape(map), "A B");
    EXPECT_EQ(map.getVisibleFieldIndex(0), -1);
    EXPECT_EQ(FieldMap(VDBView()).size(), 0U);
}

TEST(FieldMap, AViewWithoutASourceHasNoColumns) {
    const FieldMap map{VDBView(static_cast<vekdb*>(nullptr))};
    EXPECT_EQ(map.size(), 0U);
}

TEST(FieldMap, AssignmentCopiesSourceNamesAndFlags) {
    vekdb table(columns(2));
    FieldMap map(table);
    map.setVisible(1, false);
    FieldMap copy;
    copy = map;
    EXPECT_EQ(shape(copy), "A (B)");
    EXPECT_EQ(copy.source().get(), map.source().get());
    EXPECT_EQ(map.source()->handleCount(), 2U);
    copy.invertVisible(1);
    EXPECT_EQ(shape(map), "A (B)");
}

TEST(FieldMap, ReadsTheParameterOfTheViewNotOfTheTable) {
    vekdb table(columns(3));
    table.add_param("V5_FIELD_MAP", "1");
    VDBView view(&table);
    view->set_param_val("V5_FIELD_MAP", "3 2");
    EXPECT_EQ(shape(FieldMap(view)), "C B");
    VDBView above(&table);
    above->baseView(view.get());
    EXPECT_EQ(shape(FieldMap(above)), "C B");
}
