#include <vekdb/host/strxcmp.h>

#include "testing/random.h"

#include <gtest/gtest.h>

#include <strings.h>
#include <string>

using testing_support::Random;

namespace {

// Each text comes before the next one, and nothing is alike.
void expectAscending(std::initializer_list<const char*> texts) {
    for (auto a = texts.begin(); a != texts.end(); ++a) {
        for (auto b = texts.begin(); b != texts.end(); ++b) {
            EXPECT_EQ(strxcmp(*a, *b), a < b ? -1 : a > b ? 1 : 0) << *a << " | " << *b;
        }
    }
}

int sign(int n) {
    return n < 0 ? -1 : n > 0 ? 1 : 0;
}

}  // namespace

TEST(Strxcmp, OrdersRunsOfDigitsByTheirValue) {
    expectAscending({"", "2", "10", "10A", "10B", "11", "100"});
    expectAscending({"Scene 1 Take 2", "Scene 1 Take 10", "Scene 2 Take 1", "Scene 12 Take 1"});
    expectAscending({"A1B2", "A1B10", "A2", "A10B1", "B1"});
}

TEST(Strxcmp, RunsOfAnyLengthKeepTheirValue) {
    expectAscending(
        {"9", "99999999999999999999", "100000000000000000000", "100000000000000000001"});
}

TEST(Strxcmp, LeadingZerosCountOnlyAsATieBreak) {
    expectAscending({"001", "01", "1", "002", "2"});
    EXPECT_EQ(strxcmp("a01b", "a1a"), 1);
    EXPECT_EQ(strxcmp("000", "0"), 1);
}

TEST(Strxcmp, IgnoresCase) {
    EXPECT_EQ(strxcmp("Reel", "rEEL"), 0);
    EXPECT_EQ(strxcmp("a2", "A10"), -1);
    EXPECT_EQ(strxcmp("B", "a"), 1);
}

TEST(Strxcmp, NullIsTheEmptyText) {
    const char* const null = nullptr;
    EXPECT_EQ(strxcmp(null, null), 0);
    EXPECT_EQ(strxcmp(null, ""), 0);
    EXPECT_EQ(strxcmp(null, "a"), -1);
    EXPECT_EQ(strxcmp("a", null), 1);
}

TEST(Strxcmp, PrefixComesFirst) {
    expectAscending({"abc", "abc ", "abcd"});
    expectAscending({"10", "10 ", "10.5"});
}

TEST(Strxcmp, BytesPastSevenBitsComeLastAndHaveNoCase) {
    EXPECT_EQ(strxcmp("z", "\xC3\xA9"), -1);
    EXPECT_EQ(strxcmp("\xC9", "\xE9"), -1);
}

TEST(Strxcmp, ViewsCompareAsTheirTextsDo) {
    EXPECT_EQ(strxcmp(std::string_view("10xx", 2), std::string_view("9")), 1);
    EXPECT_EQ(strxcmp(std::string_view(), std::string_view("")), 0);
}

TEST(Strxcmp, IsZeroExactlyWhereCaseIsAllThatDiffers) {
    Random random;
    for (int i = 0; i < 5000; ++i) {
        const std::string a = random.text("aA01b ", 5);
        const std::string b = random.text("aA01b ", 5);
        ASSERT_EQ(strxcmp(a.c_str(), b.c_str()) == 0, strcasecmp(a.c_str(), b.c_str()) == 0)
            << a << " | " << b;
    }
}

TEST(Strxcmp, AgreesWithPlainComparisonWhereThereAreNoDigits) {
    Random random;
    for (int i = 0; i < 5000; ++i) {
        const std::string a = random.text("abAB _[z", 6);
        const std::string b = random.text("abAB _[z", 6);
        ASSERT_EQ(strxcmp(a.c_str(), b.c_str()), sign(strcasecmp(a.c_str(), b.c_str())))
            << a << " | " << b;
    }
}

TEST(Strxcmp, IsAStrictWeakOrder) {
    Random random;
    const auto draw = [&] { return random.text("aB0129 /:", 5); };
    for (int i = 0; i < 20000; ++i) {
        const std::string a = draw();
        const std::string b = draw();
        const std::string c = draw();
        const int ab = strxcmp(a.c_str(), b.c_str());
        const int bc = strxcmp(b.c_str(), c.c_str());
        ASSERT_EQ(ab, -strxcmp(b.c_str(), a.c_str())) << a << " | " << b;
        if (ab <= 0 && bc <= 0) {
            ASSERT_EQ(strxcmp(a.c_str(), c.c_str()), std::min(ab, bc))
                << a << " | " << b << " | " << c;
        }
    }
}

TEST(CompareAsRead, FindsTextsAlikeThatStrxcmpTellsApartByTheirZeros) {
    EXPECT_EQ(compareAsRead("01", "1"), 0);
    EXPECT_EQ(compareAsRead("A007b", "a7B"), 0);
    EXPECT_EQ(compareAsRead("0", "000"), 0);
    EXPECT_EQ(compareAsRead("01", "2"), -1);
    EXPECT_EQ(compareAsRead("010", "9"), 1);
    EXPECT_EQ(compareAsRead("1", "01 "), -1);
}

TEST(CompareAsRead, IsTheOrderOfStrxcmpBetweenTextsThatItTellsApart) {
    Random random;
    for (int i = 0; i < 20000; ++i) {
        const std::string a = random.text("aB0129 /:", 5);
        const std::string b = random.text("aB0129 /:", 5);
        const int order = compareAsRead(a, b);
        ASSERT_EQ(order, -compareAsRead(b, a)) << a << " | " << b;
        if (order == 0) continue;
        ASSERT_EQ(order, strxcmp(a.c_str(), b.c_str())) << a << " | " << b;
    }
}
