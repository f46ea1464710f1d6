#include <vekdb/host/text_block.h>

#include <vekdb/host/exceptions.h>
#include "testing/failing_allocator.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <string_view>
#include <thread>
#include <vector>

using Quor::Ptr;
using testing_support::CountingAllocator;
using testing_support::FailingAllocator;

TEST(TextBlock, HoldsItsBytesAndAZeroBehindThem) {
    const Ptr<TextBlock> block = TextBlock::create(5);
    ASSERT_EQ(block->size(), 5u);
    std::memcpy(block->data(), "abcde", 5);
    EXPECT_STREQ(block->data(), "abcde");
}

TEST(TextBlock, MayBeEmpty) {
    const Ptr<TextBlock> block = TextBlock::create(0);
    EXPECT_EQ(block->size(), 0u);
    EXPECT_STREQ(block->data(), "");
}

TEST(TextBlock, ResizeKeepsWhatFits) {
    const Ptr<TextBlock> block = TextBlock::create(5);
    std::memcpy(block->data(), "abcde", 5);
    block->resize(100000);
    EXPECT_EQ(block->size(), 100000u);
    EXPECT_EQ(std::string_view(block->data(), 5), "abcde");
    EXPECT_EQ(block->data()[100000], 0);
    block->resize(3);
    EXPECT_STREQ(block->data(), "abc");
}

TEST(TextBlock, ALargeOneHoldsItsBytesFromALargePageOn) {
    constexpr std::size_t large = std::size_t{4} << 20;
    for (const std::size_t size : {large - 1, large, large + 1, 3 * large}) {
        const CountingAllocator counting;
        const Ptr<TextBlock> block = TextBlock::create(size);
        EXPECT_GT(counting.lastSize(), size);
        const auto start = reinterpret_cast<std::uintptr_t>(block->data());
        EXPECT_TRUE(size < large || start % (large / 2) == 0);
        std::memset(block->data(), 'x', size);
        EXPECT_EQ(block->data()[size], 0);
    }
}

TEST(TextBlock, ALargeOneKeepsItsTextThroughEverySize) {
    const Ptr<TextBlock> block = TextBlock::create(std::size_t{5} << 20);
    std::memcpy(block->data(), "abcdefgh", 8);
    for (const std::size_t size : {std::size_t{9} << 20, std::size_t{8}, std::size_t{5} << 20}) {
        block->resize(size);
        EXPECT_EQ(std::string_view(block->data(), 8), "abcdefgh");
        EXPECT_EQ(block->data()[size], 0);
    }
}

TEST(TextBlock, TextComesFromTheHostAllocatorAndGoesWithTheLastShare) {
    CountingAllocator counting;
    Ptr<TextBlock> block = TextBlock::create(100);
    EXPECT_GE(counting.lastSize(), 100u);
    const Ptr<TextBlock> share(block);
    EXPECT_FALSE(block->isUnshared());
    block.reset();
    EXPECT_GT(counting.liveBlocks(), 0);
    EXPECT_TRUE(share->isUnshared());
}

TEST(TextBlock, RawHoldersKeepItAlive) {
    CountingAllocator counting;
    Ptr<TextBlock> block = TextBlock::create(10);
    TextBlock* raw = block.get();
    raw->addReferences(3);
    raw->addReference();
    block.reset();
    std::strcpy(raw->data(), "alive");
    for (int i = 0; i < 3; ++i) {
        raw->release();
    }
    EXPECT_TRUE(raw->isUnshared());
    EXPECT_STREQ(raw->data(), "alive");
    raw->release();
    EXPECT_EQ(counting.liveBlocks(), 0);
}

TEST(TextBlock, AddingNoReferencesChangesNothing) {
    const Ptr<TextBlock> block = TextBlock::create(1);
    block->addReferences(0);
    EXPECT_TRUE(block->isUnshared());
}

TEST(TextBlock, FailedResizeKeepsTheText) {
    const Ptr<TextBlock> block = TextBlock::create(3);
    std::memcpy(block->data(), "abc", 3);
    const std::size_t most = std::numeric_limits<std::size_t>::max();
    EXPECT_THROW(block->resize(most), Quor::Exception::BadAlloc);
    {
        FailingAllocator failing(1);
        EXPECT_THROW(block->resize(50), Quor::Exception::BadAlloc);
    }
    EXPECT_EQ(block->size(), 3u);
    EXPECT_STREQ(block->data(), "abc");
}

TEST(TextBlock, FailedCreationLeavesNothingBehind) {
    CountingAllocator counting;
    testing_support::failEachAllocation([] { TextBlock::create(10); },
                                        [&] { EXPECT_EQ(counting.liveBlocks(), 0); });
    const std::size_t most = std::numeric_limits<std::size_t>::max();
    for (const std::size_t less : {std::size_t{0}, std::size_t{1}, std::size_t{2} << 20}) {
        EXPECT_THROW(TextBlock::create(most - less), Quor::Exception::BadAlloc);
    }
    EXPECT_EQ(counting.liveBlocks(), 0);
}

TEST(TextBlock, SharesAreCountedSafelyAcrossThreads) {
    CountingAllocator counting;
    {
        const Ptr<TextBlock> block = TextBlock::create(10);
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([raw = block.get()] {
                for (int i = 0; i < 20000; ++i) {
                    raw->addReference();
                    raw->release();
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        EXPECT_TRUE(block->isUnshared());
    }
    EXPECT_EQ(counting.liveBlocks(), 0);
}
