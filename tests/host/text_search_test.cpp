#include <vekdb/host/text_search.h>

#include "host/text_finder.h"

#include "testing/print_strings.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

using TextSearch::Criteria;
using TextSearch::Criterion;
using TextSearch::Finder;

bool found(const char* text, const char* term, unsigned flags = 0) {
    return TextSearch::match(text, Criteria(Criterion(term, TextSearch::eMatchMethod(1))), flags);
}

TEST(TextSearch, MethodOneFindsTheTermAnywhere) {
    EXPECT_TRUE(found("slow dolly in", "dolly"));
    EXPECT_TRUE(found("dolly", "dolly"));
    EXPECT_TRUE(found("dolly in", "dolly"));
    EXPECT_TRUE(found("slow dolly", "dolly"));
    EXPECT_FALSE(found("slow doll", "dolly"));
    EXPECT_FALSE(found("", "dolly"));
}

TEST(TextSearch, CaseIsIgnored) {
    EXPECT_TRUE(found("Slow DOLLY in", "dolly"));
    EXPECT_TRUE(found("slow dolly in", "DoLLy"));
    EXPECT_TRUE(found("a001", "A0"));
}

TEST(TextSearch, OnlyTheLettersAToZHaveACase) {
    EXPECT_FALSE(found("@", "`"));
    EXPECT_FALSE(found("[", "{"));
    EXPECT_FALSE(found("\xC4", "\xE4"));
    EXPECT_FALSE(found("1", "\x11"));
    EXPECT_TRUE(found("\xC3\xA4 b", "\xC3\xA4 B"));
}

TEST(TextSearch, FlagOneMatchesCase) {
    EXPECT_FALSE(found("Dolly", "dolly", 1));
    EXPECT_TRUE(found("slow dolly", "dolly", 1));
    EXPECT_FALSE(found("slow dolly", "Dolly", 1));
}

TEST(TextSearch, FlagTwoTakesTimecodeSeparatorsForEqual) {
    for (const char* term : {"01:00:05", "01;00;05", "01.00.05", "01,00,05", "01:00;05"}) {
        EXPECT_TRUE(found("x01:00:05:12", term, 2)) << term;
        EXPECT_TRUE(found("x01;00,05.12", term, 2)) << term;
    }
    EXPECT_FALSE(found("01-00-05", "01:00:05", 2));
    EXPECT_FALSE(found("01;00;05", "01:00:05", 0));
    EXPECT_FALSE(found("01;00;05", "01:00:05", 1));
}

TEST(TextSearch, TermOfSeparatorsAloneIsFoundUnderFlagTwo) {
    EXPECT_TRUE(found("01:00:05", ";", 2));
    EXPECT_TRUE(found("a.,b", ":;", 2));
    EXPECT_FALSE(found("a.b", ":;", 2));
    EXPECT_FALSE(found("01<00/05", ":", 2));
    EXPECT_FALSE(found("01-00-05(8)*+", ":", 2));
}

TEST(TextSearch, FlagsAddUp) {
    EXPECT_TRUE(found("A 01;00", "A 01:00", 3));
    EXPECT_FALSE(found("a 01;00", "A 01:00", 3));
    EXPECT_TRUE(found("a 01;00", "A 01:00", 2));
}

TEST(TextSearch, UnknownFlagsHaveNoMeaning) {
    EXPECT_TRUE(found("DOLLY", "dolly", 0xFFFFFFFCu));
    EXPECT_FALSE(found("DOLLY", "dolly", 0xFFFFFFFDu));
}

TEST(TextSearch, BlankOrNoTermIsEmptyAndMatchesAll) {
    for (const char* term : {"", " ", " \t\n\v\f\r "}) {
        const Criteria criteria{Criterion(term)};
        EXPECT_TRUE(criteria.empty());
        EXPECT_TRUE(criteria.getCriterion(0).empty());
        EXPECT_TRUE(TextSearch::match("anything", criteria, 0));
        EXPECT_TRUE(TextSearch::match("", criteria, 3));
    }
    EXPECT_TRUE(Criteria().empty());
    EXPECT_TRUE(TextSearch::match("anything", Criteria(), 0));
    EXPECT_FALSE(Criteria(Criterion("\xA0")).empty());
}

