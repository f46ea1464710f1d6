#include <gtest/gtest.h>

#include "formats/delimited/raw_cells.h"
#include "formats/delimited/text_quotes.h"

using vek::formats::hasQuotedCell;
using vek::formats::hasTextQuotes;
using vek::formats::RawCells;

namespace {

bool areText(std::string_view text) {
    return hasTextQuotes(text, '\t');
}

std::vector<std::string_view> cellsOf(std::string_view line, bool hasTextQuotes = false) {
    return RawCells(',', hasTextQuotes).take(line);
}

using Cells = std::vector<std::string_view>;

}  // namespace

TEST(TextQuotes, AreThoseOfCellsThatNoProgramWouldQuoteSo) {
    EXPECT_TRUE(areText("Name\tNote\nA\t\"Hello\" he said\n"));
    EXPECT_TRUE(areText("Name\tNote\nA\t5\" lens\n"));
    EXPECT_TRUE(areText("Name\tNote\r\nA\t\"open\r\nB\tx\r\n"));
    EXPECT_TRUE(areText("Name\tNote\n\"A\tx\nB\ty\"\n"));
    EXPECT_TRUE(areText("Name\tNote\nA\t\"\"\"\n"));
}

TEST(TextQuotes, AreNotThoseOfCellsThatNeedThem) {
    EXPECT_FALSE(areText("Name\tNote\nA\tx\n"));
    EXPECT_FALSE(areText("Name\tNote\n\"A\"\t\"x\"\n"));
    EXPECT_FALSE(areText("\"Name\"\tNote\nA\t\"Hello\" he said\n"));
    EXPECT_FALSE(areText("Name\tNote\nA\t\"5\"\" lens\"\nB\t\"Hello\" he said\n"));
    EXPECT_FALSE(areText("Name\tNote\nA\t\"two\nlines\"\nB\t\"Hello\" he said\n"));
    EXPECT_FALSE(areText("Name\tNote\nA\t\"a\ttab\"\nB\t5\" lens\n"));
    EXPECT_FALSE(hasTextQuotes("Name,Note\nA,5\" lens\n", ','));
}

TEST(TextQuotes, AreNotThoseAroundANameOfSeveralLines) {
    EXPECT_FALSE(areText("Name\t\"Scene\nno\"\tTake\nA1\t12\t1\n"));
    EXPECT_FALSE(areText("Name\t\"Scene\r\nno\"\tTake\r\nA1\t12\t1\r\n"));
    EXPECT_FALSE(areText("Name\t\"Scene\nno\"\tTake\n"));
    EXPECT_FALSE(areText("Name\t\"Scene\n\"\"no\"\"\"\tTake\nA1\t5\" lens\t1\n"));
    EXPECT_TRUE(areText("Name\t\"Note\nA\tx\"\nB\ty\n"));
    EXPECT_TRUE(areText("Name\t\"Note\nA\tx\n"));
}

TEST(TextQuotes, AreNotThoseAroundANameWithATabWhereRowsHaveACellForEachNameThen) {
    EXPECT_FALSE(areText("Name\t\"Scene\tno\"\n"));
    EXPECT_FALSE(areText("Name\t\"Scene\tno\"\nA\t12\n"));
    EXPECT_FALSE(areText("\"Scene\tno\"\n12\n"));
    EXPECT_TRUE(areText("Name\t\"Scene\tno\"\nA\t12\t1\n"));
    EXPECT_TRUE(areText("\"Scene\tno\"\n12\t1\n"));
}

TEST(TextQuotes, OfLongLinesAreLookedAtOnce) {
    std::string text = "a\tb\n";
    while (text.size() < (1 << 20)) text += "\"\t\"\t";
    EXPECT_FALSE(areText(text));
    text = "a";
    while (text.size() < (1 << 19)) text += "\ta";
    text += '\n';
    while (text.size() < (1 << 20)) text += "\"x\"\n";
    EXPECT_FALSE(areText(text));
}

TEST(TextQuotes, OpenCells) {
    EXPECT_TRUE(hasQuotedCell("a\tb\nx\t\"y\n", '\t'));
    EXPECT_FALSE(hasQuotedCell("a\tb\nx\t5\" y\n", '\t'));
}

TEST(RawCells, AreCutWhereTheyEnd) {
    EXPECT_EQ(cellsOf("a,b\r\n"), (Cells{"a", "b"}));
    EXPECT_EQ(cellsOf("\"a,\"\"b\"x,,c\n"), (Cells{"\"a,\"\"b\"x", "", "c"}));
    EXPECT_EQ(cellsOf("\"two\nlines\",b\n"), (Cells{"\"two\nlines\"", "b"}));
    EXPECT_EQ(cellsOf("a,\"open,b"), (Cells{"a", "\"open,b"}));
    EXPECT_EQ(cellsOf("\"a,b\"\n", true), (Cells{"\"a", "b\""}));
    EXPECT_EQ(cellsOf(""), (Cells{""}));
}

TEST(RawCells, AreThoseOfOnePieceAfterAnother) {
    const std::string wide(100, 'x');
    const std::string quoted = '"' + wide + '"';
    const std::string line = wide + ',' + quoted + '\n';
    RawCells cells(',', false);
    EXPECT_EQ(cells.take("\"a,b\",c\n"), (Cells{"\"a,b\"", "c"}));
    EXPECT_EQ(cells.take(line), (Cells{wide, quoted}));
    EXPECT_EQ(cells.take({}), (Cells{""}));
    EXPECT_EQ(cells.take("\""), (Cells{"\""}));
    EXPECT_EQ(cells.take("a"), (Cells{"a"}));
}

TEST(RawCells, ReadAsAReaderOfTheFileTakesThem) {
    RawCells cells(',', false);
    EXPECT_TRUE(cells.reads("a", "a"));
    EXPECT_TRUE(cells.reads("5\" lens", "5\" lens"));
    EXPECT_TRUE(cells.reads("\"a\"", "a"));
    EXPECT_TRUE(cells.reads("\"a\"\"b\"", "a\"b"));
    EXPECT_TRUE(cells.reads("\"\"\"\"", "\""));
    EXPECT_TRUE(cells.reads("\"\"", ""));
    EXPECT_TRUE(cells.reads("\"a\" b", "a b"));
    EXPECT_TRUE(cells.reads("\"a\"\"", "a\""));
    EXPECT_FALSE(cells.reads("\"a\"", "\"a\""));
    EXPECT_TRUE(RawCells('\t', true).reads("\"a\"", "\"a\""));
}
