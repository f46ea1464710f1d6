#include <vekdb/host/text_util.h>

#include "testing/print_strings.h"
#include "testing/random.h"

#include <gtest/gtest.h>

#include <cctype>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

using testing_support::Random;
using S = LightweightString<char>;
using W = LightweightString<wchar_t>;

TEST(AsciiTables, AgreeWithTheCLocaleOnSevenBitCharacters) {
    for (int c = 0; c < 128; ++c) {
        EXPECT_EQ(isAsciiSpace(char(c)), std::isspace(c) != 0) << c;
        EXPECT_EQ(isAsciiControl(char(c)), std::iscntrl(c) != 0) << c;
        EXPECT_EQ(isAsciiDigit(char(c)), std::isdigit(c) != 0) << c;
        EXPECT_EQ(asciiLower(char(c)), char(std::tolower(c))) << c;
    }
}

TEST(AsciiTables, OtherBytesHaveNoClassAndNoCase) {
    for (int c = 128; c < 256; ++c) {
        EXPECT_FALSE(isAsciiSpace(char(c)) || isAsciiControl(char(c)) || isAsciiDigit(char(c)));
        EXPECT_EQ(asciiLower(char(c)), char(c));
    }
}

TEST(BoolText, IsTrueOrFalse) {
    EXPECT_EQ(BoolAsString(true), "true");
    EXPECT_EQ(BoolAsString(false), "false");
}

TEST(BoolText, ReadsBackWhatIsWritten) {
    for (const bool value : {true, false}) {
        bool read = !value;
        EXPECT_TRUE(BoolFromString(BoolAsString(value), read));
        EXPECT_EQ(read, value);
    }
}

TEST(BoolText, ReadsTheShortFormsInAnyCase) {
    for (const char* text : {"true", "TRUE", "True", "t", "T", "1"}) {
        bool value = false;
        EXPECT_TRUE(BoolFromString(text, value)) << text;
        EXPECT_TRUE(value) << text;
    }
    for (const char* text : {"false", "FALSE", "f", "F", "0"}) {
        bool value = true;
        EXPECT_TRUE(BoolFromString(text, value)) << text;
        EXPECT_FALSE(value) << text;
    }
}

TEST(BoolText, RefusesOtherTextsAndLeavesTheValue) {
    for (const char* text : {"", "yes", "tr", "truex", " true", "10", "2"}) {
        for (bool value : {true, false}) {
            const bool before = value;
            EXPECT_FALSE(BoolFromString(text, value)) << text;
            EXPECT_EQ(value, before);
        }
    }
}

TEST(UIntFromString, ReadsDecimalDigits) {
    EXPECT_EQ(UIntFromString("0", 7), 0u);
    EXPECT_EQ(UIntFromString("4294967295", 7), 4294967295u);
    EXPECT_EQ(UIntFromString(" \t12 ", 7), 12u);
    EXPECT_EQ(UIntFromString("007", 1), 7u);
}

TEST(UIntFromString, AnythingElseGivesTheDefault) {
    for (const char* text : {"", " ", "-1", "+1", "4294967296", "99999999999999999999", "12a",
                             "a12", "1 2", "0x10", "1.5"}) {
        EXPECT_EQ(UIntFromString(text, 0), 0u) << text;
        EXPECT_EQ(UIntFromString(text, 42), 42u) << text;
    }
}

TEST(StringFromInteger, IsTheDecimalText) {
    EXPECT_EQ(StringFromInteger(0), "0");
    EXPECT_EQ(StringFromInteger(-12), "-12");
    EXPECT_EQ(StringFromInteger(INT_MAX), "2147483647");
    EXPECT_EQ(StringFromInteger(INT_MIN), "-2147483648");
}

TEST(StringFromDouble, IsWhatPrintfGivesInTheCLocale) {
    Random random;
    const auto check = [](double number) {
        char expected[400];
        std::snprintf(expected, sizeof expected, "%.8lf", number);
        EXPECT_EQ(StringFromDouble(number), expected);
    };
    using Limits = std::numeric_limits<double>;
    for (const double number :
         {0.0, -0.0, 0.5, 1.0 / 3, -25.0, 29.97, 1e300, -1e300, 1e-300, 5e-9, 1.5e-8,
          123456789.123456785, Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN(),
          Limits::max(), Limits::lowest()}) {
        check(number);
    }
    for (int i = 0; i < 500; ++i) {
        check(std::ldexp(random.between(INT_MIN, INT_MAX - 1), random.between(-60, 60)));
    }
}

TEST(NumberText, IsTheSameUnderALocaleWithADecimalComma) {
    const char* const name = std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
    EXPECT_EQ(StringFromDouble(0.5), "0.50000000");
    EXPECT_EQ(parseDouble("2.5"), 2.5);
    EXPECT_EQ(parseDouble("2,5"), 2);
    if (name != nullptr) {
        std::setlocale(LC_NUMERIC, "C");
    }
}

