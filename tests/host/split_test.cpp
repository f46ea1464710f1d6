#include <vekdb/host/split.h>

#include "testing/print_strings.h"
#include "testing/random.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

using S = LightweightString<char>;
using testing::ElementsAre;
using testing_support::Random;

namespace {

std::vector<std::string> split(const char* text, char separator = ',',
                               unsigned flags = Quor::splitKeepsQuotedWhole) {
    std::vector<S> pieces;
    const unsigned count = Quor::splitIf(S(text), separator, pieces, flags);
    EXPECT_EQ(count, pieces.size());
    std::vector<std::string> texts;
    for (const S& piece : pieces) {
        texts.emplace_back(piece.view());
    }
    return texts;
}

}  // namespace

TEST(SplitIf, KeepsEmptyInnerPieces) {
    EXPECT_THAT(split("a,b,,c"), ElementsAre("a", "b", "", "c"));
    EXPECT_THAT(split("a,,b"), ElementsAre("a", "", "b"));
}

TEST(SplitIf, QuotedSeparatorDoesNotSplit) {
    EXPECT_THAT(split("\"x,y\",z"), ElementsAre("\"x,y\"", "z"));
    EXPECT_THAT(split("\"x,y\",z", ',', 0), ElementsAre("\"x", "y\"", "z"));
}

TEST(SplitIf, SeparatorAtAnEndGivesNoEmptyPiece) {
    EXPECT_THAT(split(",a,"), ElementsAre("a"));
    EXPECT_THAT(split("a,"), ElementsAre("a"));
    EXPECT_THAT(split(",a"), ElementsAre("a"));
    EXPECT_THAT(split(",,"), ElementsAre(""));
    EXPECT_THAT(split("a,,"), ElementsAre("a", ""));
    EXPECT_THAT(split(",12,A"), ElementsAre("12", "A"));
}

TEST(SplitIf, LoneSeparatorGivesOneEmptyPiece) {
    EXPECT_THAT(split(","), ElementsAre(""));
    EXPECT_THAT(split(",", ',', 3), ElementsAre(""));
}

TEST(SplitIf, EmptyTextGivesOneNullPiece) {
    std::vector<S> pieces;
    EXPECT_EQ(Quor::splitIf(S(), ',', pieces, 2), 1u);
    EXPECT_TRUE(pieces.at(0).empty());
}

TEST(SplitIf, TextWithoutSeparatorIsOnePieceThatSharesIt) {
    const S text("abc");
    std::vector<S> pieces;
    Quor::splitIf(text, ',', pieces, 2);
    ASSERT_EQ(pieces.size(), 1u);
    EXPECT_EQ(pieces[0].c_str(), text.c_str());
}

TEST(SplitIf, AppendsToWhatIsThere) {
    std::vector<S> pieces{S("first")};
    EXPECT_EQ(Quor::splitIf(S("a,b"), ',', pieces, 2), 3u);
    EXPECT_EQ(pieces[0], "first");
    EXPECT_EQ(pieces[2], "b");
}

TEST(SplitIf, MaySplitAStringOfTheOutputItself) {
    std::vector<S> pieces{S("a,b,c")};
    EXPECT_EQ(Quor::splitIf(pieces[0], ',', pieces, 2), 4u);
    EXPECT_EQ(pieces[0], "a,b,c");
    EXPECT_EQ(pieces[3], "c");
}

TEST(SplitIf, QuoteAfterABackslashDoesNotQuote) {
    EXPECT_THAT(split("a\\\"b,c"), ElementsAre("a\\\"b", "c"));
    EXPECT_THAT(split("\"a\\\",b\",c"), ElementsAre("\"a\\\",b\"", "c"));
    EXPECT_THAT(split("a\\\\\"b,c"), ElementsAre("a\\\\\"b", "c"));
}

TEST(SplitIf, OpenQuoteHoldsToTheEnd) {
    EXPECT_THAT(split("a,\"b,c"), ElementsAre("a", "\"b,c"));
}

TEST(SplitIf, QuoteAsSeparatorIsNeverQuoted) {
    EXPECT_THAT(split("a\"b\"c", '"'), ElementsAre("a", "b", "c"));
}

TEST(SplitIf, FlagOneDropsEmptyInnerPieces) {
    EXPECT_THAT(split("a,,b,,,c", ',', 1), ElementsAre("a", "b", "c"));
    EXPECT_THAT(split(",,", ',', 1), ElementsAre());
}

TEST(SplitIf, FlagFourKeepsTheSeparatorThatEndsAPiece) {
    EXPECT_THAT(split("a,b,,c", ',', 4), ElementsAre("a,", "b,", ",", "c"));
    EXPECT_THAT(split("a,b,,c", ',', 5), ElementsAre("a,", "b,", "c"));
    EXPECT_THAT(split(",a,", ',', 4), ElementsAre("a,"));
}

TEST(SplitIf, PiecesWithSeparatorsMakeUpTheText) {
    Random random;
    for (int round = 0; round < 500; ++round) {
        std::string text("x");
        text += random.text("ab,\"\\", 30);
        std::string joined;
        for (const std::string& piece : split(text.c_str(), ',', 2 | 4)) {
            joined += piece;
        }
        ASSERT_EQ(joined, text);
    }
}
