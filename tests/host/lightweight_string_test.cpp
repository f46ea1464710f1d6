#include <vekdb/host/lightweight_string.h>

#include <vekdb/host/exceptions.h>
#include "testing/failing_allocator.h"
#include "testing/print_strings.h"
#include "testing/random.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <type_traits>
#include <vector>

using testing_support::CountingAllocator;
using testing_support::failEachAllocation;
using testing_support::Random;
using S = LightweightString<char>;
using W = LightweightString<wchar_t>;

static_assert(sizeof(S) == sizeof(void*));
static_assert(sizeof(W) == sizeof(void*));
static_assert(sizeof(wchar_t) == 4);
static_assert(!std::is_convertible_v<S, const char*>);
static_assert(std::is_convertible_v<const char*, S>);
static_assert(!std::is_convertible_v<std::string_view, S>);
static_assert(std::is_constructible_v<S, std::string_view>);
static_assert(std::is_nothrow_copy_constructible_v<S>);
static_assert(std::is_nothrow_move_constructible_v<S>);

template <class T, class U>
concept CanAppend = requires(T text, U what) {
    text += what;
};
static_assert(!CanAppend<S, char>);
static_assert(!CanAppend<W, wchar_t>);
static_assert(CanAppend<S, int>);
static_assert(CanAppend<S, unsigned>);

TEST(LightweightString, DefaultIsNullAndReadsAsTheEmptyText) {
    const S text;
    EXPECT_TRUE(text.empty());
    EXPECT_EQ(text.length(), 0u);
    EXPECT_EQ(text.capacity(), 0u);
    EXPECT_STREQ(text.c_str(), "");
    EXPECT_EQ(text.view(), "");
}

TEST(LightweightString, FromAnEmptyOrANullTextIsNull) {
    CountingAllocator counting;
    for (const S& text : {S(""), S(nullptr), S("abc", 0), S(nullptr, 3), S(std::string_view())}) {
        EXPECT_TRUE(text.empty());
        EXPECT_EQ(text.length(), 0u);
        EXPECT_STREQ(text.c_str(), "");
    }
}

TEST(LightweightString, NullStringTakesNoMemory) {
    CountingAllocator counting;
    {
        S text("");
        text.assign("abc", 0);
        text.append("", 0);
        text.resizeFor(0);
        text = S::join(nullptr, 0, "", 0);
    }
    EXPECT_EQ(counting.allocations(), 0);
}

TEST(LightweightString, FromTextAndCountTakesThatManyCharacters) {
    EXPECT_EQ(S("abcdef", 3), S("abc"));
    EXPECT_EQ(S("a\0b", 3).length(), 3u);
    EXPECT_EQ(W(L"abcdef", 2), W(L"ab"));
}

TEST(LightweightString, WideTextHoldsAnyCodePoint) {
    const wchar_t characters[] = {0x1F3AC, L'x', 0};
    EXPECT_EQ(W(characters).length(), 2u);
    EXPECT_EQ(W(characters).c_str()[0], wchar_t(0x1F3AC));
}

TEST(LightweightString, RecordAndCharactersAreOneBlock) {
    CountingAllocator counting;
    {
        const S text("abcde");
        EXPECT_EQ(counting.liveBlocks(), 1);
        EXPECT_GE(counting.lastSize(), 8 + sizeof(void*) + 3 * sizeof(unsigned));
    }
    EXPECT_EQ(counting.liveBlocks(), 0);
}

TEST(LightweightString, CopySharesTheRecord) {
    CountingAllocator counting;
    {
        const S text("reel");
        const S copy(text);
        S assigned;
        assigned = text;
        EXPECT_EQ(copy.c_str(), text.c_str());
        EXPECT_EQ(assigned.c_str(), text.c_str());
        EXPECT_EQ(counting.allocations(), 1);
    }
    EXPECT_EQ(counting.liveBlocks(), 0);
}

TEST(LightweightString, RecordLivesUntilTheLastHolderGoes) {
    S outer;
    {
        const S inner("scene 12");
        outer = inner;
    }
    EXPECT_EQ(outer, "scene 12");
}

TEST(LightweightString, ReassigningReleasesTheOldRecord) {
    CountingAllocator counting;
    S text("one");
    text = S("two");
    EXPECT_EQ(counting.liveBlocks(), 1);
    text = S();
    EXPECT_EQ(counting.liveBlocks(), 0);
}

TEST(LightweightString, SelfAssignmentKeepsTheText) {
    S text("take 4");
    const S& alias = text;
    text = alias;
    EXPECT_EQ(text, "take 4");
}

