#include "host/large_pages.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

namespace {

constexpr std::size_t largePage = std::size_t{2} << 20;

std::uintptr_t numberOf(const void* place) {
    return reinterpret_cast<std::uintptr_t>(place);
}

TEST(FillingBlock, IsWholeLargePagesFromHalfAOneOn) {
    EXPECT_EQ(1u, FillingBlock::goodSize(1));
    EXPECT_EQ(largePage / 2 - 1, FillingBlock::goodSize(largePage / 2 - 1));
    EXPECT_EQ(largePage, FillingBlock::goodSize(largePage / 2));
    EXPECT_EQ(largePage, FillingBlock::goodSize(largePage));
    EXPECT_EQ(2 * largePage, FillingBlock::goodSize(largePage + 1));
}

TEST(FillingBlock, CanBeFilledToItsLastByteAndBeginsOnALargePageFromOneOn) {
    for (const std::size_t size : {std::size_t{1}, largePage - 1, largePage, 3 * largePage}) {
        void* block = FillingBlock::allocate(size);
        EXPECT_TRUE(size < largePage || numberOf(block) % largePage == 0);
        std::memset(block, 'x', size);
        FillingBlock::free(block, size);
    }
}

TEST(LargePages, ATextBeginsWithinTheSlackOnOne) {
    EXPECT_EQ(0u, LargePages::slackFor(2 * largePage - 1));
    const std::size_t slack = LargePages::slackFor(2 * largePage);
    char* const page = reinterpret_cast<char*>(8 * largePage);
    EXPECT_EQ(page + 1, LargePages::startIn(page + 1, 0));
    EXPECT_EQ(page, LargePages::startIn(page, slack));
    for (const std::size_t beyond : {std::size_t{1}, std::size_t{16}, largePage - 1}) {
        EXPECT_EQ(page + largePage, LargePages::startIn(page + beyond, slack));
        EXPECT_GE(beyond + slack, largePage);
    }
}

}  // namespace