TEST(TextSearch, BlanksOfATermCount) {
    EXPECT_TRUE(found("slow dolly", "w d"));
    EXPECT_FALSE(found("slowdolly", "w d"));
    EXPECT_FALSE(found("dolly", "dolly "));
}

TEST(TextSearch, AllCriteriaMustMatch) {
    Criteria criteria{Criterion("dolly")};
    criteria.add(Criterion("slow"));
    EXPECT_EQ(criteria.size(), 2u);
    EXPECT_TRUE(TextSearch::match("Slow dolly", criteria, 0));
    EXPECT_FALSE(TextSearch::match("fast dolly", criteria, 0));
    EXPECT_FALSE(TextSearch::match("slow pan", criteria, 0));
}

TEST(TextSearch, OneCriterionIsCriteria) {
    const std::vector<Criteria> query{Criterion("dolly"), Criterion("")};
    EXPECT_EQ(query[0].size(), 1u);
    EXPECT_EQ(query[0].getCriterion(0).text(), "dolly");
    EXPECT_TRUE(query[1].empty());
}

TEST(TextSearch, EmptyCriterionAmongOthersDemandsNothing) {
    Criteria criteria{Criterion("")};
    EXPECT_TRUE(criteria.empty());
    criteria.add(Criterion("dolly"));
    EXPECT_FALSE(criteria.empty());
    EXPECT_TRUE(TextSearch::match("dolly", criteria, 0));
    EXPECT_FALSE(TextSearch::match("pan", criteria, 0));
}

TEST(TextSearch, CriterionKeepsItsText) {
    const Criteria criteria{Criterion("Dolly IN", TextSearch::eMatchMethod(1))};
    EXPECT_EQ(criteria.getCriterion(0).text(), "Dolly IN");
    EXPECT_EQ(criteria.getCriterion(0).method(), TextSearch::eMatchContains);
}

TEST(TextSearch, CriterionPastTheEndIsEmpty) {
    const Criteria criteria{Criterion("a")};
    EXPECT_TRUE(criteria.getCriterion(1).empty());
    EXPECT_TRUE(criteria.getCriterion(0xFFFF).text().empty());
    EXPECT_TRUE(Criteria().getCriterion(0).empty());
}

TEST(TextSearch, MethodZeroComparesTheWholeText) {
    const Criteria criteria{Criterion("a:1", TextSearch::eMatchWhole)};
    EXPECT_TRUE(TextSearch::match("A:1", criteria, 0));
    EXPECT_FALSE(TextSearch::match("a:12", criteria, 0));
    EXPECT_FALSE(TextSearch::match("a:", criteria, 0));
    EXPECT_FALSE(TextSearch::match("A:1", criteria, 1));
    EXPECT_TRUE(TextSearch::match("a;1", criteria, 3));
}

TEST(TextSearch, MethodTwoComparesTheBeginning) {
    const Criteria criteria{Criterion("a1", TextSearch::eMatchBegins)};
    EXPECT_TRUE(TextSearch::match("A123", criteria, 0));
    EXPECT_TRUE(TextSearch::match("a1", criteria, 0));
    EXPECT_FALSE(TextSearch::match("ba1", criteria, 0));
    EXPECT_FALSE(TextSearch::match("a", criteria, 0));
    EXPECT_FALSE(TextSearch::match("A123", criteria, 1));
}

TEST(TextSearch, EveryKindOfTextIsAccepted) {
    const Criteria criteria{Criterion("b")};
    EXPECT_TRUE(TextSearch::match(LightweightString<char>("abc"), criteria, 0));
    EXPECT_TRUE(TextSearch::match(std::string_view("abc"), criteria, 0));
    EXPECT_TRUE(TextSearch::match("abc", criteria, 0));
    EXPECT_FALSE(TextSearch::match(static_cast<const char*>(nullptr), criteria, 0));
    EXPECT_FALSE(TextSearch::match(std::string_view(), criteria, 0));
}

