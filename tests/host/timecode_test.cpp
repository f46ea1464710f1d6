#include <vekdb/host/timecode.h>

#include "testing/print_strings.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string punctuated(const char* text) {
    return time_def(text, label_timecode).get_punctuated_str().c_str();
}

std::string database(const char* text) {
    return time_def(text, label_timecode).get_database_str().c_str();
}

TEST(TimeDef, LabelOfTimecodesIsSix) {
    EXPECT_EQ(label_timecode, 6);
    EXPECT_EQ(time_def("01020304", label_t(6)).get_punctuated_str(), "01:02:03:04");
}

TEST(TimeDef, ReadsPunctuatedText) {
    EXPECT_EQ(punctuated("01:02:03:04"), "01:02:03:04");
    EXPECT_EQ(database("01:02:03:04"), "01020304");
}

TEST(TimeDef, ReadsEightDigits) {
    EXPECT_EQ(punctuated("01020304"), "01:02:03:04");
    EXPECT_EQ(database("01020304"), "01020304");
}

TEST(TimeDef, ReadsEverySeparator) {
    EXPECT_EQ(punctuated("01.02.03.04"), "01:02:03:04");
    EXPECT_EQ(punctuated("01,02,03,04"), "01:02:03:04");
    EXPECT_EQ(punctuated("01;02;03:04"), "01:02:03:04");
}

TEST(TimeDef, SemicolonBeforeTheFramesMeansDropFrame) {
    EXPECT_EQ(punctuated("01:02:03;04"), "01:02:03;04");
    EXPECT_EQ(punctuated("01;02;03;04"), "01:02:03;04");
    EXPECT_EQ(database("01:02:03;04"), "01020304;");
    EXPECT_TRUE(time_def("01:02:03;04", label_timecode).isDropFrame());
    EXPECT_FALSE(time_def("01:02:03.04", label_timecode).isDropFrame());
}

TEST(TimeDef, SemicolonBehindTheDigitsMeansDropFrame) {
    EXPECT_EQ(punctuated("01020304;"), "01:02:03;04");
    EXPECT_EQ(database("01020304;"), "01020304;");
}

TEST(TimeDef, EitherFormGivesTheOtherAndItself) {
    for (const char* text : {"00:00:00:00", "23:59:59;29", "99:59:59:99", "see reel 4", "1:2"}) {
        const std::string person = punctuated(text);
        const std::string compact = database(text);
        EXPECT_EQ(punctuated(compact.c_str()), person);
        EXPECT_EQ(database(person.c_str()), compact);
        EXPECT_EQ(punctuated(person.c_str()), person);
        EXPECT_EQ(database(compact.c_str()), compact);
        EXPECT_EQ(person, text);
    }
}

TEST(TimeDef, HoursMayBeOneDigit) {
    EXPECT_EQ(punctuated("1:02:03:04"), "01:02:03:04");
    EXPECT_EQ(database("1:02:03;04"), "01020304;");
}

TEST(TimeDef, NothingGivesNothing) {
    EXPECT_EQ(punctuated(""), "");
    EXPECT_EQ(database(""), "");
    EXPECT_EQ(punctuated(nullptr), "");
    EXPECT_EQ(database(nullptr), "");
    EXPECT_FALSE(time_def("", label_timecode).isTimecode());
}

TEST(TimeDef, OtherTextComesBackAsItCame) {
    const char* const texts[] = {
        "see reel 4",  "01:02:03",    "01:02:03:04:05", "1020304",        "010203045",
        "01020304:",   "01020304;;",  "01:02:03:4",     "001:02:03:04",   "01:2:03:04",
        "0a:02:03:04", "01-02-03-04", " 01:02:03:04",   "01:02:03:04 ",   ":",
        "1",           "1:",          "-1:02:03:04",    "01:02:03:0\xB2", "01:60:00:00",
        "01:00:60:00", "01600000"};
    for (const char* text : texts) {
        EXPECT_EQ(punctuated(text), text);
        EXPECT_EQ(database(text), text);
        EXPECT_FALSE(time_def(text, label_timecode).isTimecode()) << text;
    }
}

TEST(TimeDef, OtherLabelsAreNotRead) {
    EXPECT_EQ(time_def("01020304", label_none).get_punctuated_str(), "01020304");
    EXPECT_EQ(time_def("01:02:03:04", label_t(5)).get_database_str(), "01:02:03:04");
}

TEST(TimeDef, BufferFormsAgreeWithTheStrings) {
    for (const char* text : {"01:02:03:04", "01020304;", "1.02.03.04", "note", ""}) {
        char buffer[time_def::maxForm];
        EXPECT_EQ(time_def::punctuatedForm(text, buffer), punctuated(text));
        EXPECT_EQ(time_def::databaseForm(text, buffer), database(text));
    }
}

}  // namespace
