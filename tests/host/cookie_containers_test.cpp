#include <vekdb/host/cookie_containers.h>

#include <vekdb/host/exceptions.h>
#include <vekdb/host/grow_string.h>
#include <vekdb/host/wrapped_data.h>
#include "testing/failing_allocator.h"
#include "testing/print_strings.h"
#include "testing/random.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

using testing_support::CountingAllocator;
using testing_support::failEachAllocation;
using testing_support::Random;

namespace {

Cookie cookieOf(unsigned number) {
    Cookie cookie;
    cookie.uuid.bytes[14] = static_cast<std::uint8_t>(number >> 8);
    cookie.uuid.bytes[15] = static_cast<std::uint8_t>(number);
    return cookie;
}

CookieVec vecOf(std::initializer_list<unsigned> numbers) {
    CookieVec list;
    for (const unsigned number : numbers) {
        list.add(cookieOf(number));
    }
    return list;
}

std::vector<Cookie> contents(const CookieVec& list) {
    return std::vector<Cookie>(list.begin(), list.end());
}

std::vector<Cookie> contents(const CookieSet& set) {
    std::vector<Cookie> cookies;
    for (unsigned i = 0; i < set.size(); ++i) {
        cookies.push_back(set[static_cast<int>(i)]);
    }
    return cookies;
}

}  // namespace

TEST(CookieVec, IsEmptyAtFirst) {
    const CookieVec list;
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(list.size(), 0u);
    EXPECT_EQ(list.begin(), list.end());
}

TEST(CookieVec, AddAppendsAtTheEndAndKeepsDuplicates) {
    CookieVec list = vecOf({3, 1, 3});
    list.push_back(cookieOf(1));
    EXPECT_EQ(contents(list), (std::vector{cookieOf(3), cookieOf(1), cookieOf(3), cookieOf(1)}));
    EXPECT_EQ(list[1], cookieOf(1));
}

TEST(CookieVec, GrowsPastAnyRoom) {
    CookieVec list;
    for (unsigned i = 0; i < 1000; ++i) {
        list.add(cookieOf(i));
    }
    ASSERT_EQ(list.size(), 1000u);
    for (unsigned i = 0; i < 1000; ++i) {
        ASSERT_EQ(list[i], cookieOf(i));
    }
}

TEST(CookieVec, MayAddAnItemOfItsOwn) {
    CookieVec list = vecOf({7});
    for (int i = 0; i < 40; ++i) {
        list.add(list[0]);
    }
    EXPECT_EQ(list[40], cookieOf(7));
}

TEST(CookieVec, CopiesShareUntilOneChanges) {
    CookieVec list = vecOf({1, 2});
    CookieVec copy(list);
    EXPECT_EQ(copy.begin(), list.begin());
    copy.add(cookieOf(3));
    EXPECT_EQ(contents(list), (std::vector{cookieOf(1), cookieOf(2)}));
    EXPECT_EQ(copy.size(), 3u);
    list.clear();
    EXPECT_EQ(copy.size(), 3u);
    EXPECT_TRUE(list.empty());
}

TEST(CookieVec, SwapExchangesTheItems) {
    CookieVec a = vecOf({1, 2});
    CookieVec b = vecOf({3});
    a.swap(b);
    EXPECT_EQ(contents(a), std::vector{cookieOf(3)});
    EXPECT_EQ(b.size(), 2u);
}

TEST(CookieVec, ReserveKeepsTheItems) {
    CookieVec list = vecOf({1, 2});
    list.reserve(100);
    const Cookie* place = list.begin();
    for (unsigned i = 2; i < 100; ++i) {
        list.add(cookieOf(i));
    }
    EXPECT_EQ(list.begin(), place);
    EXPECT_EQ(list[1], cookieOf(2));
}

TEST(CookieVec, FailedAddKeepsTheItems) {
    CountingAllocator counting;
    {
        const CookieVec shared = vecOf({1, 2, 3, 4, 5, 6, 7, 8});
        CookieVec list(shared);
        EXPECT_GE(
            failEachAllocation([&] { list.add(cookieOf(9)); }, [&] { ASSERT_EQ(list.size(), 8u); }),
            1u);
        EXPECT_EQ(list.size(), 9u);
        EXPECT_EQ(shared.size(), 8u);
    }
    EXPECT_EQ(counting.liveBlocks(), 0);
}

TEST(CookieVec, TravelsInsideANotice) {
    const Quor::Ptr<iObject> object(new WrappedData<CookieVec>(vecOf({5, 6})));
    const auto* wrapped = dynamic_cast<WrappedData<CookieVec>*>(object.get());
    ASSERT_NE(wrapped, nullptr);
    EXPECT_EQ(contents(wrapped->data()), (std::vector{cookieOf(5), cookieOf(6)}));
}

TEST(CookieSet, SortsAndCollapsesDuplicates) {
    const CookieSet set(vecOf({5, 1, 5, 3, 1}));
    EXPECT_EQ(contents(set), (std::vector{cookieOf(1), cookieOf(3), cookieOf(5)}));
}