// A text in a block of exactly its size, so that a sanitizer sees any look past
// either end.
class ExactText {
public:
    explicit ExactText(std::string_view text) : bytes_(new char[text.size()]), size_(text.size()) {
        text.copy(bytes_.get(), size_);
    }
    std::string_view view() const { return std::string_view(bytes_.get(), size_); }

private:
    std::unique_ptr<char[]> bytes_;
    std::size_t size_;
};

TEST(TextSearch, FindsAtEveryPlaceOfEveryLength) {
    for (std::size_t length = 1; length <= 140; ++length) {
        for (const std::string term : {"Q", "qZ", "zqj", "q:1.z", "kjqvxzqqwertyuiop"}) {
            const Criteria criteria{Criterion(term.c_str())};
            for (std::size_t at = 0; at + term.size() <= length; ++at) {
                std::string text(length, 'e');
                text.replace(at, term.size(), term);
                EXPECT_TRUE(TextSearch::match(ExactText(text).view(), criteria, 0))
                    << term << " in " << text;
            }
            const ExactText without(std::string(length, 'e'));
            EXPECT_FALSE(TextSearch::match(without.view(), criteria, 0));
        }
    }
}

std::string randomText(std::mt19937& random, std::size_t size) {
    static constexpr char kBytes[] = {'a', 'A', 'b', ':', ';', '.', ',', '*', '1', '\xC1', '\0'};
    std::string text(size, ' ');
    for (char& c : text) {
        c = kBytes[random() % sizeof kBytes];
    }
    return text;
}

TEST(TextSearch, WideStepsAgreeWithPlainOnes) {
    const unsigned seed = 20240607;
    std::mt19937 random(seed);
    unsigned hits = 0;
    for (int round = 0; round < 60000; ++round) {
        const std::string term = randomText(random, 1 + random() % 4);
        const ExactText text(randomText(random, random() % 150));
        const Criterion::Anchors anchors = TextSearch::anchorsOf(term);
        const TextSearch::Needle needle{term, anchors, static_cast<unsigned>(random() % 4)};
        const bool plain = TextSearch::containsPlain(text.view(), needle);
        const bool bySixteen = TextSearch::containsBySixteen(text.view(), needle);
        const bool bySixtyFour = TextSearch::canSearchBySixtyFour()
                                     ? TextSearch::containsBySixtyFour(text.view(), needle)
                                     : TextSearch::contains(text.view(), needle);
        ASSERT_EQ(bySixteen, plain) << "seed " << seed << " round " << round;
        ASSERT_EQ(bySixtyFour, plain) << "seed " << seed << " round " << round;
        hits += plain;
    }
    EXPECT_GT(hits, 6000u);
    EXPECT_LT(hits, 54000u);
}

TEST(Finder, FindsWhatTheCriteriaFind) {
    const unsigned seed = 20240608;
    std::mt19937 random(seed);
    unsigned hits = 0;
    for (int round = 0; round < 20000; ++round) {
        const std::string term = randomText(random, 1 + random() % 4);
        const Criteria criteria{Criterion({term.data(), term.size()})};
        const auto flags = static_cast<unsigned>(random() % 8);
        const std::optional<Finder> finder = Finder::of(criteria, flags);
        ASSERT_TRUE(finder);
        const ExactText text(randomText(random, random() % 20));
        const bool isThere = TextSearch::match(text.view(), criteria, flags);
        ASSERT_EQ(isThere, finder->finds(text.view())) << "seed " << seed << " round " << round;
        hits += isThere;
    }
    EXPECT_GT(hits, 2000u);
    EXPECT_LT(hits, 18000u);
}

TEST(Finder, IsForOneTermThatMayStandAnywhere) {
    const Criterion term("dolly");
    EXPECT_TRUE(Finder::of(Criteria(term), 0));
    EXPECT_FALSE(Finder::of(Criteria(), 0));
    EXPECT_FALSE(Finder::of(Criteria(Criterion(" ")), 0));
    EXPECT_FALSE(Finder::of(Criteria(Criterion("dolly", TextSearch::eMatchWhole)), 0));
    EXPECT_FALSE(Finder::of(Criteria(Criterion("dolly", TextSearch::eMatchBegins)), 0));
    Criteria two(term);
    two.add(Criterion("track"));
    EXPECT_FALSE(Finder::of(two, 0));
}

}  // namespace
