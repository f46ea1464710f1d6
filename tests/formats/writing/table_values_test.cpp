#include "formats/writing/table_values.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using namespace vek::formats;

TEST(TableValues, ComeBackAsWhatATableFileMakesOfThem) {
    EXPECT_EQ("as it is", afterTableFile("as it is"));
    EXPECT_EQ("blanks", afterTableFile(" blanks "));
    EXPECT_EQ("one\ntwo", afterTableFile("one\\ntwo"));
    EXPECT_EQ("ab", afterTableFile("a\rb"));
}

TEST(TableValues, LoseWhatTheyDoNotComeBackWith) {
    EXPECT_EQ(TableLoss::none, tableFileLoss("as it is"));
    EXPECT_EQ(TableLoss::none, tableFileLoss("one\ntwo"));
    EXPECT_EQ(TableLoss::none, tableFileLoss("C:\\clips"));
    EXPECT_EQ(TableLoss::blanks, tableFileLoss(" blanks"));
    EXPECT_EQ(TableLoss::carriageReturns, tableFileLoss("a\rb"));
    EXPECT_EQ(TableLoss::backslash, tableFileLoss("C:\\new"));
    EXPECT_EQ(TableLoss::other, tableFileLoss(std::string_view("a\0b", 3)));
}

// A row that is said to be kept loses nothing in any of its values.
TEST(TableValues, AreSurelyKeptTogetherOnlyWhereEachIs) {
    const std::string longest(longestTableValue, 'x');
    const std::string longer(longestTableValue + 1, 'x');
    const std::vector<std::string_view> kept = {"", "one", "two words", "a \"quote\"", longest};
    EXPECT_TRUE(areSurelyKept(kept.data(), kept.size()));
    for (std::string_view lost :
         {std::string_view(" x"), std::string_view("x\t"), std::string_view("a\rb"),
          std::string_view("a\\nb"), std::string_view("a\0b", 3), std::string_view(longer)}) {
        for (std::size_t place = 0; place < kept.size(); ++place) {
            std::vector<std::string_view> values = kept;
            values[place] = lost;
            EXPECT_FALSE(areSurelyKept(values.data(), values.size())) << place;
        }
    }
}

// Of values that stand one behind the other in memory, as those of a line that was read.
TEST(TableValues, OfALineThatWasReadAreLookedAtTogether) {
    const auto isKept = [](std::string_view line) {
        std::vector<std::string_view> values;
        for (std::size_t at = 0; at <= line.size();) {
            const std::size_t end = std::min(line.find('\0', at), line.size());
            values.push_back(line.substr(at, end - at));
            at = end + 1;
        }
        return areSurelyKept(values.data(), values.size());
    };
    EXPECT_TRUE(isKept(std::string_view("one\0two\0three\0", 13)));
    EXPECT_FALSE(isKept(std::string_view("one\0t\\wo\0three\0", 14)));
    EXPECT_FALSE(isKept(std::string_view("one\0two \0three\0", 14)));
}
