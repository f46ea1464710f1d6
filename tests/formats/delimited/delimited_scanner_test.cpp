#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "formats/delimited/delimited_scanner.h"

using testing::ElementsAre;
using vek::formats::DelimitedScanner;
using vek::formats::LineEnd;

namespace {

// A text in memory, which the scanner changes where quotes hide something.
class Scanned {
public:
    explicit Scanned(std::string text, char separator = ',',
                     DelimitedScanner::Quotes quotes = DelimitedScanner::Quotes::respected)
        : text_(std::move(text)),
          scanner(text_.data(), text_.data() + text_.size(), separator, quotes) {}

    std::vector<std::string> next() {
        const std::vector<std::string_view>& cells = scanner.takeRecord();
        return {cells.begin(), cells.end()};
    }

private:
    std::string text_;

public:
    DelimitedScanner scanner;
};

}  // namespace

TEST(DelimitedScanner, TakesTheCellsOfOneRecordAfterTheOther) {
    Scanned text("a,b\n1,\n");
    EXPECT_THAT(text.next(), ElementsAre("a", "b"));
    EXPECT_EQ(text.scanner.line(), 2u);
    EXPECT_THAT(text.next(), ElementsAre("1", ""));
    EXPECT_TRUE(text.scanner.atEnd());
}

TEST(DelimitedScanner, KeepsBlanksAndWhatStandsBesideQuotes) {
    Scanned text(" a , \"b\"\n");
    EXPECT_THAT(text.next(), ElementsAre(" a ", " \"b\""));
}

TEST(DelimitedScanner, TakesSeparatorsLineEndsAndDoubledQuotesWithinQuotes) {
    Scanned text("\"a,b\",\"c\nd\",\"e\"\"f\"\nx\n");
    EXPECT_THAT(text.next(), ElementsAre("a,b", "c\nd", "e\"f"));
    EXPECT_EQ(text.scanner.line(), 3u);
    EXPECT_THAT(text.next(), ElementsAre("x"));
}

TEST(DelimitedScanner, TellsTheFirstCellThatGoesOnBehindItsClosingQuote) {
    Scanned text("a,\"b\nc\"d,\"e\"f\n\"x\",\"y\"\n");
    EXPECT_THAT(text.next(), ElementsAre("a", "b\ncd", "ef"));
    ASSERT_TRUE(text.scanner.hasStrayText());
    const DelimitedScanner::StrayText stray = text.scanner.takeStrayText();
    EXPECT_EQ(stray.cell, 1u);
    EXPECT_EQ(stray.openedOn, 1u);
    EXPECT_EQ(stray.closedOn, 2u);
    EXPECT_THAT(text.next(), ElementsAre("x", "y"));
    EXPECT_FALSE(text.scanner.hasStrayText());
}

TEST(DelimitedScanner, TakesQuotesForOrdinaryBytesWhereTheyAre) {
    Scanned text("\"a\tb\"\n", '\t', DelimitedScanner::Quotes::ordinary);
    EXPECT_THAT(text.next(), ElementsAre("\"a", "b\""));
}

TEST(DelimitedScanner, TellsTheLineOfAQuoteThatIsNeverClosed) {
    Scanned text("a\nb,\"c\nd");
    text.next();
    EXPECT_THAT(text.next(), ElementsAre("b", "c\nd"));
    EXPECT_EQ(text.scanner.openQuoteLine(), 2u);
    EXPECT_TRUE(text.scanner.atEnd());
}

TEST(DelimitedScanner, ReadsEveryKindOfLineEnd) {
    Scanned both("a\r\nb\r\n");
    both.next();
    both.next();
    EXPECT_EQ(both.scanner.lineEnd(), LineEnd::crlf);
    EXPECT_FALSE(both.scanner.sawLoneReturns());
    Scanned lone("a\rb\r");
    EXPECT_THAT(lone.next(), ElementsAre("a"));
    EXPECT_THAT(lone.next(), ElementsAre("b"));
    EXPECT_EQ(lone.scanner.lineEnd(), LineEnd::cr);
    EXPECT_TRUE(lone.scanner.sawLoneReturns());
}

TEST(DelimitedScanner, TakesALastLineThatHasNoEnd) {
    Scanned text("a,b");
    EXPECT_THAT(text.next(), ElementsAre("a", "b"));
    EXPECT_TRUE(text.scanner.atEnd());
}