TEST(CookieSet, AddAnswersWhetherTheCookieIsNew) {
    CookieSet set;
    EXPECT_TRUE(set.add(cookieOf(2)));
    EXPECT_TRUE(set.add(cookieOf(1)));
    EXPECT_FALSE(set.add(cookieOf(2)));
    EXPECT_EQ(contents(set), (std::vector{cookieOf(1), cookieOf(2)}));
    EXPECT_TRUE(set.contains(cookieOf(1)));
    EXPECT_FALSE(set.contains(cookieOf(3)));
}

TEST(CookieSet, CookiesThatDifferInTypeOnlyAreTwo) {
    CookieSet set;
    set.add(cookieOf(1));
    EXPECT_TRUE(set.add(convertCookie(cookieOf(1), cookieTypeM, 255)));
    EXPECT_EQ(set.size(), 2u);
}

TEST(CookieSet, ReadingPastTheEndsGivesTheDefaultCookie) {
    const CookieSet set(vecOf({4}));
    EXPECT_EQ(set[-1], Cookie());
    EXPECT_EQ(set[1], Cookie());
    EXPECT_EQ(CookieSet()[0], Cookie());
    EXPECT_FALSE(CookieSet().contains(Cookie()));
}

TEST(CookieSet, IsCopiedBeforeItIsChanged) {
    CookieSet set(vecOf({1, 2}));
    CookieSet copy(set);
    EXPECT_EQ(&copy[0], &set[0]);
    copy.add(cookieOf(3));
    EXPECT_EQ(set.size(), 2u);
    EXPECT_EQ(copy.size(), 3u);
    copy = set;
    copy.unshare();
    EXPECT_NE(&copy[0], &set[0]);
    EXPECT_EQ(contents(copy), contents(set));
}

TEST(CookieSet, UnshareOfAnUnsharedSetKeepsItsPlace) {
    CookieSet set(vecOf({1}));
    const Cookie* place = &set[0];
    set.unshare();
    EXPECT_EQ(&set[0], place);
    CookieSet empty;
    empty.unshare();
    EXPECT_TRUE(empty.empty());
}

TEST(CookieSet, PurgeEmptiesThisHandleOnly) {
    CookieSet set(vecOf({1, 2}));
    const CookieSet copy(set);
    set.purge();
    EXPECT_TRUE(set.empty());
    EXPECT_EQ(copy.size(), 2u);
    set.add(cookieOf(9));
    EXPECT_EQ(set.size(), 1u);
}

TEST(CookieSet, PrintsItsCookiesInOrder) {
    GrowString out;
    CookieSet(vecOf({2, 1})).printOn(out);
    const std::string expected = std::string(cookieOf(1).asString(false).view()) + ", " +
                                 std::string(cookieOf(2).asString(false).view());
    EXPECT_STREQ(out, expected.c_str());
    GrowString none;
    CookieSet().printOn(none);
    EXPECT_STREQ(none, "");
}

TEST(CookieSetRep, InitReplacesTheContents) {
    CookieSetRep rep;
    rep.init(vecOf({3, 1, 3}));
    EXPECT_EQ(rep.size(), 2u);
    EXPECT_EQ(rep[0], cookieOf(1));
    rep.init();
    EXPECT_EQ(rep.size(), 0u);
    EXPECT_TRUE(rep.add(cookieOf(8)));
    EXPECT_EQ(rep[0], cookieOf(8));
}

TEST(CookieSet, AgreesWithAPlainSetUnderRandomUse) {
    Random random;
    CookieSet set;
    std::set<Cookie> model;
    for (int step = 0; step < 2000; ++step) {
        const Cookie cookie = cookieOf(unsigned(random.below(300)));
        const CookieSet before(random.oneIn(3) ? set : CookieSet());
        const unsigned sizeBefore = before.size();
        if (random.oneIn(400)) {
            set.purge();
            model.clear();
        }
        ASSERT_EQ(set.contains(cookie), model.count(cookie) == 1);
        ASSERT_EQ(set.add(cookie), model.insert(cookie).second);
        ASSERT_EQ(set.size(), model.size());
        ASSERT_EQ(before.size(), sizeBefore);
    }
    EXPECT_EQ(contents(set), std::vector<Cookie>(model.begin(), model.end()));
}

TEST(CookieSet, FillsFromManyCookiesAtOnce) {
    Random random;
    CookieVec list;
    for (int i = 0; i < 50000; ++i) {
        Cookie cookie = cookieOf(unsigned(random.below(60000)));
        cookie.field = static_cast<std::uint16_t>(random.below(100));
        list.add(cookie);
    }
    const CookieSet set(list);
    EXPECT_EQ(set.size(), std::set<Cookie>(list.begin(), list.end()).size());
    for (unsigned i = 1; i < set.size(); ++i) {
        ASSERT_LT(set[int(i) - 1], set[int(i)]);
    }
}

TEST(CookieSet, FailedAllocationLeavesTheSetAsItWas) {
    const CookieSet shared(vecOf({1, 2, 3}));
    CookieSet set(shared);
    failEachAllocation([&] { set.add(cookieOf(9)); },
                       [&] { ASSERT_EQ(contents(set), contents(shared)); });
    EXPECT_EQ(set.size(), 4u);
    EXPECT_EQ(shared.size(), 3u);
}
