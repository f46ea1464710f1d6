#include <vekdb/host/grow_string.h>

#include <vekdb/host/exceptions.h>
#include "testing/failing_allocator.h"
#include "testing/random.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

using testing_support::CountingAllocator;
using testing_support::FailingAllocator;
using testing_support::Random;

static_assert(std::is_convertible_v<GrowString, const char*>);
static_assert(!std::is_copy_constructible_v<GrowString>);

TEST(GrowString, IsTheEmptyTextAtFirst) {
    CountingAllocator counting;
    const GrowString out;
    EXPECT_STREQ(out, "");
    EXPECT_EQ(out.length(), 0u);
    EXPECT_EQ(counting.allocations(), 0);
}

TEST(GrowString, AppendsTextsAndCharacters) {
    GrowString out;
    out.append("(A");
    out.append(' ');
    out.append(std::string_view("Bxx", 1));
    out.append(')');
    EXPECT_STREQ(out, "(A B)");
    EXPECT_EQ(out.length(), 5u);
}

TEST(GrowString, NullAndZeroAppendNothing) {
    GrowString out;
    out.append("a");
    out.append(static_cast<const char*>(nullptr));
    out.append('\0');
    out.append("");
    out.append(std::string_view());
    EXPECT_STREQ(out, "a");
    EXPECT_EQ(out.length(), 1u);
}

TEST(GrowString, IsTerminatedAfterEveryAppend) {
    Random random;
    GrowString out;
    std::string model;
    for (int i = 0; i < 500; ++i) {
        const std::string piece = random.text("abc", 30);
        out.append(piece.c_str());
        model += piece;
        ASSERT_STREQ(out, model.c_str());
        ASSERT_EQ(out.length(), model.size());
    }
}

TEST(GrowString, MayAppendItsOwnText) {
    GrowString out;
    out.append("ab");
    for (int i = 0; i < 8; ++i) {
        out.append(static_cast<const char*>(out));
    }
    EXPECT_EQ(out.length(), 512u);
    EXPECT_EQ(std::string(out).find("ba"), 1u);
}

TEST(GrowString, TakesItsRoomFromTheHostAllocatorByDoubling) {
    CountingAllocator counting;
    {
        GrowString out;
        for (int i = 0; i < 100000; ++i) {
            out.append('x');
        }
        EXPECT_LT(counting.allocations(), 15);
        EXPECT_EQ(counting.liveBlocks(), 1);
    }
    EXPECT_EQ(counting.liveBlocks(), 0);
}

TEST(GrowString, FailedGrowthKeepsTheText) {
    GrowString out;
    out.append("abc");
    const std::string more(1000, 'x');
    {
        FailingAllocator failing(1);
        EXPECT_THROW(out.append(more.c_str()), Quor::Exception::BadAlloc);
    }
    EXPECT_STREQ(out, "abc");
    out.append("d");
    EXPECT_STREQ(out, "abcd");
}
