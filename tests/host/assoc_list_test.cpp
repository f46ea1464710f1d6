#include <vekdb/host/assoc_list.h>

#include "testing/failing_allocator.h"
#include "testing/print_strings.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

using testing_support::CountingAllocator;
using testing_support::failEachAllocation;
using S = LightweightString<char>;

namespace {

std::string contents(const AssocList& list) {
    std::string text;
    for (AssocListIter it(list); it; ++it) {
        text += std::string((*it).name.view()) + "=" + std::string(it->value.view()) + ";";
    }
    return text;
}

}  // namespace

TEST(AssocList, MakesAnAbsentSlotWithANullValue) {
    AssocList list;
    EXPECT_TRUE(list.empty());
    EXPECT_TRUE(list["Name"].empty());
    EXPECT_EQ(list.size(), 1u);
}

TEST(AssocList, SlotHoldsWhatIsAssigned) {
    AssocList list;
    list["Name"] = "Day 1";
    EXPECT_EQ(list["Name"], "Day 1");
    list["Name"] = "Day 2";
    EXPECT_EQ(contents(list), "Name=Day 2;");
}

TEST(AssocList, KeepsTheOrderOfFirstEntry) {
    AssocList list;
    list["VEKDB"] = "Rev 1";
    list["Project"] = "Film";
    list["Author"] = "x";
    list["VEKDB"] = "Rev 2";
    EXPECT_EQ(contents(list), "VEKDB=Rev 2;Project=Film;Author=x;");
}

TEST(AssocList, NamesIgnoreCaseAndKeepTheirFirstSpelling) {
    AssocList list;
    list["Project"] = "one";
    list["PROJECT"] = "two";
    EXPECT_EQ(contents(list), "Project=two;");
}

TEST(AssocList, FindNeverMakesAnEntry) {
    AssocList list;
    EXPECT_EQ(list.find("a"), nullptr);
    EXPECT_TRUE(list.empty());
    list["a"] = "1";
    ASSERT_NE(list.find("A"), nullptr);
    EXPECT_EQ(*list.find("A"), "1");
}

TEST(AssocList, NullNameIsANameOfItsOwn) {
    AssocList list;
    list[S()] = "x";
    EXPECT_EQ(list[""], "x");
    EXPECT_EQ(list.size(), 1u);
}

TEST(AssocList, SlotsStayWhereTheyAreAsOthersCome) {
    AssocList list;
    S& first = list["first"];
    for (int i = 0; i < 200; ++i) {
        S name("n");
        name += i;
        list[name] = name;
    }
    first = "still here";
    EXPECT_EQ(list["first"], "still here");
    EXPECT_EQ(list.size(), 201u);
    list["x"] = list["n7"];
    EXPECT_EQ(list["x"], "n7");
}

TEST(AssocList, CopyHasSlotsOfItsOwn) {
    AssocList list;
    S& slot = list["a"];
    slot = "1";
    AssocList copy(list);
    slot = "2";
    copy["b"] = "3";
    EXPECT_EQ(contents(list), "a=2;");
    EXPECT_EQ(contents(copy), "a=1;b=3;");
    list = copy;
    EXPECT_EQ(contents(list), "a=1;b=3;");
    const AssocList& alias = list;
    list = alias;
    EXPECT_EQ(contents(list), "a=1;b=3;");
}

TEST(AssocList, ClearEmptiesAndTheListGoesOn) {
    AssocList list;
    list["a"] = "1";
    list.clear();
    EXPECT_EQ(contents(list), "");
    list["B"] = "2";
    list["b"] = "3";
    EXPECT_EQ(contents(list), "B=3;");
}

TEST(AssocListIter, MeetsEntriesThatComeOnTheWayAndStaysAtTheEnd) {
    AssocList list;
    list["a"] = "1";
    AssocListIter it(list);
    list["b"] = "2";
    ++it;
    ASSERT_TRUE(it);
    EXPECT_EQ(it->name, "b");
    ++it;
    EXPECT_FALSE(it);
    ++it;
    EXPECT_FALSE(it);
}

TEST(AssocListRep, TellsNamesApartByCaseWhenAsked) {
    AssocListRep exact(false);
    exact.slot("a") = "1";
    exact.slot("A") = "2";
    EXPECT_EQ(exact.size(), 2u);
    EXPECT_EQ(*exact.find("a"), "1");
    AssocListRep folded(true);
    folded.slot("a") = "1";
    folded.slot("A") = "2";
    EXPECT_EQ(folded.size(), 1u);
}

TEST(AssocList, AssigningThrowsWhereMemoryEndsAndKeepsTheEntries) {
    static_assert(!std::is_nothrow_copy_assignable_v<AssocList>);
    AssocList list;
    list["a"] = "1";
    AssocList other;
    other["b"] = "2";
    other["c"] = "3";
    const auto check = [&] { EXPECT_EQ(contents(list), "a=1;"); };
    EXPECT_EQ(2u, failEachAllocation([&] { list = other; }, check));
    EXPECT_EQ(contents(list), "b=2;c=3;");
    const AssocList& itself = list;
    list = itself;
    EXPECT_EQ(contents(list), "b=2;c=3;");
}

TEST(AssocList, FailedAllocationKeepsTheEntries) {
    CountingAllocator counting;
    {
        AssocList list;
        list["a"] = "1";
        const S name("b");
        failEachAllocation([&] { list[name]; }, [&] { EXPECT_EQ(contents(list), "a=1;"); });
        EXPECT_EQ(list.size(), 2u);
        failEachAllocation([&] { AssocList copy(list); },
                           [&] { EXPECT_EQ(contents(list), "a=1;b=;"); });
    }
    EXPECT_EQ(counting.liveBlocks(), 0);
}
