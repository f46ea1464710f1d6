#include "host/posix/large_pages.h"

#include "testing/failing_allocator.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

namespace {

constexpr std::size_t largePage = std::size_t{2} << 20;

std::uintptr_t numberOf(const void* place) {
    return reinterpret_cast<std::uintptr_t>(place);
}

std::size_t sizeFor(std::size_t room) {
    FillingBlock* block = FillingBlock::allocate(room, nullptr);
    const std::uintptr_t size = numberOf(block->end()) - numberOf(block);
    FillingBlock::free(block);
    return size;
}

TEST(FillingBlock, IsWholeLargePagesFromHalfAOneOn) {
    const std::size_t own = sizeof(FillingBlock);
    EXPECT_EQ(own + 1, sizeFor(1));
    EXPECT_EQ(largePage / 2 - 1, sizeFor(largePage / 2 - 1 - own));
    EXPECT_EQ(largePage, sizeFor(largePage / 2 - own));
    EXPECT_EQ(largePage, sizeFor(largePage - own));
    EXPECT_EQ(2 * largePage, sizeFor(largePage + 1 - own));
}

TEST(FillingBlock, CanBeFilledToItsLastByteAndBeginsOnALargePageFromOneOn) {
    for (const std::size_t size : {std::size_t{1}, largePage / 4, largePage, 3 * largePage}) {
        FillingBlock* block = FillingBlock::allocate(size, nullptr);
        EXPECT_TRUE(size < largePage / 2 || numberOf(block) % largePage == 0);
        ASSERT_GE(block->end() - block->begin(), static_cast<std::ptrdiff_t>(size));
        std::memset(block->begin(), 'x', static_cast<std::size_t>(block->end() - block->begin()));
        EXPECT_EQ(nullptr, block->next());
        FillingBlock::free(block);
    }
}

TEST(FillingBlock, OfAnySizeComesFromTheHostsAllocatorAndGoesBackToIt) {
    for (const std::size_t size : {std::size_t{1}, largePage, 9 * largePage}) {
        const testing_support::CountingAllocator counted;
        FillingBlock* block = FillingBlock::allocate(size, nullptr);
        EXPECT_EQ(1, counted.liveBlocks());
        EXPECT_GE(counted.lastSize(), size);
        FillingBlock::free(block);
        EXPECT_EQ(0, counted.liveBlocks());
    }
}

TEST(FillingBlock, ThatCannotBeHadEndsWithTheHostsException) {
    const testing_support::FailingAllocator failing(1);
    EXPECT_THROW(FillingBlock::allocate(largePage, nullptr), Quor::Exception::BadAlloc);
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
