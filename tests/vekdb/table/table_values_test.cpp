#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>

#include <vekdb/host/cookie.h>
#include <vekdb/table.h>
#include "testing/tables.h"

namespace {

struct Values : testing::Test {
    Values() : table(textColumns({"Cookie", "B"})) {
        table.add_records(2);
        table.clear_changed();
    }
    static Cookie cookieOf(unsigned char number) {
        Cookie cookie;
        cookie.uuid.bytes[15] = number;
        cookie.type = 'C';
        return cookie;
    }
    vekdb table;
};

TEST_F(Values, OfEveryKindAreStoredAsText) {
    EXPECT_TRUE(table.set_field(0, 1, "  text"));
    EXPECT_STREQ("text", table.getField(0, 1).c_str());
    EXPECT_TRUE(table.set_field(0, 1, 12));
    EXPECT_STREQ("12", table.getField(0, 1).c_str());
    EXPECT_TRUE(table.set_field(0, 1, 1.5));
    EXPECT_STREQ("1.50000000", table.getField(0, 1).c_str());
    EXPECT_TRUE(table.set_field(0, 1, true));
    EXPECT_STREQ("t", table.getField(0, 1).c_str());
    EXPECT_TRUE(table.setField(0, 1, "  kept"));
    EXPECT_STREQ("  kept", table.getField(0, 1).c_str());
    EXPECT_TRUE(table.get_modified());
}

TEST_F(Values, OfEveryWidthAreStoredInFull) {
    const auto stored = [&](auto value) {
        EXPECT_TRUE(table.set_field(0, 1, value));
        return std::string(table.getField(0, 1).view());
    };
    EXPECT_EQ("-7", stored(static_cast<signed char>(-7)));
    EXPECT_EQ("65535", stored(static_cast<unsigned short>(65535)));
    EXPECT_EQ("4294967295", stored(4294967295u));
    EXPECT_EQ("-9223372036854775808", stored(std::numeric_limits<std::int64_t>::min()));
    EXPECT_EQ("18446744073709551615", stored(std::numeric_limits<std::uint64_t>::max()));
    EXPECT_EQ("-9223372036854775808", stored(std::numeric_limits<long long>::min()));
    EXPECT_EQ("18446744073709551615", stored(std::numeric_limits<unsigned long long>::max()));
}

TEST_F(Values, OfTextWithoutAnEndAreStoredAsFarAsTheyGo) {
    const std::string_view text("  A001 and more");
    EXPECT_TRUE(table.set_field(0, 1, text.substr(0, 6)));
    EXPECT_STREQ("A001", table.getField(0, 1).c_str());
    EXPECT_TRUE(table.set_field(0, 1, std::string(300, 'x')));
    EXPECT_EQ(300u, table.getField(0, 1).length());
    EXPECT_TRUE(table.set_field(0, 1, std::string_view()));
    EXPECT_STREQ("", table.getField(0, 1).c_str());
}

TEST_F(Values, AreRefusedWhereTheTextHasANulInside) {
    table.set_field(0, 1, "kept");
    EXPECT_FALSE(table.set_field(0, 1, std::string_view("a\0b", 3)));
    EXPECT_FALSE(table.get_record(0)->set_field(1, std::string_view("a\0b", 3)));
    EXPECT_STREQ("kept", table.getField(0, 1).c_str());
}

TEST_F(Values, AreRefusedOutsideTheTable) {
    EXPECT_FALSE(table.set_field(2, 1, "x"));
    EXPECT_FALSE(table.set_field(0, 2, "x"));
    EXPECT_FALSE(table.set_field(0, 65536, "x"));
    EXPECT_FALSE(table.set_field(0, 65536, 1));
    EXPECT_FALSE(table.set_field(0, 65536, 1.0));
    EXPECT_FALSE(table.set_field(0, 65536, 1ull));
    EXPECT_FALSE(table.set_field(0, 65536, std::string_view("x")));
    EXPECT_FALSE(table.set_field(0, 65536, true));
    EXPECT_FALSE(table.setField(0, 65536, "x"));
    EXPECT_FALSE(table.setField(9, 0, "x"));
    EXPECT_TRUE(table.getField(2, 0).empty());
    EXPECT_TRUE(table.getField(0, 65536).empty());
    EXPECT_FALSE(table.get_modified());
}

TEST_F(Values, CopyingOutAnEmptyOneFailsAndWritesNothing) {
    char buffer[4] = "###";
    int number = 7;
    double real = 7;
    bool flag = true;
    EXPECT_FALSE(table.in_field(0, 1, buffer, 3));
    EXPECT_FALSE(table.in_field(0, 1, number));
    EXPECT_FALSE(table.in_field(0, 1, real));
    EXPECT_FALSE(table.in_field(0, 1, flag));
    EXPECT_FALSE(table.in_field(5, 1, flag));
    EXPECT_STREQ("###", buffer);
    EXPECT_EQ(7, number);
    EXPECT_EQ(7, real);
    EXPECT_TRUE(flag);
}

TEST_F(Values, AreCutToTheBuffer) {
    table.set_field(0, 1, "abcdef");
    char buffer[8] = "#######";
    EXPECT_TRUE(table.in_field(0, 1, buffer, 4));
    EXPECT_EQ(0, std::memcmp(buffer, "abcd\0##", 7));
    EXPECT_FALSE(table.in_field(0, 1, buffer, -1));
    EXPECT_FALSE(table.in_field(0, 1, nullptr, 4));
}

TEST_F(Values, AreReadAsNumbersAndBooleans) {
    int number = 0;
    double real = 0;
    bool flag = false;
    table.set_field(0, 1, "12abc");
    EXPECT_TRUE(table.in_field(0, 1, number));
    EXPECT_EQ(12, number);
    table.set_field(0, 1, "2.5e1x");
    EXPECT_TRUE(table.in_field(0, 1, real));
    EXPECT_EQ(25, real);
    table.set_field(0, 1, "true");
    EXPECT_TRUE(table.in_field(0, 1, flag));
    EXPECT_TRUE(flag);
    table.set_field(0, 1, "T");
    EXPECT_TRUE(table.in_field(0, 1, flag));
    EXPECT_FALSE(flag);
}

TEST_F(Values, ACookieIsStoredAsItsTextWhereItDiffers) {
    Cookie cookie = cookieOf(1);
    EXPECT_TRUE(table.set_field(1, cookie));
    EXPECT_STREQ(cookie.asString(false).c_str(), table.getField(1, 0).c_str());
    EXPECT_TRUE(table.get_modified());
    table.clear_changed();
    EXPECT_TRUE(table.set_field(1, cookie));
    EXPECT_FALSE(table.get_modified());
}

TEST_F(Values, AreThoseOfTheRecordsThatASubclassShows) {
    struct Shifted : vekdb {
        using vekdb::vekdb;
        dbrecord* get_record(unsigned row) const override { return vekdb::get_record(row + 1); }
    } shifted(textColumns({"Cookie", "B"}));
    shifted.add_records(2);
    EXPECT_TRUE(shifted.set_field(0, 1, 7));
    EXPECT_FALSE(shifted.set_field(1, 1, 7));
    EXPECT_TRUE(shifted.set_field(0, cookieOf(1)));
    EXPECT_FALSE(shifted.set_field(1, cookieOf(1)));
    int number = 0;
    EXPECT_TRUE(shifted.in_field(0, 1, number));
    EXPECT_EQ(7, number);
    EXPECT_TRUE(shifted.vekdb::get_record(0)->is_blank());
}

TEST_F(Values, AreCopiedOutAsASubclassReadsThem) {
    struct Constant : vekdb {
        using vekdb::vekdb;
        LightweightString<char> getField(unsigned, unsigned) const override { return "t9"; }
    } constant(textColumns({"A"}));
    char buffer[3] = "##";
    bool flag = false;
    EXPECT_TRUE(constant.in_field(99, 99, buffer, 2));
    EXPECT_STREQ("t9", buffer);
    EXPECT_TRUE(constant.in_field(0, 0, flag));
    EXPECT_TRUE(flag);
}

TEST_F(Values, ACookieNeedsARowAndAColumn) {
    EXPECT_FALSE(table.set_field(2, cookieOf(1)));
    vekdb other(textColumns({"Reel"}));
    other.add_records(1);
    EXPECT_FALSE(other.set_field(0, cookieOf(1)));
}

}  // namespace
