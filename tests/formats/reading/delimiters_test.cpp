#include "formats/reading/delimiters.h"

#include <gtest/gtest.h>

using namespace vek::formats;

TEST(Delimiters, AreTheUsualOneWhereItMakesATable) {
    EXPECT_EQ(',', foundDelimiter("Name,Note\nA,1;2\nB,3;4\n", true, ','));
    EXPECT_EQ('\t', foundDelimiter("Name\tNote\nA\tx\n", true, '\t'));
    EXPECT_EQ(',', foundDelimiter("Name\nA\n", true, ','));
}

TEST(Delimiters, AreAnotherOneThatMakesATableOfTheLines) {
    EXPECT_EQ(';', foundDelimiter("Name;Note\nA;1,5\nB;2,5\n", true, ','));
    EXPECT_EQ('|', foundDelimiter("Name|Note\nA|x\n", true, ','));
    EXPECT_EQ('\t', foundDelimiter("Name\tNote\nA\tx\n", true, ','));
    EXPECT_EQ(',', foundDelimiter("Name,Note\nA,x\n", true, '\t'));
}

TEST(Delimiters, AreNotTheSemicolonsOfTimecodes) {
    EXPECT_EQ(',', foundDelimiter("01:00:00;00\n01:00:10;00\n", true, ','));
    EXPECT_FALSE(isDelimited("01:00:00;00\n01:00:10;00\n", true));
}

TEST(Delimiters, SeparateAsManyCellsInEachLine) {
    EXPECT_TRUE(isDelimited("A;B\n1;2\n", true));
    EXPECT_FALSE(isDelimited("A;B\n1\n", true));
    EXPECT_FALSE(isDelimited("A;B\n", true));
    EXPECT_TRUE(hasSeveralCells("\nA;B\n", ';'));
    EXPECT_FALSE(hasSeveralCells("\nA;B\n", ','));
}

TEST(Delimiters, AreShownByLinesBehindOneWithoutAny) {
    EXPECT_EQ(3u, cellsBehindFirstLine("Day 12\nA,B,C\n1,2,3\n"));
    EXPECT_EQ(0u, cellsBehindFirstLine("A,B,C\n1,2,3\n"));
}

TEST(Delimiters, AreSaidByALineInFrontOfTheHeading) {
    EXPECT_EQ(';', delimiterOfLine("sep=;"));
    EXPECT_EQ('\t', delimiterOfLine("SEP=\t"));
    for (const char* line : {"sep=", "sep=x", "sep=;;", "sep;", "sep=\""}) {
        EXPECT_FALSE(delimiterOfLine(line)) << line;
    }
}

TEST(Delimiters, HaveNames) {
    for (const char* name : {"comma", "semicolon", "tab", "pipe"}) {
        ASSERT_TRUE(delimiterNamed(name));
        EXPECT_EQ(name, delimiterName(*delimiterNamed(name)));
    }
    EXPECT_FALSE(delimiterNamed("colon"));
    EXPECT_EQ("\":\"", delimiterName(':'));
}
