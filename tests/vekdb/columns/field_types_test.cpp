#include <vekdb/field_types.h>

#include <gtest/gtest.h>

#include "testing/tables.h"

namespace {

TEST(FieldTypes, NamesAreReadWithoutRegardToCase) {
    EXPECT_EQ(116u, vekdb_string_to_fieldtype("TIMECODE"));
    EXPECT_EQ(84u, vekdb_string_to_fieldtype("Timecode_S"));
    EXPECT_EQ(97u, vekdb_string_to_fieldtype("text"));
    EXPECT_EQ(65u, vekdb_string_to_fieldtype("text_s"));
    EXPECT_EQ(68u, vekdb_string_to_fieldtype("time_of_day"));
    EXPECT_EQ(100u, vekdb_string_to_fieldtype("date"));
    EXPECT_EQ(77u, vekdb_string_to_fieldtype("dos_date"));
    EXPECT_EQ(110u, vekdb_string_to_fieldtype("numeric"));
    EXPECT_EQ(108u, vekdb_string_to_fieldtype("long"));
    EXPECT_EQ(102u, vekdb_string_to_fieldtype("double"));
}

TEST(FieldTypes, CharIsReadByNameAndByLetter) {
    EXPECT_EQ(99u, vekdb_string_to_fieldtype("c"));
    EXPECT_EQ(99u, vekdb_string_to_fieldtype("char"));
}

TEST(FieldTypes, OneCharacterStandsForItsOwnCode) {
    EXPECT_EQ(116u, vekdb_string_to_fieldtype("t"));
    EXPECT_EQ(84u, vekdb_string_to_fieldtype("T"));
    EXPECT_EQ(120u, vekdb_string_to_fieldtype("x"));
    EXPECT_EQ(233u, vekdb_string_to_fieldtype("\xE9"));
}

TEST(FieldTypes, OtherNamesAreNone) {
    EXPECT_EQ(0u, vekdb_string_to_fieldtype(""));
    EXPECT_EQ(0u, vekdb_string_to_fieldtype("xy"));
    EXPECT_EQ(0u, vekdb_string_to_fieldtype("timecodes"));
}

TEST(FieldTypes, WrittenNamesReadBackToTheirType) {
    for (char letter : std::string("tTaADdMnlf")) {
        auto type = static_cast<DBFieldTypes::eType>(letter);
        ASSERT_NE(nullptr, vekdb_fieldtype_to_string(type)) << letter;
        EXPECT_EQ(type, vekdb_string_to_fieldtype(vekdb_fieldtype_to_string(type)));
    }
    EXPECT_EQ(nullptr, vekdb_fieldtype_to_string(DBFieldTypes::character));
    EXPECT_EQ(nullptr, vekdb_fieldtype_to_string(DBFieldTypes::none));
}

TEST(FieldTypes, AnEmptyDescriptorEndsAnArray) {
    DBFieldDesc end = {};
    EXPECT_EQ(DBFieldTypes::none, end.type);
    EXPECT_TRUE(end.name.empty());
}

TEST(StripChar, LeavesEveryOccurrenceOut) {
    EXPECT_STREQ("RD", strip_char_from_string('&', "R&D").c_str());
    EXPECT_STREQ("abc", strip_char_from_string('&', "&a&&bc&").c_str());
    EXPECT_STREQ("abc", strip_char_from_string('&', "abc").c_str());
}

TEST(StripChar, NothingLeftIsTheEmptyString) {
    EXPECT_TRUE(strip_char_from_string('&', "&&&").empty());
    EXPECT_TRUE(strip_char_from_string('&', "").empty());
    EXPECT_TRUE(strip_char_from_string('&', nullptr).empty());
}

TEST(MinimumWidth, IsKnownForStandardColumnsInAnyCase) {
    EXPECT_EQ(100, vekdb::getMinFieldSize("notes"));
    EXPECT_EQ(1, vekdb::getMinFieldSize("Tag"));
    EXPECT_EQ(12, vekdb::getMinFieldSize("Cookie"));
    EXPECT_EQ(17, vekdb::getMinFieldSize("END KEYCODE"));
    EXPECT_EQ(15, vekdb::getMinFieldSize("start inkcode"));
}

TEST(MinimumWidth, OfEveryStandardColumn) {
    const struct {
        const char* name;
        int width;
    } expected[] = {
        {"Cookie", 12},
        {"Type", 6},
        {"Flags", 8},
        {"Name", 32},
        {"Date", 12},
        {"Size", 8},
        {"pic qual", 4},
        {"aud qual", 32},
        {"chans", 64},
        {"Start time", 12},
        {"End time", 12},
        {"Duration", 16},
        {"Reel", 10},
        {"Reel Type", 30},
        {"Scene", 24},
        {"Shot", 24},
        {"Who", 24},
        {"Description", 64},
        {"Notes", 100},
        {"snd start", 12},
        {"snd end", 12},
        {"snd reel", 10},
        {"start 24P code", 12},
        {"end 24P code", 12},
        {"24P reel", 10},
        {"film_origin", 3},
        {"pulldown", 3},
        {"sequence", 2},
        {"start keycode", 17},
        {"end keycode", 17},
        {"film duration", 9},
        {"start camcode", 12},
        {"end camcode", 12},
        {"cam reel", 10},
        {"comp reel", 10},
        {"cam_date", 6},
        {"start inkcode", 15},
        {"end inkcode", 15},
        {"lab reel", 10},
        {"Mdrive", 4},
        {"Tag", 1},
    };
    for (const auto& column : expected) {
        EXPECT_EQ(column.width, vekdb::getMinFieldSize(column.name)) << column.name;
    }
}

TEST(MinimumWidth, IsFourForOtherNames) {
    EXPECT_EQ(4, vekdb::getMinFieldSize("Lens"));
    EXPECT_EQ(4, vekdb::getMinFieldSize(""));
    EXPECT_EQ(4, vekdb::getMinFieldSize(nullptr));
}

TEST(FieldSize, IsTheLongestValueInBytes) {
    vekdb table(textColumns({"Reel", "Notes"}));
    EXPECT_EQ(0u, table.get_fieldsize(0));
    addRow(table, {"A001", ""});
    addRow(table, {"A1", ""});
    EXPECT_EQ(4u, table.get_fieldsize(0));
    EXPECT_EQ(0u, table.get_fieldsize(1));
    EXPECT_EQ(0u, table.get_fieldsize(2));
}

TEST(FieldSize, OfRecordsWithFewerValuesIsNothing) {
    vekdb table(textColumns({"A", "B"}));
    addRow(table, {"a", "long"});
    addRow(table, {"a", "b"});
    const int width = 0;
    table.get_record(0)->resizeRecord(1, &width, false);
    EXPECT_EQ(1u, table.get_fieldsize(1));
}

TEST(FieldSize, CountsHiddenRowsAndBytes) {
    vekdb table(textColumns({"Notes"}));
    addRow(table, {"caf\xC3\xA9"});
    addRow(table, {"x"});
    table.set_tag(1, 1);
    table.set_show_tags_only(1);
    EXPECT_EQ(5u, table.get_fieldsize(0));
}

}  // namespace