TEST(ParseInt, ReadsAsAtoiDoes) {
    for (const char* text : {"", "0", "12abc", " \t\n\v\f\r42", "-7", "+7", "-", "+", "+-3", "--3",
                             "abc", "0x1F", "2147483647", "-2147483648", "007", "1 2", "- 3"}) {
        EXPECT_EQ(parseInt(text), std::atoi(text)) << text;
    }
}

TEST(ParseInt, OutOfRangeGivesTheNearestInt) {
    EXPECT_EQ(parseInt("2147483648"), INT_MAX);
    EXPECT_EQ(parseInt("-2147483649"), INT_MIN);
    EXPECT_EQ(parseInt(std::string(100, '9')), INT_MAX);
    EXPECT_EQ(parseInt("-" + std::string(100, '9')), INT_MIN);
    EXPECT_EQ(parseInt("1099511627776"), INT_MAX);
}

TEST(ParseInt, StopsAtTheEndOfTheView) {
    EXPECT_EQ(parseInt(std::string_view("123456", 3)), 123);
    EXPECT_EQ(parseInt(std::string_view()), 0);
}

TEST(ParseDouble, ReadsAsAtofDoes) {
    for (const char* text : {"",
                             "0",
                             "1.5",
                             ".5",
                             "5.",
                             ".",
                             "-.25",
                             "+2.5",
                             "+-1",
                             "--1",
                             "-+1",
                             "-abc",
                             "-nothing",
                             " \t\n3.75xyz",
                             "1e3",
                             "1E-3",
                             "1e",
                             "1e+",
                             "1ex",
                             "abc",
                             "-",
                             "+",
                             "0x1F",
                             "0x1.8p3",
                             "0x",
                             "0xg",
                             "0x.8",
                             "0x.",
                             "-0x10",
                             "1e308",
                             "1e-308",
                             "4.9e-324",
                             "2.2250738585072014e-308",
                             "inf",
                             "-inf",
                             "INFINITY",
                             "infx",
                             "-0",
                             "123456789012345678901234567890",
                             "0.1",
                             "1,5",
                             "1 2",
                             "1e309",
                             "-1e309",
                             "1e-400",
                             "-1e-400",
                             "1e99999999999",
                             "1e-99999999999",
                             "0e99999",
                             "0x1p5000",
                             "0x1p-5000",
                             "0.00000000000000000001e330",
                             "100000000000000000000000000000e-400"}) {
        const double expected = std::strtod(text, nullptr);
        const double actual = parseDouble(text);
        EXPECT_EQ(actual, expected) << text;
        EXPECT_EQ(std::signbit(actual), std::signbit(expected)) << text;
    }
    EXPECT_TRUE(std::isnan(parseDouble("nan")));
}

TEST(ParseDouble, ReadsBackEveryNumberWrittenInFull) {
    Random random;
    for (int i = 0; i < 500; ++i) {
        const double number =
            std::ldexp(random.between(INT_MIN, INT_MAX - 1), random.between(-900, 900));
        char text[64];
        std::snprintf(text, sizeof text, "%.17g", number);
        ASSERT_EQ(parseDouble(text), number) << text;
    }
}

TEST(ParseDouble, StopsAtTheEndOfTheView) {
    EXPECT_EQ(parseDouble(std::string_view("1.2345", 3)), 1.2);
    EXPECT_EQ(parseDouble(std::string_view()), 0);
    EXPECT_EQ(parseDouble(std::string_view("0x12", 2)), 0);
}

TEST(IsEssentiallyEmpty, IsTrueForWhiteSpaceOnly) {
    EXPECT_TRUE(isEssentiallyEmpty(S()));
    EXPECT_TRUE(isEssentiallyEmpty(S(" \t\n\v\f\r")));
    EXPECT_FALSE(isEssentiallyEmpty(S(" a ")));
    EXPECT_FALSE(isEssentiallyEmpty(S("\x1A")));
    EXPECT_FALSE(isEssentiallyEmpty(S("\x01")));
    EXPECT_FALSE(isEssentiallyEmpty(S("\xC2\xA0")));
    EXPECT_FALSE(isEssentiallyEmpty(S("\x85")));
}

TEST(ToLower, LowersSevenBitLettersInPlace) {
    S text("Reel A-1 \xC3\x89");
    const char* place = text.c_str();
    toLower(text);
    EXPECT_EQ(text, "reel a-1 \xC3\x89");
    EXPECT_EQ(text.c_str(), place);
    S null;
    toLower(null);
    EXPECT_TRUE(null.empty());
}

TEST(ToLower, LeavesOtherHoldersOfTheText) {
    S text("REEL");
    const S other(text);
    toLower(text);
    EXPECT_EQ(text, "reel");
    EXPECT_EQ(other, "REEL");
}

TEST(ToLower, SharesATextThatHasNoCapitals) {
    S text("reel");
    const S other(text);
    toLower(text);
    EXPECT_EQ(text.c_str(), other.c_str());
}

TEST(UTF8, DecodesEachLengthOfCharacter) {
    const wchar_t expected[] = {'a', 0xE9, 0x20AC, 0x1F3AC, 0x10FFFF, 0};
    EXPECT_EQ(fromUTF8("a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x8E\xAC\xF4\x8F\xBF\xBF"), W(expected));
    EXPECT_TRUE(fromUTF8(S()).empty());
}

