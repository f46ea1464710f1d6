#include "formats/comparing/timecode_forms.h"

#include <gtest/gtest.h>

#include <string>

#include "testing/logs.h"

using testing_support::logOf;
using namespace vek::formats;

namespace {

// Rows of one cell, so many times.
std::string rows(const std::string& cell, int count) {
    std::string text;
    for (int i = 0; i < count; ++i) text += cell + ",x\n";
    return text;
}

// What is told of the second log's first column beside the first one's.
std::string told(const std::string& a, const std::string& b) {
    const Log first = logOf("Start,Note\n" + a, "a.csv");
    const Log second = logOf("Start,Note\n" + b, "b.csv");
    const auto other = TimecodeForms(first, 0).others(second, 0, first.name);
    return other ? worded(second.name, *other) : "";
}

}  // namespace

TEST(TimecodeForms, OfOneKindAreNotTold) {
    EXPECT_EQ(told("01:00:00:00,x\n", "02:00:00:00,x\n"), "");
    EXPECT_EQ(told("1:00:00:00,x\n", "10:00:00:00,x\n"), "");
    EXPECT_EQ(told("text,x\n", "01:00:00:00,x\n"), "");
    EXPECT_EQ(told("12,x\n", "01000000,x\n"), "");
    EXPECT_EQ(told(",x\n", "01:00:00:00,x\n"), "");
}

TEST(TimecodeForms, AreToldByTheFirstThatIsOtherwiseAndHowManyMoreThereAre) {
    const std::string one =
        told("01:00:00:00,x\n", rows("02:00:00:00", 2) + rows("01:00:00;00", 1));
    EXPECT_EQ(one,
              "b.csv:4:Start: \"01:00:00;00\", expected timecodes as in a.csv, such as "
              "\"01:00:00:00\"; the two are not taken for one");
    EXPECT_EQ(told("01:00:00:00,x\n", rows("01:00:00;00", 3)),
              "b.csv:2:Start: \"01:00:00;00\", expected timecodes as in a.csv, such as "
              "\"01:00:00:00\"; the two are not taken for one; 2 more like it");
}

TEST(TimecodeForms, OfALargeLogAreThoseOfItsFirstTenThousand) {
    EXPECT_EQ(told("01:00:00:00,x\n", rows("01:00:00:00", 10000) + rows("01:00:00;00", 1)), "");
    EXPECT_NE(told("01:00:00:00,x\n", rows("01:00:00:00", 9999) + rows("01:00:00;00", 1)), "");
    EXPECT_NE(told("01:00:00:00,x\n", rows("01:00:00;00", 10001))
                  .find("; 9999 more like it among the 10000 looked at"),
              std::string::npos);
    const std::string late = rows("01:00:00:00", 10000) + rows("01:00:00;00", 1);
    EXPECT_NE(told(late, "01:00:00;00,x\n"), "");
}