TEST(LightweightString, MoveLeavesTheNullString) {
    S from("abc");
    const S to(std::move(from));
    EXPECT_EQ(to, "abc");
    EXPECT_TRUE(from.empty());
}

TEST(LightweightString, CreateImplGrowsToThePowerOfTwoAboveTheLength) {
    EXPECT_EQ(S::createImpl(1, true).capacity(), 2u);
    EXPECT_EQ(S::createImpl(2, true).capacity(), 4u);
    EXPECT_EQ(S::createImpl(5, true).capacity(), 8u);
    EXPECT_EQ(S::createImpl(7, true).capacity(), 8u);
    EXPECT_EQ(S::createImpl(8, true).capacity(), 16u);
    EXPECT_EQ(W::createImpl(5, true).capacity(), 8u);
}

TEST(LightweightString, CreateImplWithoutGrowthTakesOneMoreThanTheLength) {
    EXPECT_EQ(S::createImpl(5, false).capacity(), 6u);
    EXPECT_EQ(S::createImpl(8, false).capacity(), 9u);
}

TEST(LightweightString, CreateImplTerminatesAndHasTheLength) {
    const S text = S::createImpl(5, true);
    EXPECT_EQ(text.length(), 5u);
    EXPECT_EQ(text.c_str()[5], 0);
}

TEST(LightweightString, CreateImplOfNothingIsNull) {
    EXPECT_TRUE(S::createImpl(0, true).empty());
    EXPECT_TRUE(S::createImpl(0, false).empty());
}

TEST(LightweightString, ResizeForZeroReleasesTheRecord) {
    CountingAllocator counting;
    S text("abc");
    text.resizeFor(0);
    EXPECT_TRUE(text.empty());
    EXPECT_EQ(counting.liveBlocks(), 0);
}

TEST(LightweightString, ResizeForShorterKeepsTextAndCapacityWhenUnshared) {
    S text("abcdefgh");
    const char* place = text.c_str();
    text.resizeFor(3);
    EXPECT_EQ(text, "abc");
    EXPECT_EQ(text.capacity(), 16u);
    EXPECT_EQ(text.c_str(), place);
}

TEST(LightweightString, ResizeForUpToTheCapacityStaysInPlace) {
    S text("abcde");
    const char* place = text.c_str();
    text.resizeFor(7);
    EXPECT_EQ(text.c_str(), place);
    EXPECT_EQ(text.length(), 7u);
    text.resizeFor(8);
    EXPECT_EQ(text.capacity(), 16u);
    EXPECT_EQ(text.c_str()[8], 0);
}

TEST(LightweightString, ResizeForOfASharedRecordLeavesTheOtherHolder) {
    S text("abcdef");
    const S other(text);
    text.resizeFor(2);
    EXPECT_EQ(other, "abcdef");
    EXPECT_EQ(text.length(), 2u);
    EXPECT_NE(text.c_str(), other.c_str());
}

TEST(LightweightString, AssignInPlaceReusesTheRecord) {
    S text("abcdefg");
    const char* place = text.c_str();
    text.assign("xyz");
    EXPECT_EQ(text, "xyz");
    EXPECT_EQ(text.c_str(), place);
    EXPECT_EQ(text.capacity(), 8u);
}

TEST(LightweightString, AssignToASharedRecordLeavesTheOtherHolder) {
    S text("abcdefg");
    const S other(text);
    text.assign("xyz");
    EXPECT_EQ(text, "xyz");
    EXPECT_EQ(other, "abcdefg");
}

TEST(LightweightString, AssignOfNullGivesTheNullString) {
    S text("abc");
    text.assign(nullptr);
    EXPECT_TRUE(text.empty());
    text.assign("abc");
    text.assign(nullptr, 5);
    EXPECT_TRUE(text.empty());
}

TEST(LightweightString, AssignOfItsOwnTextIsSafe) {
    S text("abcdefg");
    text.assign(text.c_str() + 2);
    EXPECT_EQ(text, "cdefg");
    text.assign(text.c_str() + 1, 3);
    EXPECT_EQ(text, "def");
    const S shared(text);
    text.assign(text.c_str() + 1);
    EXPECT_EQ(text, "ef");
    EXPECT_EQ(shared, "def");
}

TEST(LightweightString, AppendOneCharacterToSevenMakesARecordOfSixteen) {
    S text("1234567");
    ASSERT_EQ(text.capacity(), 8u);
    text.append("8", 1);
    EXPECT_EQ(text, "12345678");
    EXPECT_EQ(text.capacity(), 16u);

    S pushed("1234567");
    pushed.push_back('8');
    EXPECT_EQ(pushed, "12345678");
    EXPECT_EQ(pushed.capacity(), 16u);
}