TEST(UTF8, BadBytesBecomeTheReplacementCharacter) {
    EXPECT_EQ(fromUTF8("a\x80z"), W(L"a\xFFFDz"));
    EXPECT_EQ(fromUTF8("\xC3"), W(L"\xFFFD"));
    EXPECT_EQ(fromUTF8("\xC3z"), W(L"\xFFFDz"));
    EXPECT_EQ(fromUTF8("\xFF\xFE"), W(L"\xFFFD\xFFFD"));
    EXPECT_EQ(fromUTF8("\xC0\xAF"), W(L"\xFFFD\xFFFD"));
    EXPECT_EQ(fromUTF8("\xE0\x80\xAF"), W(L"\xFFFD\xFFFD\xFFFD"));
    EXPECT_EQ(fromUTF8("\xED\xA0\x80"), W(L"\xFFFD\xFFFD\xFFFD"));
    EXPECT_EQ(fromUTF8("\xF4\x90\x80\x80"), W(L"\xFFFD\xFFFD\xFFFD\xFFFD"));
    EXPECT_EQ(fromUTF8("\xF0\x9F\x8E"), W(L"\xFFFD\xFFFD\xFFFD"));
}

TEST(UTF8, EveryCodePointReadsBack) {
    for (char32_t c = 1; c <= 0x10FFFF; c += c < 0x3000 ? 1 : 61) {
        if (c >= 0xD800 && c <= 0xDFFF) {
            continue;
        }
        const wchar_t text[] = {wchar_t(c), 'x', 0};
        ASSERT_EQ(fromUTF8(toUTF8(text)), W(text)) << unsigned(c);
    }
}

TEST(UTF8, WhatIsNoCodePointIsWrittenAsTheReplacementCharacter) {
    const wchar_t text[] = {wchar_t(0xD800), wchar_t(0x110000), wchar_t(-1), 0};
    EXPECT_EQ(toUTF8(text), "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(UTF8, AnyBytesDecode) {
    Random random;
    for (int i = 0; i < 1000; ++i) {
        const std::string bytes = random.bytes(30);
        const W wide = fromUTF8(S(std::string_view(bytes)));
        ASSERT_LE(wide.length(), bytes.size());
        ASSERT_EQ(fromUTF8(toUTF8(wide)), wide);
    }
}

TEST(PathToUTF8, GivesTheBytesOfAPath) {
    S bytes;
    EXPECT_TRUE(pathToUTF8(L"/logs/\xE9.txt", bytes));
    EXPECT_EQ(bytes, "/logs/\xC3\xA9.txt");
}

TEST(PathToUTF8, RefusesWhatNoFileCanBeCalled) {
    S bytes("before");
    const wchar_t surrogate[] = {'a', wchar_t(0xD800), 0};
    const wchar_t tooGreat[] = {wchar_t(0x110000), 0};
    EXPECT_FALSE(pathToUTF8(W(), bytes));
    EXPECT_FALSE(pathToUTF8(surrogate, bytes));
    EXPECT_FALSE(pathToUTF8(tooGreat, bytes));
    EXPECT_FALSE(pathToUTF8(W(L"a\0b", 3), bytes));
    EXPECT_EQ(bytes, "before");
}

TEST(PathFromBytes, AnyNameComesBackByteForByte) {
    std::string every = "/logs/";
    for (int byte = 1; byte < 256; ++byte) {
        every += static_cast<char>(byte);
    }
    for (const std::string& name :
         {every, std::string("caf\xE9.vek"), std::string("caf\xC3\xA9.vek"),
          std::string("\xED\xB2\x80"), std::string("\xF0\x9F\x8E"), std::string("\xC3")}) {
        S bytes;
        EXPECT_TRUE(pathToUTF8(pathFromBytes(name.c_str()), bytes));
        EXPECT_EQ(bytes, name.c_str());
    }
}

TEST(PathFromBytes, TakesCharactersAsTheyAreAndOtherBytesOneByOne) {
    EXPECT_EQ(pathFromBytes("\xC3\xA9"), L"\xE9");
    const wchar_t units[] = {wchar_t(0xDCE9), wchar_t(0xDC80), 0};
    EXPECT_EQ(pathFromBytes("\xE9\x80"), units);
}

TEST(PathToUTF8, RefusesASecondWayToNameAFile) {
    S bytes("before");
    const wchar_t twoBytes[] = {wchar_t(0xDCC3), wchar_t(0xDCA9), 0};
    EXPECT_FALSE(pathToUTF8(twoBytes, bytes));
    EXPECT_EQ(bytes, "before");
}

TEST(WStringFromAscii, WidensEachByte) {
    EXPECT_EQ(Quor::WStringFromAscii("log.txt"), W(L"log.txt"));
    EXPECT_EQ(Quor::WStringFromAscii("\xE9"), W(L"\xE9"));
    EXPECT_TRUE(Quor::WStringFromAscii("").empty());
    EXPECT_TRUE(Quor::WStringFromAscii(nullptr).empty());
}
