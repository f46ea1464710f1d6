#include "vekdb/lines/field_unescaping.h"
#include "vekdb/lines/plain_line.h"
#include "vekdb/record/line_store.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "testing/lines.h"
#include "testing/random.h"
#include "vekdb/bytes/line_bytes.h"

namespace {

using testing_support::joined;
using testing_support::quotedLine;
using testing_support::Random;
using testing_support::Strings;

struct Scanned {
    std::size_t steps;
    Strings values;
    bool operator==(const Scanned&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Scanned& scanned) {
    return out << scanned.steps << " steps: " << quotedLine(scanned.values);
}

bool isSpace(char c) {
    return c == ' ' || (c >= 9 && c <= 13);
}
bool isControl(char c) {
    return static_cast<unsigned char>(c) < 32 || c == 127;
}

// The rules one by one, byte by byte, with no thought of speed.
Scanned byTheRules(const std::string& line) {
    Scanned found{0, {}};
    std::size_t at = 0;
    while (at < line.size()) {
        ++found.steps;
        if (isControl(line[at])) {
            ++at;
            continue;
        }
        std::string value;
        std::size_t keep = 0;
        bool quoted = line[at] == '"';
        if (quoted) ++at;
        while (at < line.size() && isSpace(line[at])) ++at;
        while (at < line.size() && value.size() < 4095) {
            const char c = line[at];
            const char next = at + 1 < line.size() ? line[at + 1] : '\0';
            if (c == '\\' && next == 'n') {
                value += '\n';
                keep = value.size();
                at += 2;
            } else if (c == '\\' && next == '\\') {
                value += "\\\\";
                at += 2;
            } else if (c == '"' && next == '"') {
                value += '"';
                at += 2;
            } else if (c == '"') {
                quoted = false;
                ++at;
            } else if (c == ',' && !quoted) {
                break;
            } else {
                value += c;
                ++at;
            }
        }
        if (at < line.size()) ++at;
        while (value.size() > keep && isSpace(value.back())) value.pop_back();
        found.values.push_back(value);
    }
    return found;
}

Scanned kept(const FieldUnescaper& scanner, const LineScan& scan) {
    Scanned found{scan.steps, {}};
    for (unsigned i = 0; i < scanner.count(); ++i) {
        found.values.emplace_back(scanner.value(i));
        EXPECT_EQ('\0', scanner.value(i).data()[scanner.value(i).size()]);
    }
    return found;
}

Scanned scan(const std::string& line) {
    FieldUnescaper scanner;
    std::vector<char> out(line.size() + 1);
    const LineScan found = scanner.scan(line, out.data());
    EXPECT_EQ(found.values, scanner.count());
    return kept(scanner, found);
}

Scanned scanInPlace(std::string line) {
    FieldUnescaper scanner;
    const LineScan found = scanner.scan(line, line.data());
    return kept(scanner, found);
}

struct Case {
    const char* name;
    std::string line;
    std::size_t steps;
    Strings values;
};

class LineScannerRules : public testing::TestWithParam<Case> {};

TEST_P(LineScannerRules, GivesValuesAndSteps) {
    const Scanned expected{GetParam().steps, GetParam().values};
    EXPECT_EQ(expected, byTheRules(GetParam().line));
    EXPECT_EQ(expected, scan(GetParam().line));
    EXPECT_EQ(expected, scanInPlace(GetParam().line));
}

const std::string x4094(4094, 'x');
const std::string x4095(4095, 'x');
const std::string x4096(4096, 'x');

INSTANTIATE_TEST_SUITE_P(
    All, LineScannerRules,
    testing::Values(Case{"PlainlyQuoted", "\"a\",\"\",\"b c\"", 3, {"a", "", "b c"}},
                    Case{"Unquoted", "a,,b", 3, {"a", "", "b"}},
                    Case{"CommaAtTheEndOpensNoValue", "a,", 1, {"a"}},
                    Case{"CommaAloneIsOneEmptyValue", ",", 1, {""}},
                    Case{"BlankBeforeTheQuoteDefeatsQuoting", "a, \"b,c\"", 3, {"a", "b", "c"}},
                    Case{"TabBeforeTheQuoteIsSkipped", "a,\t\"b,c\"", 3, {"a", "b,c"}},
                    Case{"TabBeforeACommaLeavesAnEmptyValue", "a,\t,b", 4, {"a", "", "b"}},
                    Case{"QuotedCommaTabQuoted", "\"a\",\t\"b\"", 3, {"a", "b"}},
                    Case{"QuotedStateEndsInsideTheValue", "\"a\"b\"c,d\"", 2, {"abc", "d"}},
                    Case{"DoubledQuoteInUnquotedValue", "a\"\"b", 1, {"a\"b"}},
                    Case{"SingleQuoteInUnquotedValueIsDropped", "a\"b", 1, {"ab"}},
                    Case{"BackslashNeverEscapesAQuote", "\"a\\\",b\"", 2, {"a\\", "b"}},
                    Case{"BackslashNIsALineFeed", "\"a\\nb\"", 1, {"a\nb"}},
                    Case{"DoubledBackslashStaysDoubled", "\"a\\\\nb\"", 1, {"a\\\\nb"}},
                    Case{"OtherBackslashesStay", "\"a\\tb\\\"", 1, {"a\\tb\\"}},
                    Case{"BackslashAtTheEndOfTheLine", "a\\", 1, {"a\\"}},
                    Case{"DoubledQuoteIsOneQuote", "\"a\"\"b,c\\n\"", 1, {"a\"b,c\n"}},
                    Case{"ThreeQuotesAreOne", "\"\"\"", 1, {"\""}},
                    Case{"OneQuoteIsAnEmptyValue", "\"", 1, {""}},
                    Case{"BlanksGoInsideTheQuotesToo", "\"  a b \t\"", 1, {"a b"}},
                    Case{"BlanksGoOutsideTheQuotes", "  a  ,  b", 2, {"a", "b"}},
                    Case{"BlanksBehindTheClosingQuoteGo", "\"a \" ,b", 2, {"a", "b"}},
                    Case{"OnlyBlanksAreAnEmptyValue", "\"   \"", 1, {""}},
                    Case{"BlankBehindTheLastCommaIsAValue", "a, ", 2, {"a", ""}},
                    Case{"EscapedLineFeedStopsTheTrim", "\"abc\\n\"", 1, {"abc\n"}},
                    Case{"BlanksBehindTheEscapedLineFeedGo", "\"abc\\n  \"", 1, {"abc\n"}},
                    Case{"EscapedLineFeedStopsTheLeadingSkip", "\"  \\n abc\"", 1, {"\n abc"}},
                    Case{"RawLineFeedIsTrimmed", "\"abc\n\"", 1, {"abc"}},
                    Case{"HighBytesAreNeitherSpaceNorControl",
                         "\x85"
                         "a\xA0",
                         1,
                         {"\x85"
                          "a\xA0"}},
                    Case{"ControlAloneIsAStepWithoutAValue", "\x01", 1, {}},
                    Case{"DeleteIsAControlToo",
                         "\x7F"
                         "abc",
                         2,
                         {"abc"}},
                    Case{"ControlInsideAValueStays",
                         "\"a\x01"
                         "b\"",
                         1,
                         {"a\x01"
                          "b"}},
                    Case{"ControlAtTheStartOfAQuotedValueStays",
                         "\"\x01"
                         "b\"",
                         1,
                         {"\x01"
                          "b"}},
                    Case{"CommaBetweenQuotesIsAValue", "\",\",\"b\"", 2, {",", "b"}},
                    Case{"CommaFirstInQuotes", "\"a\",\",\",\"b\"", 3, {"a", ",", "b"}},
                    Case{"NoLine", "", 0, {}}),
    [](const auto& info) { return info.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Cuts, LineScannerRules,
    testing::Values(
        Case{"FiveThousand", std::string(5000, 'x'), 2, {x4095, std::string(904, 'x')}},
        Case{"ClosingQuoteIsLost", quotedLine({x4095, "b"}), 3, {x4095, "", "b"}},
        Case{"FullValueAtTheEnd", quotedLine({"b", x4095}), 2, {"b", x4095}},
        Case{"OneMoreAtTheEnd", quotedLine({"b", x4096}), 3, {"b", x4095, ""}},
        Case{"CommaIsLost", x4095 + ",b", 2, {x4095, "b"}},
        Case{"LastByteIsLost", x4096, 1, {x4095}}, Case{"FullValueEndsTheLine", x4095, 1, {x4095}},
        Case{"DoubledBackslashMayGoOneFurther", x4094 + "\\\\", 1, {x4094 + "\\\\"}},
        Case{"BackslashNMayFillIt", x4094 + "\\n,b", 2, {x4094 + "\n", "b"}},
        Case{"WrongButOfTheRightCount", quotedLine({x4096, "b", "c"}), 3, {x4095, ",b", "c"}},
        Case{"TrimComesAfterTheCut", "a" + std::string(4095, ' ') + "b", 2, {"a", "b"}}),
    [](const auto& info) { return info.param.name; });

// Mostly what means something to the scanner.
std::string randomLine(Random& random, std::size_t longest) {
    std::string line;
    const std::size_t size = random.below(longest + 1);
    while (line.size() < size) {
        line += random.text(random.oneIn(3) ? "\"\",\\n \t\x01\x7F\xA0" : "abc ", 9);
    }
    return line;
}

std::string randomQuotedLine(Random& random, std::size_t most) {
    Strings values(1 + random.below(most));
    for (std::string& value : values) {
        value = random.text("ab, ", random.oneIn(9) ? 90 : 7);
    }
    std::string line = quotedLine(values);
    if (random.oneIn(3)) line[random.below(line.size())] = random.pick(std::string("\"\\,a\t "));
    return line;
}

TEST(FieldUnescaper, GivesWhatTheRulesGiveInPlaceAndElsewhere) {
    Random random;
    for (int i = 0; i < 4000; ++i) {
        const std::string line =
            i % 2 == 0 ? randomLine(random, i % 50 == 0 ? 9000 : 60) : randomQuotedLine(random, 20);
        const Scanned expected = byTheRules(line);
        ASSERT_EQ(expected, scan(line)) << line;
        ASSERT_EQ(expected, scanInPlace(line)) << line;
    }
}

TEST(FieldUnescaper, WritesNoFurtherThanOneByteBehindTheLine) {
    Random random;
    FieldUnescaper scanner;
    for (int i = 0; i < 500; ++i) {
        const std::string line = randomLine(random, 50);
        std::string text = line + "\nuntouched";
        scanner.scan({text.data(), line.size()}, text.data());
        ASSERT_EQ("untouched", text.substr(line.size() + 1));
    }
}

TEST(FieldUnescaper, KeepsAsManyValuesAsARecordHoldsButCountsAll) {
    std::string line(65538, ',');
    FieldUnescaper scanner;
    const LineScan found = scanner.scan(line, line.data());
    EXPECT_EQ(65538u, found.values);
    EXPECT_EQ(65538u, found.steps);
    EXPECT_EQ(65535u, scanner.count());
    EXPECT_EQ("", scanner.value(65534));
}

TEST(FieldUnescaper, ForgetsTheLineBefore) {
    FieldUnescaper scanner;
    std::string first = "a,b,c";
    std::string second = "d";
    scanner.scan(first, first.data());
    const LineScan found = scanner.scan(second, second.data());
    EXPECT_EQ((Scanned{1, {"d"}}), kept(scanner, found));
}

class QuotedLines : public testing::Test {
protected:
    // What the line is cut into where it is recognised; `behind` follows it in the text.
    bool recognises(const std::string& line, const std::string& behind = "\n") {
        text = line + behind;
        return quoted.recognise(text.data(), text.data() + text.size());
    }

    Strings cut() {
        std::vector<std::uint16_t> next(quoted.mostValues());
        const unsigned count = quoted.cutUp(text.data(), next.data());
        EXPECT_LE(count, quoted.mostValues());
        Strings values;
        const char* first = text.data() + 1;
        for (unsigned i = 0; i < count; ++i) {
            const std::size_t from = i == 0 ? 0 : next[i - 1];
            values.emplace_back(first + from, next[i] - from - LineSlices::quotedGap);
            EXPECT_STREQ(values.back().c_str(), first + from);
        }
        return values;
    }

    std::string text;
    PlainLine quoted;
};

TEST_F(QuotedLines, PlainlyQuotedValuesAreCutWhereTheyStand) {
    ASSERT_TRUE(recognises("\"a\",\"\",\"b c,d\""));
    EXPECT_EQ((Strings{"a", "", "b c,d"}), cut());
    ASSERT_TRUE(recognises("\"\""));
    EXPECT_EQ(Strings{""}, cut());
}

TEST_F(QuotedLines, OtherLinesAreLeftToTheScanner) {
    for (const char* line : {"",
                             "\"",
                             "a",
                             "a,b",
                             "\"a",
                             "a\"",
                             "\"a\",",
                             ",\"a\"",
                             "\"a\"b\"",
                             "\"a\"\"b\"",
                             "\"a\\b\"",
                             "\"a\tb\"",
                             "\"a\x01\"",
                             "\" a\"",
                             "\"a \"",
                             "\"a\",\" b\"",
                             "\"a \",\"b\"",
                             "\"a\", \"b\"",
                             "\"a\" ,\"b\"",
                             "\",\",\"b\"",
                             "\"a\",\",\"",
                             "\"\",\"",
                             "\"a\",b",
                             "\"a\"\r\"b\"",
                             "\"a\",\"b\" "}) {
        EXPECT_FALSE(recognises(line)) << line;
        EXPECT_FALSE(recognises(line, "")) << line;
    }
}

TEST_F(QuotedLines, ALineEndsAtItsEndOfLineOrWithTheText) {
    for (const char* end : {"\n", "\r\n", "\r", ""}) {
        ASSERT_TRUE(recognises("\"a\",\"b\"", end));
        EXPECT_EQ(text.size(), quoted.fullSize());
        EXPECT_EQ((Strings{"a", "b"}), cut());
    }
    ASSERT_TRUE(recognises("\"a\"", "\n\"b\"\n"));
    EXPECT_EQ(4u, quoted.fullSize());
}

TEST_F(QuotedLines, ALineWithANulIsNone) {
    EXPECT_FALSE(recognises(std::string("\"a\0b\"", 5)));
    EXPECT_FALSE(recognises("\"a\"", std::string("\0\n", 2)));
}

TEST_F(QuotedLines, EveryLengthAroundTheWordsOfTheScan) {
    for (std::size_t size = 0; size <= 200; ++size) {
        const Strings values{std::string(size, 'x'), "", "y", std::string(size / 3, 'z')};
        ASSERT_TRUE(recognises(quotedLine(values))) << size;
        ASSERT_EQ(values, cut()) << size;
        ASSERT_TRUE(recognises(quotedLine(values), "")) << size;
        ASSERT_EQ(values, cut()) << size;
    }
}

TEST_F(QuotedLines, TheLongestIsShorterThanAnyValueThatIsCut) {
    ASSERT_TRUE(recognises(quotedLine({std::string(PlainLine::longest - 2, 'x')})));
    EXPECT_FALSE(recognises(quotedLine({std::string(PlainLine::longest - 1, 'x')})));
    EXPECT_FALSE(recognises(quotedLine({x4094})));
}

TEST_F(QuotedLines, WhatIsRecognisedIsCutAsTheRulesSay) {
    Random random;
    unsigned recognised = 0;
    for (int i = 0; i < 6000; ++i) {
        const std::string line = randomQuotedLine(random, 1 + random.below(30));
        if (!recognises(line, random.oneIn(2) ? "\n\"a\",\"b\"\n" : "")) continue;
        ++recognised;
        ASSERT_EQ(byTheRules(line).values, cut()) << line;
    }
    EXPECT_GT(recognised, 100u);
}

TEST(LineBytes, BlocksAreSortedAlikeInWhateverRegisters) {
    Random random;
    for (int i = 0; i < 2000; ++i) {
        std::string text = random.text("\", a\x80\xFF", 256);
        text.resize(256, '"');
        if (i % 4 != 0) text[random.below(256)] = random.pick(std::string("\\\n\x1F\x01"));
        const auto blocks = static_cast<unsigned>(random.below(5));
        ByteMasks narrow[4];
        ByteMasks wide[4];
        const unsigned count = classifyBlocksNarrowly(text.data(), blocks, narrow);
        ASSERT_EQ(count, classifyBlocks(text.data(), blocks, wide));
        for (unsigned block = 0; block < count; ++block) {
            ASSERT_EQ(narrow[block].quotes, wide[block].quotes);
            ASSERT_EQ(narrow[block].commas, wide[block].commas);
            ASSERT_EQ(narrow[block].blanks, wide[block].blanks);
            ASSERT_EQ(narrow[block].others, wide[block].others);
        }
    }
}

void expectSortedAsBytes(const std::string& block) {
    const ByteMasks plain = PlainBytes::classify(block.data());
    for (const unsigned registerBytes : {16u, 32u, 64u}) {
        ClassifyBlocks* const classify = classifyBlocksIn(registerBytes);
        if (classify == nullptr) continue;
        ByteMasks found;
        ASSERT_EQ(1u, classify(block.data(), 1, &found));
        ASSERT_EQ(plain.quotes, found.quotes) << registerBytes;
        ASSERT_EQ(plain.commas, found.commas) << registerBytes;
        ASSERT_EQ(plain.blanks, found.blanks) << registerBytes;
        ASSERT_EQ(plain.others, found.others) << registerBytes;
    }
}

TEST(LineBytes, RegistersOfEveryWidthSortABlockAsBytesDo) {
    Random random;
    for (unsigned byte = 0; byte < 256; ++byte) {
        expectSortedAsBytes(std::string(64, static_cast<char>(byte)));
    }
    for (int i = 0; i < 3000; ++i) {
        std::string block(64, ' ');
        for (char& c : block) c = random.pick(std::string("\", a\x80\xFF\\\n\x1F\x01\x7F"));
        expectSortedAsBytes(block);
    }
    EXPECT_EQ(nullptr, classifyBlocksIn(8));
}

#if defined(__SSE2__)

TEST(LineBytes, WideAndPlainClassifyAlike) {
    Random random;
    for (int i = 0; i < 2000; ++i) {
        std::string block = random.bytes(64) + random.text("\"\\, a\n\x1F\x80", 64);
        block.resize(64, '"');
        const ByteMasks plain = PlainBytes::classify(block.data());
        const ByteMasks wide = WideBytes::classify(block.data());
        ASSERT_EQ(plain.quotes, wide.quotes);
        ASSERT_EQ(plain.commas, wide.commas);
        ASSERT_EQ(plain.blanks, wide.blanks);
        ASSERT_EQ(plain.others, wide.others);
    }
}

TEST(LineBytes, WideAndPlainRunsAreAlike) {
    Random random;
    for (int i = 0; i < 4000; ++i) {
        std::string text(random.below(70), 'a');
        for (std::size_t n = random.below(3); n > 0 && !text.empty(); --n) {
            text[random.below(text.size())] = random.pick(std::string("\",\\\n\r\t \xFF"));
        }
        const std::string exact(text.begin(), text.end());
        ASSERT_EQ(PlainBytes::writableRun(exact.data(), exact.size()),
                  WideBytes::writableRun(exact.data(), exact.size()));
        for (const bool quoted : {false, true}) {
            std::vector<char> plain(text.size());
            std::vector<char> wide(text.size());
            ASSERT_EQ(PlainBytes::copyRun(text.data(), text.size(), plain.data(), quoted),
                      WideBytes::copyRun(text.data(), text.size(), wide.data(), quoted));
            ASSERT_EQ(plain, wide);
        }
    }
}

#endif

}  // namespace
