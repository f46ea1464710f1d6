#include "formats/text/text_lines.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

using namespace vek::formats;
using testing::ElementsAre;

namespace {

std::vector<std::string> linesOf(std::string_view text, LineWalk::Ends ends = LineWalk::Ends::any) {
    LineWalk walk(text, ends);
    std::vector<std::string> lines;
    std::string_view line;
    while (walk.next(line)) lines.emplace_back(line);
    return lines;
}

LineEnd endOf(std::initializer_list<LineEnd> ends) {
    LineEndsSeen seen;
    for (LineEnd end : ends) seen.add(end);
    return seen.kind();
}

}  // namespace

TEST(TextLines, EndWithAFeedAReturnOrBoth) {
    EXPECT_THAT(linesOf("a\nb\rc\r\n\nd"), ElementsAre("a", "b", "c", "", "d"));
    EXPECT_THAT(linesOf(""), ElementsAre());
    EXPECT_THAT(linesOf("\r\r\n"), ElementsAre("", ""));
}

TEST(TextLines, OfATableFileEndWithAFeedAlone) {
    EXPECT_THAT(linesOf("a\rb\r\nc\n", LineWalk::Ends::lineFeed), ElementsAre("a\rb", "c"));
}

TEST(TextLines, AreNumberedAndLeaveWhatStandsBehind) {
    LineWalk walk("one\r\ntwo\nthree");
    std::string_view line;
    ASSERT_TRUE(walk.next(line) && walk.next(line));
    EXPECT_EQ(2u, walk.number());
    EXPECT_EQ("three", walk.rest());
    EXPECT_TRUE(walk.sawCr());
    EXPECT_FALSE(walk.sawLoneReturns());
}

TEST(LineEnds, AreBothWhereAnyLineHadBothElseThatOfTheFirst) {
    EXPECT_EQ(LineEnd::lf, endOf({}));
    EXPECT_EQ(LineEnd::lf, endOf({LineEnd::lf, LineEnd::cr}));
    EXPECT_EQ(LineEnd::cr, endOf({LineEnd::cr, LineEnd::lf}));
    EXPECT_EQ(LineEnd::crlf, endOf({LineEnd::lf, LineEnd::crlf, LineEnd::lf}));
    EXPECT_STREQ("\r\n", bytesOf(LineEnd::crlf));
}

TEST(TextLines, AreSplitIntoPieces) {
    EXPECT_THAT(split("", ','), ElementsAre(""));
    EXPECT_THAT(split("a,,b,", ','), ElementsAre("a", "", "b", ""));
    EXPECT_EQ("a b", trimmed(" \ta b\r\n"));
    EXPECT_EQ("", trimmed(" \t"));
    EXPECT_TRUE(sameText("Scene", "sCENE"));
    EXPECT_FALSE(sameText("Scene", "Scenes"));
}
