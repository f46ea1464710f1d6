#include <vekdb/record.h>

#include <gtest/gtest.h>

#include <clocale>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>

#include <vekdb/host/config.h>
#include "testing/tables.h"

namespace {

using String = LightweightString<char>;

struct RecordInTable : testing::Test {
    RecordInTable() : table(textColumns({"A", "B", "C"})) {
        table.add_records(1);
        table.clear_changed();
        record = table.get_record(0);
    }
    vekdb table;
    dbrecord* record;
};

TEST(Record, StartsEmptyUnchangedUntaggedAndFree) {
    dbrecord record(3);
    EXPECT_EQ(3, record.get_num_fields());
    EXPECT_TRUE(record.is_blank());
    EXPECT_FALSE(record.get_changed());
    EXPECT_EQ(0u, record.get_tag());
    EXPECT_EQ(nullptr, record.get_container());
    EXPECT_STREQ("", record.get_field(2));
}

TEST(Record, NumbersOfEveryWidthAreStoredInFull) {
    dbrecord record(1);
    EXPECT_TRUE(record.set_field(0, std::numeric_limits<long>::min()));
    EXPECT_EQ(std::to_string(std::numeric_limits<long>::min()), record.get_field(0));
    EXPECT_TRUE(record.set_field(0, std::numeric_limits<unsigned long>::max()));
    EXPECT_EQ(std::to_string(std::numeric_limits<unsigned long>::max()), record.get_field(0));
    EXPECT_TRUE(record.set_field(0, -1ll));
    EXPECT_STREQ("-1", record.get_field(0));
    EXPECT_FALSE(record.set_field(1, 1ll));
    EXPECT_FALSE(record.set_field(-1, 1ull));
}

TEST(Record, TextWithoutAnEndIsStoredAsFarAsItGoes) {
    dbrecord record(1);
    const std::string_view text("  A001 and more");
    EXPECT_TRUE(record.set_field(0, text.substr(0, 6)));
    EXPECT_STREQ("A001", record.get_field(0));
    EXPECT_TRUE(record.set_field(0, text.substr(0, 6), false));
    EXPECT_STREQ("  A001", record.get_field(0));
    EXPECT_TRUE(record.set_field(0, std::string_view("   ")));
    EXPECT_TRUE(record.is_blank());
    EXPECT_FALSE(record.set_field(1, text));
}

TEST(Record, StoringWithTrimSkipsLeadingBlanks) {
    dbrecord record(1);
    EXPECT_TRUE(record.set_field(0, "   12", true));
    EXPECT_STREQ("12", record.get_field(0));
    EXPECT_TRUE(record.set_field(0, "   12", false));
    EXPECT_STREQ("   12", record.get_field(0));
}

TEST(Record, TrimSkipsWhiteSpaceOfTheSevenBitRangeOnly) {
    dbrecord record(1);
    record.set_field(0, " \t\n\v\f\r\xA0 x");
    EXPECT_STREQ("\xA0 x", record.get_field(0));
}

TEST(Record, TrimIsTheDefaultAndTextIsNoBoolean) {
    dbrecord record(1);
    record.set_field(0, "  abc");
    EXPECT_STREQ("abc", record.get_field(0));
}

TEST_F(RecordInTable, NullTextOverAnEmptyValueStoresNothingButMarksTheChange) {
    EXPECT_TRUE(record->set_field(0, static_cast<const char*>(nullptr)));
    EXPECT_STREQ("", record->get_field(0));
    EXPECT_TRUE(record->get_changed());
    EXPECT_TRUE(table.get_modified());
}

TEST_F(RecordInTable, EqualTextMarksTheChange) {
    record->set_field(0, "x");
    table.clear_changed();
    EXPECT_TRUE(record->set_field(0, "x"));
    EXPECT_TRUE(record->get_changed());
    EXPECT_TRUE(table.get_modified());
}

TEST_F(RecordInTable, AnEqualStringMarksNothing) {
    record->setField(0, "x");
    table.clear_changed();
    EXPECT_TRUE(record->setField(0, "x"));
    EXPECT_TRUE(record->setField(1, ""));
    EXPECT_FALSE(record->get_changed());
    EXPECT_FALSE(table.get_modified());
}

TEST_F(RecordInTable, ADifferentStringIsSharedAndMarked) {
    String value("X marks");
    EXPECT_TRUE(record->setField(0, value));
    EXPECT_EQ(value.c_str(), record->get_field(0));
    EXPECT_TRUE(record->get_changed());
    EXPECT_TRUE(table.get_modified());
    table.clear_changed();
    EXPECT_TRUE(record->setField(0, "x MARKS"));
    EXPECT_TRUE(record->get_changed());
}

TEST(Record, SetFieldRefusesIndexesOutOfRange) {
    dbrecord record(2);
    EXPECT_FALSE(record.set_field(-1, "x"));
    EXPECT_FALSE(record.set_field(2, "x"));
    EXPECT_FALSE(record.set_field(2, 1));
    EXPECT_FALSE(record.setField(2, "x"));
    EXPECT_FALSE(record.get_changed());
}

TEST(Record, StringsKeepLeadingBlanks) {
    dbrecord record(1);
    record.setField(0, "  x");
    EXPECT_STREQ("  x", record.get_field(0));
}

TEST(Record, NumbersAndBooleansAreStoredAsText) {
    dbrecord record(5);
    record.set_field(0, 0.5);
    record.set_field(1, -3);
    record.set_field(2, true);
    record.set_field(3, false);
    record.set_field(4, 4000000000u);
    EXPECT_STREQ("0.50000000", record.get_field(0));
    EXPECT_STREQ("-3", record.get_field(1));
    EXPECT_STREQ("t", record.get_field(2));
    EXPECT_STREQ("f", record.get_field(3));
    EXPECT_STREQ("4000000000", record.get_field(4));
}

TEST(Record, AVeryLongDoubleIsCutToTheBuffer) {
    dbrecord record(1);
    EXPECT_TRUE(record.set_field(0, 1e300));
    EXPECT_EQ(255u, std::strlen(record.get_field(0)));
}

TEST(Record, DoublesHaveAPointUnderEveryLocale) {
    std::string before = std::setlocale(LC_ALL, nullptr);
    std::setlocale(LC_ALL, "de_DE.UTF-8");
    dbrecord record(1);
    record.set_field(0, 0.5);
    std::setlocale(LC_ALL, before.c_str());
    EXPECT_STREQ("0.50000000", record.get_field(0));
}

TEST(Record, GetFieldIsNullPastTheCountAndEmptyInRange) {
    dbrecord record(2);
    EXPECT_EQ(nullptr, record.get_field(2));
    EXPECT_EQ(nullptr, record.get_field(65535));
    EXPECT_STREQ("", record.get_field(1));
    EXPECT_TRUE(record.getField(2).empty());
    EXPECT_EQ(&record.getField(2), &record.getField(3));
}

TEST(Record, InFieldCutsToTheLengthAndEndsBehindIt) {
    dbrecord record(2);
    record.set_field(0, "abcdefg");
    char buffer[8] = "#######";
    EXPECT_TRUE(record.in_field(0, buffer, 4));
    EXPECT_EQ(0, std::memcmp(buffer, "abcd\0##", 7));
}

TEST(Record, InFieldFillsAShorterValueUpWithZeros) {
    dbrecord record(1);
    record.set_field(0, "ab");
    char buffer[8] = "#######";
    EXPECT_TRUE(record.in_field(0, buffer, 4));
    EXPECT_EQ(0, std::memcmp(buffer, "ab\0\0\0##", 7));
}

TEST(Record, InFieldOfAnEmptyValueWritesOneZero) {
    dbrecord record(1);
    char buffer[4] = "###";
    EXPECT_TRUE(record.in_field(0, buffer, 3));
    EXPECT_EQ(0, std::memcmp(buffer, "\0##", 3));
}

TEST(Record, InFieldRefusesOddArguments) {
    dbrecord record(1);
    record.set_field(0, "x");
    char buffer[4] = "###";
    EXPECT_FALSE(record.in_field(1, buffer, 3));
    EXPECT_FALSE(record.in_field(-1, buffer, 3));
    EXPECT_FALSE(record.in_field(0, buffer, -1));
    EXPECT_FALSE(record.in_field(0, nullptr, 3));
    EXPECT_STREQ("###", buffer);
}

TEST(Record, IsBlankWithoutValuesAndWithEmptyOnesOnly) {
    dbrecord none(0), one(1);
    EXPECT_TRUE(none.is_blank());
    EXPECT_TRUE(one.is_blank());
    one.set_field(0, " ", false);
    EXPECT_FALSE(one.is_blank());
    one.clear();
    EXPECT_TRUE(one.is_blank());
}

TEST_F(RecordInTable, ClearKeepsTheCountAndTheFlags) {
    record->set_field(2, "x");
    table.clear_changed();
    record->clear();
    EXPECT_EQ(3, record->get_num_fields());
    EXPECT_STREQ("", record->get_field(2));
    EXPECT_FALSE(record->get_changed());
    EXPECT_FALSE(table.get_modified());
}

TEST_F(RecordInTable, CopiesShareTextAndHaveNoContainerTagOrChange) {
    record->set_field(0, "  kept", false);
    table.set_tag(0, 1);
    dbrecord copy(*record);
    EXPECT_STREQ("  kept", copy.get_field(0));
    EXPECT_EQ(record->getField(0).c_str(), copy.getField(0).c_str());
    EXPECT_EQ(nullptr, copy.get_container());
    EXPECT_EQ(0u, copy.get_tag());
    EXPECT_FALSE(copy.get_changed());
}

TEST_F(RecordInTable, AssignmentTrimsMarksAndKeepsContainerAndTag) {
    dbrecord source(3);
    source.setField(0, "  a");
    source.setField(1, "b");
    table.set_tag(0, 1);
    *record = source;
    EXPECT_STREQ("a", record->get_field(0));
    EXPECT_EQ(&table, record->get_container());
    EXPECT_EQ(1u, record->get_tag());
    EXPECT_TRUE(record->get_changed());
    EXPECT_TRUE(table.get_modified());
}

TEST_F(RecordInTable, AssignmentOfEqualValuesMarksTheChange) {
    dbrecord equal(*record);
    *record = equal;
    EXPECT_TRUE(record->get_changed());
    EXPECT_TRUE(table.get_modified());
}

TEST_F(RecordInTable, AssignmentTakesTheOtherCount) {
    dbrecord five(5);
    five.set_field(4, "e");
    *record = five;
    EXPECT_EQ(5, record->get_num_fields());
    EXPECT_STREQ("e", record->get_field(4));
}

TEST_F(RecordInTable, AssignmentOfNoValuesMarksNothing) {
    *record = dbrecord(0);
    EXPECT_EQ(0, record->get_num_fields());
    EXPECT_FALSE(record->get_changed());
    EXPECT_FALSE(table.get_modified());
}

TEST_F(RecordInTable, AssignmentToItselfKeepsTheValues) {
    record->set_field(0, "a");
    record->set_field(2, " c", false);
    *record = *static_cast<const dbrecord*>(record);
    EXPECT_STREQ("a", record->get_field(0));
    EXPECT_STREQ("c", record->get_field(2));
}

TEST(Record, AValueMayBeStoredFromItsOwnText) {
    dbrecord record(1);
    record.set_field(0, "  abc", false);
    record.set_field(0, record.get_field(0));
    EXPECT_STREQ("abc", record.get_field(0));
    record.set_field(0, record.get_field(0) + 1);
    EXPECT_STREQ("bc", record.get_field(0));
    record.setField(0, record.getField(0));
    EXPECT_STREQ("bc", record.get_field(0));
}

TEST(Record, ResizeWithoutWidthsOrOutOfRangeDoesNothing) {
    dbrecord record(2);
    int width = 0;
    record.resizeRecord(5, nullptr, true);
    record.resizeRecord(-1, &width, true);
    record.resizeRecord(65536, &width, true);
    EXPECT_EQ(2, record.get_num_fields());
}

TEST(Record, ResizeDropsSurplusValuesAndAddsEmptyOnes) {
    dbrecord record(3);
    for (int i = 0; i < 3; ++i) record.set_field(i, "v");
    int width = 0;
    record.resizeRecord(1, &width, false);
    record.resizeRecord(4, &width, false);
    EXPECT_EQ(4, record.get_num_fields());
    EXPECT_STREQ("v", record.get_field(0));
    EXPECT_STREQ("", record.get_field(1));
    EXPECT_STREQ("", record.get_field(3));
}

TEST(Record, ResizeFieldDoesNothing) {
    dbrecord record(1);
    record.set_field(0, "abcdef");
    record.resizeField(0, 2);
    EXPECT_STREQ("abcdef", record.get_field(0));
}

TEST(Record, RemovingAValueMovesTheLaterOnesDown) {
    dbrecord record(4);
    const char* values[] = {"a", "b", "c"};
    for (int i = 0; i < 3; ++i) record.set_field(i, values[i]);
    record.removeField(1);
    EXPECT_EQ(3, record.get_num_fields());
    EXPECT_STREQ("c", record.get_field(1));
    EXPECT_STREQ("", record.get_field(2));
    record.removeField(2);
    record.removeField(1);
    record.removeField(7);
    EXPECT_EQ(1, record.get_num_fields());
    EXPECT_STREQ("a", record.get_field(0));
}

TEST_F(RecordInTable, StructuralChangesSetNoFlag) {
    int width = 0;
    record->resizeRecord(5, &width, true);
    record->removeField(0);
    EXPECT_FALSE(record->get_changed());
    EXPECT_FALSE(table.get_modified());
}

TEST(Record, TheMostValuesAreReachable) {
    dbrecord record(65535);
    EXPECT_TRUE(record.set_field(65534, "last"));
    EXPECT_STREQ("last", record.get_field(65534));
    EXPECT_STREQ("", record.get_field(65533));
}

struct SettingsExport : testing::Test {
    SettingsExport() : table(textColumns({"Name", "NOTES", "Reel", "snd reel", "Other"})) {
        addRow(table, {"Clip 1", "fine", "A001", "S01", "x"});
    }
    vekdb table;
    configb settings;
};

TEST_F(SettingsExport, NeedsAContainerAndAColumnNamedName) {
    dbrecord loose(*table.get_record(0));
    EXPECT_EQ(0, loose.update(&settings));
    vekdb nameless(textColumns({"Notes"}));
    addRow(nameless, {"n"});
    EXPECT_EQ(0, nameless.get_record(0)->update(&settings));
}

TEST_F(SettingsExport, CopiesTheMappedFieldsAndCountsThem) {
    EXPECT_EQ(3, table.get_record(0)->update(&settings));
    EXPECT_STREQ("Clip 1", settings.get("slate/take").get().c_str());
    EXPECT_STREQ("Clip 1", settings.get("name").get().c_str());
    EXPECT_STREQ("fine", settings.get("notes").get().c_str());
    EXPECT_STREQ("A001", settings.get("reelid").get().c_str());
    EXPECT_STREQ("S01", settings.get("reelid1").get().c_str());
    EXPECT_TRUE(settings.get("Other").get().empty());
}

TEST_F(SettingsExport, EveryMappedFieldHasItsKey) {
    const std::vector<const char*> fields = {"Notes",    "WHO",       "scene",    "Description",
                                             "Shot",     "Reel",      "Snd Reel", "24p reel",
                                             "cam reel", "comp reel", "LAB REEL"};
    const char* keys[] = {"notes",   "who",      "scene",   "description", "shot",    "reelid",
                          "reelid1", "24P_reel", "camreel", "comp_reel",   "lab_reel"};
    std::vector<const char*> names = fields;
    names.push_back("NAME");
    vekdb standard(textColumns(names));
    addRow(standard, names);
    EXPECT_EQ(11, standard.get_record(0)->update(&settings));
    EXPECT_STREQ("NAME", settings.get("name").get().c_str());
    for (std::size_t i = 0; i < fields.size(); ++i) {
        EXPECT_STREQ(fields[i], settings.get(keys[i]).get().c_str());
    }
}

TEST_F(SettingsExport, OfTwoFieldsWithOneNameTheLastIsKeptAndBothAreCounted) {
    vekdb twice(textColumns({"Name", "who", "WHO"}));
    addRow(twice, {"n", "first", "last"});
    EXPECT_EQ(2, twice.get_record(0)->update(&settings));
    EXPECT_STREQ("last", settings.get("who").get().c_str());
}

TEST_F(SettingsExport, CountsNothingForTheNameAlone) {
    vekdb named(textColumns({"name"}));
    addRow(named, {"n"});
    EXPECT_EQ(0, named.get_record(0)->update(&settings));
    EXPECT_STREQ("n", settings.get("slate/take").get().c_str());
}

}  // namespace