TEST(LightweightString, AppendToASharedRecordLeavesTheOtherHolder) {
    S text("abc");
    text.append("d", 1);
    const S other(text);
    text.append("e", 1);
    EXPECT_EQ(text, "abcde");
    EXPECT_EQ(other, "abcd");
}

TEST(LightweightString, AppendWithRoomStaysInPlace) {
    S text("abcd");
    const char* place = text.c_str();
    text.append("efg", 3);
    EXPECT_EQ(text, "abcdefg");
    EXPECT_EQ(text.c_str(), place);
}

TEST(LightweightString, AppendOfNothingChangesNothing) {
    S text("abc");
    const char* place = text.c_str();
    text.append("xyz", 0);
    text.append(nullptr, 4);
    text += static_cast<const char*>(nullptr);
    text += "";
    EXPECT_EQ(text, "abc");
    EXPECT_EQ(text.c_str(), place);
}

TEST(LightweightString, AppendToTheNullStringAssigns) {
    S text;
    text.append("abcde", 5);
    EXPECT_EQ(text, "abcde");
    EXPECT_EQ(text.capacity(), 8u);
}

TEST(LightweightString, AppendOfItsOwnTextIsSafe) {
    S text("abc");
    text += text;
    EXPECT_EQ(text, "abcabc");
    text.append(text.c_str() + 1, 5);
    EXPECT_EQ(text, "abcabcbcabc");
}

TEST(LightweightString, PushBackOfZeroAppendsNothing) {
    S text("abc");
    text.push_back(0);
    EXPECT_EQ(text.length(), 3u);
    S null;
    null.push_back(0);
    EXPECT_TRUE(null.empty());
}

TEST(LightweightString, PushBackBuildsATextFromNothing) {
    S text;
    for (const char c : std::string("abcdefghij")) {
        text.push_back(c);
    }
    EXPECT_EQ(text, "abcdefghij");
    EXPECT_EQ(text.capacity(), 16u);
}

TEST(LightweightString, PushBackToASharedRecordLeavesTheOtherHolder) {
    S text("abc");
    text.push_back('d');
    const S other(text);
    text.push_back('e');
    EXPECT_EQ(text, "abcde");
    EXPECT_EQ(other, "abcd");
}

TEST(LightweightString, RepeatedAppendsReallocateOnlyAtPowersOfTwo) {
    CountingAllocator counting;
    S text;
    for (int i = 0; i < 1000; ++i) {
        text.push_back('x');
    }
    EXPECT_EQ(counting.allocations(), 10);
    EXPECT_EQ(text.capacity(), 1024u);
}

TEST(LightweightString, JoinSkipsANullOrEmptyPart) {
    EXPECT_EQ(S::join("abc", 3, "de", 2), "abcde");
    EXPECT_EQ(S::join(nullptr, 0, "de", 2), "de");
    EXPECT_EQ(S::join("abc", 3, nullptr, 0), "abc");
    EXPECT_EQ(S::join("abc", 2, "xyz", 1), "abx");
    EXPECT_TRUE(S::join(nullptr, 0, nullptr, 0).empty());
}

TEST(LightweightString, JoinWithANullPartStillHasTheWholeLength) {
    const S text = S::join("abc", 3, nullptr, 1);
    EXPECT_EQ(text.length(), 4u);
    EXPECT_EQ(text.capacity(), 8u);
    EXPECT_EQ(text.c_str()[3], 0);
    EXPECT_EQ(text.c_str()[4], 0);
}

TEST(LightweightString, SubstrTakesWhatIsThere) {
    const S text("abcdef");
    EXPECT_EQ(text.substr(2, 0xFFFFFFFF), "cdef");
    EXPECT_TRUE(text.substr(6, 1).empty());
    EXPECT_EQ(text.substr(4, 10), "ef");
    EXPECT_EQ(text.substr(1, 3), "bcd");
    EXPECT_EQ(text.substr(0, 6), "abcdef");
    EXPECT_TRUE(text.substr(2, 0).empty());
    EXPECT_TRUE(text.substr(0xFFFFFFFF, 1).empty());
    EXPECT_TRUE(S().substr(0, 1).empty());
}

TEST(LightweightString, SubstrLengthPastThirtyTwoBitsDoesNotWrap) {
    EXPECT_EQ(S("abcdef").substr(2, 0xFFFFFFFE), "cdef");
}

TEST(LightweightString, CompareOrdersNullAndEmptyAlike) {
    EXPECT_EQ(S::compare(nullptr, nullptr), 0);
    EXPECT_EQ(S::compare(nullptr, ""), 0);
    EXPECT_EQ(S::compare("", nullptr), 0);
    EXPECT_EQ(S::compare("", "a"), -1);
    EXPECT_EQ(S::compare("a", nullptr), 1);
    EXPECT_EQ(S::compare(nullptr, "a"), -1);
    EXPECT_EQ(S::icompare("a", nullptr), 1);
    EXPECT_EQ(S::icompare(nullptr, ""), 0);
    EXPECT_EQ(W::compare(nullptr, L""), 0);
    EXPECT_EQ(W::icompare(L"a", nullptr), 1);
}

TEST(LightweightString, CompareGivesTheSignOfTheCharacters) {
    const char* same = "abc";
    EXPECT_EQ(S::compare(same, same), 0);
    EXPECT_EQ(S::compare("abc", "abd"), -1);
    EXPECT_EQ(S::compare("abc", "ab"), 1);
    EXPECT_EQ(S::compare("B", "a"), -1);
    EXPECT_EQ(S::compare("\xE9", "z"), 1);
    EXPECT_EQ(W::compare(L"abc", L"abd"), -1);
}

TEST(LightweightString, IcompareIgnoresTheCaseOfSevenBitLetters) {
    EXPECT_EQ(S::icompare("Reel", "rEEL"), 0);
    EXPECT_EQ(S::icompare("B", "a"), 1);
    EXPECT_EQ(S::icompare("_", "A"), -1);
    EXPECT_EQ(S::icompare("\xC9", "\xE9"), -1);
    EXPECT_EQ(W::icompare(L"Reel", L"rEEL"), 0);
    EXPECT_EQ(W::icompare(L"[", L"a"), -1);
}

TEST(LightweightString, EndsWithRespectsOrIgnoresCase) {
    const W path(L"log.mSG");
    EXPECT_TRUE(path.endsWith(L"sg", false));
    EXPECT_FALSE(path.endsWith(L"sg", true));
    EXPECT_TRUE(path.endsWith(L"SG", true));
    EXPECT_FALSE(path.endsWith(L"xg", false));
    EXPECT_TRUE(path.endsWith(path.c_str(), true));
}

TEST(LightweightString, EndsWithAnswersFalseWhereThereIsNothingToCompare) {
    EXPECT_FALSE(W(L"abc").endsWith(nullptr, true));
    EXPECT_FALSE(W().endsWith(L"", true));
    EXPECT_FALSE(W().endsWith(L"c", false));
    EXPECT_FALSE(W(L"c").endsWith(L"bc", true));
    EXPECT_TRUE(W(L"abc").endsWith(L"", true));
    EXPECT_TRUE(W(L"abc").endsWith(L"", false));
}

TEST(LightweightString, PlusJoinsWideTexts) {
    const W path(L"/logs/day");
    EXPECT_EQ(path + L".tmp", W(L"/logs/day.tmp"));
    EXPECT_EQ(path + nullptr, path);
    EXPECT_EQ(W() + L"x", W(L"x"));
    EXPECT_TRUE((W() + L"").empty());
    EXPECT_EQ(path, W(L"/logs/day"));
}

TEST(LightweightString, PlusEqualsANumberAppendsItsDecimalText) {
    S text("n=");
    text += 0;
    text += -2147483647 - 1;
    EXPECT_EQ(text, "n=0-2147483648");
    S other;
    other += 4294967295u;
    EXPECT_EQ(other, "4294967295");
}

TEST(LightweightString, EqualityAndOrderCoverTheWholeText) {
    EXPECT_TRUE(S("a\0b", 3) == S("a\0b", 3));
    EXPECT_TRUE(S("a\0b", 3) != S("a\0c", 3));
    EXPECT_TRUE(S("a\0b", 3) < S("a\0c", 3));
    EXPECT_TRUE(S("a") < S("a\0", 2));
    EXPECT_TRUE(S() < S("a"));
    EXPECT_FALSE(S() < S());
    EXPECT_TRUE(S("abc") == "abc");
    EXPECT_TRUE("abc" == S("abc"));
    EXPECT_TRUE(S("abc") != "abd");
    EXPECT_TRUE(S() == "");
    EXPECT_TRUE(S() == nullptr);
    EXPECT_FALSE(S("a") == nullptr);
}

TEST(LightweightString, MutableDataCopiesASharedTextFirst) {
    S text("abc");
    const S other(text);
    text.mutableData()[0] = 'x';
    EXPECT_EQ(text, "xbc");
    EXPECT_EQ(other, "abc");
    const char* place = text.c_str();
    EXPECT_EQ(text.mutableData(), place);
    EXPECT_EQ(S().mutableData(), nullptr);
}

TEST(LightweightString, SizesPastTheLimitThrowBadAllocAndKeepTheText) {
    S text("abc");
    const std::size_t tooLong = std::size_t(1) << 31;
    EXPECT_THROW(S::createImpl(tooLong, true), Quor::Exception::BadAlloc);
    EXPECT_THROW(S::createImpl(tooLong, false), Quor::Exception::BadAlloc);
    EXPECT_THROW(text.resizeFor(std::size_t(1) << 32), Quor::Exception::BadAlloc);
    EXPECT_THROW(text.append("x", tooLong - 3), Quor::Exception::BadAlloc);
    EXPECT_THROW(text.append("x", ~std::size_t(0)), Quor::Exception::BadAlloc);
    EXPECT_THROW(text.assign("x", std::size_t(1) << 33), Quor::Exception::BadAlloc);
    EXPECT_THROW(S::join("a", ~std::size_t(0), "b", 2), Quor::Exception::BadAlloc);
    EXPECT_THROW(S::join("a", tooLong - 1, "b", 1), Quor::Exception::BadAlloc);
    EXPECT_EQ(text, "abc");
}

TEST(LightweightString, FailedAllocationKeepsTheText) {
    S text("1234567");
    const S shared(text);
    const auto unchanged = [&] {
        EXPECT_EQ(text, "1234567");
        EXPECT_EQ(text.c_str(), shared.c_str());
    };
    const auto each = [&](auto action) {
        EXPECT_EQ(failEachAllocation(
                      [&] {
                          S copy(text);
                          action(copy);
                      },
                      unchanged),
                  1u);
    };
    each([](S& t) { t.append("8", 1); });
    each([](S& t) { t.push_back('8'); });
    each([](S& t) { t.assign("abcdefgh"); });
    each([](S& t) { t.resizeFor(20); });
    each([](S& t) { t.mutableData(); });
    each([](S& t) { t = t.substr(1); });
}

TEST(LightweightString, FailedAssignKeepsItsOwnText) {
    S text("1234567");
    EXPECT_EQ(failEachAllocation([&] { text.assign("a longer text than before"); },
                                 [&] { EXPECT_EQ(text, "1234567"); }),
              1u);
    EXPECT_EQ(text, "a longer text than before");
}

TEST(LightweightString, SharedRecordIsCountedSafelyAcrossThreads) {
    CountingAllocator counting;
    {
        const S shared("a reel that many threads read");
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([own = shared] {
                for (int i = 0; i < 20000; ++i) {
                    S copy(own);
                    copy.push_back('x');
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        EXPECT_EQ(shared, "a reel that many threads read");
    }
    EXPECT_EQ(counting.liveBlocks(), 0);
}

// Edits a text and a plain string alike, and finds them alike after each edit.
template <class C>
void editAtRandom() {
    using Text = LightweightString<C>;
    Random random;
    Text text;
    std::basic_string<C> model;
    for (int step = 0; step < 4000; ++step) {
        const Text before(random.oneIn(2) ? text : Text());
        const std::basic_string<C> modelBefore(before.view());
        const std::string letters = random.text("abcXYZ", 20);
        const std::basic_string<C> piece(letters.begin(), letters.end());
        switch (random.below(6)) {
            case 0:
                text.append(piece.data(), piece.size());
                model += piece;
                break;
            case 1:
                text.push_back('q');
                model += 'q';
                break;
            case 2:
                text.assign(piece.c_str());
                model = piece;
                break;
            case 3: {
                const unsigned from = unsigned(random.below(model.size() + 2));
                text = text.substr(from, 15);
                model = from < model.size() ? model.substr(from, 15) : std::basic_string<C>();
                break;
            }
            case 4:
                text = Text::join(text.c_str(), text.length(), piece.data(), piece.size());
                model += piece;
                break;
            default:
                if (!model.empty()) {
                    text.mutableData()[0] = '!';
                    model[0] = '!';
                }
        }
        ASSERT_EQ(text.view(), model);
        ASSERT_EQ(text.length(), model.size());
        ASSERT_EQ(text.empty(), model.empty());
        ASSERT_EQ(text.c_str()[text.length()], 0);
        ASSERT_EQ(before.view(), modelBefore);
    }
}

TEST(LightweightString, AgreesWithAPlainStringUnderRandomEdits) {
    editAtRandom<char>();
}

TEST(LightweightString, WideTextAgreesWithAPlainStringUnderRandomEdits) {
    editAtRandom<wchar_t>();
}
