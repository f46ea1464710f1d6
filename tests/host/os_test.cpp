#include <vekdb/host/os.h>

#include <vekdb/host/exceptions.h>
#include <vekdb/host/lightweight_string.h>
#include <vekdb/host/ptr.h>
#include "testing/failing_allocator.h"
#include "testing/temp_dir.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <limits>
#include <new>
#include <thread>
#include <type_traits>
#include <vector>

using testing_support::CountingAllocator;
using testing_support::FailingAllocator;
using testing_support::TempDir;
using S = LightweightString<char>;
using W = LightweightString<wchar_t>;

static_assert(std::is_trivially_destructible_v<iHostServices>);
static_assert(std::is_base_of_v<Quor::Exception::Base, Quor::Exception::BadAlloc>);
static_assert(std::is_base_of_v<std::bad_alloc, Quor::Exception::BadAlloc>);
static_assert(!std::is_base_of_v<std::exception, Quor::Exception::Base>);

namespace {

// Runs before main and after it, in whatever order the program's statics come.
// A failure after main is seen in the exit code.
struct AroundMain {
    AroundMain() : text("made before main") {
        block = OS()->allocator()->allocate(10);
        OS()->allocator()->free(block);
    }
    ~AroundMain() {
        S longer(text);
        longer += ", and longer after it";
        if (longer != "made before main, and longer after it") {
            std::_Exit(1);
        }
    }
    void* block = nullptr;
    S text;
};
AroundMain aroundMain;

const std::size_t hugeSize = std::numeric_limits<std::size_t>::max() / 4;

}  // namespace

TEST(OS, WorksBeforeMainAndAfterStaticsDie) {
    EXPECT_NE(aroundMain.block, nullptr);
    EXPECT_STREQ(aroundMain.text.c_str(), "made before main");
}

TEST(OS, IsOneForTheProcessWithAllItsServices) {
    ASSERT_NE(OS(), nullptr);
    EXPECT_EQ(OS(), OS());
    EXPECT_NE(OS()->allocator(), nullptr);
    EXPECT_NE(OS()->fileService(), nullptr);
    EXPECT_NE(OS()->refCounts(), nullptr);
}

TEST(OS, BadAllocIsCaughtAsEachOfItsKinds) {
    const auto raise = [] { OS()->allocator()->allocate(hugeSize); };
    EXPECT_THROW(raise(), Quor::Exception::BadAlloc);
    EXPECT_THROW(raise(), Quor::Exception::Base);
    EXPECT_THROW(raise(), std::bad_alloc);
    EXPECT_THROW(raise(), std::exception);
    EXPECT_STREQ(Quor::Exception::BadAlloc().what(), "out of memory");
}

TEST(Allocator, ZeroBytesGiveABlockOfTheirOwn) {
    void* a = OS()->allocator()->allocate(0);
    void* b = OS()->allocator()->allocate(0);
    EXPECT_NE(a, nullptr);
    EXPECT_NE(a, b);
    OS()->allocator()->free(a);
    OS()->allocator()->free(b);
}

TEST(Allocator, FreeAcceptsNull) {
    EXPECT_NO_THROW(OS()->allocator()->free(nullptr));
}

TEST(Allocator, ReallocateOfNullAllocates) {
    void* block = OS()->allocator()->reallocate(nullptr, 16);
    ASSERT_NE(block, nullptr);
    std::memset(block, 1, 16);
    OS()->allocator()->free(block);
}

TEST(Allocator, ReallocateKeepsTheBytes) {
    char* block = static_cast<char*>(OS()->allocator()->allocate(4));
    std::memcpy(block, "abc", 4);
    block = static_cast<char*>(OS()->allocator()->reallocate(block, 4096));
    EXPECT_STREQ(block, "abc");
    block = static_cast<char*>(OS()->allocator()->reallocate(block, 0));
    EXPECT_NE(block, nullptr);
    OS()->allocator()->free(block);
}

TEST(Allocator, FailedReallocateKeepsTheOldBlock) {
    char* block = static_cast<char*>(OS()->allocator()->allocate(4));
    std::memcpy(block, "abc", 4);
    EXPECT_THROW(OS()->allocator()->reallocate(block, hugeSize), Quor::Exception::BadAlloc);
    EXPECT_STREQ(block, "abc");
    OS()->allocator()->free(block);
}

TEST(Allocator, ReplacementServesStringsUntilItIsPutBack) {
    iAllocator* const before = OS()->allocator();
    {
        CountingAllocator counting;
        EXPECT_EQ(OS()->allocator(), &counting);
        const S text("abc");
        EXPECT_EQ(counting.liveBlocks(), 1);
    }
    EXPECT_EQ(OS()->allocator(), before);
}

TEST(Allocator, NullPutsTheBuiltInOneBack) {
    iAllocator* const builtIn = OS()->setAllocator(nullptr);
    CountingAllocator counting;
    EXPECT_EQ(OS()->setAllocator(nullptr), &counting);
    EXPECT_EQ(OS()->setAllocator(&counting), builtIn);
}

TEST(FailingAllocator, FailsTheNthAllocationOfThisThreadOnly) {
    // Started first, as starting a thread allocates as well.
    std::atomic<bool> armed = false;
    std::thread other([&armed] {
        armed.wait(false);
        OS()->allocator()->free(OS()->allocator()->allocate(1));
    });
    FailingAllocator failing(2);
    armed = true;
    armed.notify_one();
    other.join();
    void* block = OS()->allocator()->allocate(1);
    EXPECT_FALSE(failing.fired());
    EXPECT_THROW(OS()->allocator()->allocate(1), Quor::Exception::BadAlloc);
    EXPECT_TRUE(failing.fired());
    void* third = OS()->allocator()->allocate(1);
    OS()->allocator()->free(block);
    OS()->allocator()->free(third);
}

TEST(FileService, DeletesAFile) {
    TempDir dir;
    dir.write("log.txt", "x");
    EXPECT_TRUE(OS()->fileService()->deleteFile(dir.widePath("log.txt")));
    EXPECT_FALSE(dir.has("log.txt"));
    EXPECT_FALSE(OS()->fileService()->deleteFile(dir.widePath("log.txt")));
}

TEST(FileService, NeverDeletesAFolder) {
    TempDir dir;
    std::filesystem::create_directory(dir.file("empty"));
    EXPECT_FALSE(OS()->fileService()->deleteFile(dir.widePath("empty")));
    EXPECT_TRUE(dir.has("empty"));
}

TEST(FileService, DeletesTheLinkAndNotWhatItPointsAt) {
    TempDir dir;
    dir.write("real", "x");
    std::filesystem::create_symlink(dir.file("real"), dir.file("link"));
    EXPECT_TRUE(OS()->fileService()->deleteFile(dir.widePath("link")));
    EXPECT_EQ(dir.read("real"), "x");
}

TEST(FileService, MovesAFileOfAnyName) {
    TempDir dir;
    dir.write("a", "text");
    const W target = dir.widePath("Film \xC3\xA9 \xF0\x9F\x8E\xAC");
    EXPECT_TRUE(OS()->fileService()->moveFile(dir.widePath("a"), target, false));
    EXPECT_EQ(dir.names(), std::vector<std::string>{"Film \xC3\xA9 \xF0\x9F\x8E\xAC"});
}

TEST(FileService, MoveReplacesOnlyWhenAsked) {
    TempDir dir;
    dir.write("new", "new");
    dir.write("old", "old");
    EXPECT_FALSE(OS()->fileService()->moveFile(dir.widePath("new"), dir.widePath("old"), false));
    EXPECT_EQ(dir.read("old"), "old");
    EXPECT_TRUE(OS()->fileService()->moveFile(dir.widePath("new"), dir.widePath("old"), true));
    EXPECT_EQ(dir.read("old"), "new");
    EXPECT_FALSE(dir.has("new"));
}

TEST(FileService, MovesNothingButARegularFile) {
    TempDir dir;
    dir.write("real", "x");
    std::filesystem::create_directory(dir.file("folder"));
    std::filesystem::create_symlink(dir.file("real"), dir.file("link"));
    for (const char* source : {"folder", "link", "absent"}) {
        EXPECT_FALSE(
            OS()->fileService()->moveFile(dir.widePath(source), dir.widePath("target"), true))
            << source;
    }
    EXPECT_FALSE(dir.has("target"));
    EXPECT_TRUE(dir.has("folder"));
    EXPECT_TRUE(dir.has("link"));
}

TEST(FileService, RefusesPathsThatNoFileCanHave) {
    TempDir dir;
    dir.write("a", "x");
    W broken = dir.widePath("b");
    broken.mutableData()[broken.length() - 1] = wchar_t(0xD800);
    EXPECT_FALSE(OS()->fileService()->deleteFile(W()));
    EXPECT_FALSE(OS()->fileService()->moveFile(dir.widePath("a"), W(), false));
    EXPECT_FALSE(OS()->fileService()->moveFile(dir.widePath("a"), broken, false));
    EXPECT_EQ(dir.names(), std::vector<std::string>{"a"});
}

TEST(FileService, CanBeReplaced) {
    struct Recording final : iFileService {
        bool deleteFile(const W&) override { return ++deletions > 0; }
        bool moveFile(const W&, const W&, bool) override { return false; }
        int deletions = 0;
    } recording;
    iFileService* const builtIn = OS()->setFileService(&recording);
    EXPECT_TRUE(OS()->fileService()->deleteFile(L"/nowhere"));
    EXPECT_EQ(OS()->setFileService(nullptr), &recording);
    EXPECT_EQ(recording.deletions, 1);
    EXPECT_EQ(OS()->fileService(), builtIn);
}

TEST(RefCounts, IncrementAndDecrementReportWhatRemains) {
    std::uint32_t count = 0;
    OS()->refCounts()->increment(count);
    OS()->refCounts()->increment(count);
    EXPECT_EQ(OS()->refCounts()->decrement(count), 1u);
    OS()->refCounts()->increaseBy(count, 5);
    EXPECT_EQ(count, 6u);
    OS()->refCounts()->increaseBy(count, 0);
    EXPECT_EQ(count, 6u);
}

TEST(RefCounts, AreAtomic) {
    std::uint32_t count = 1;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&count] {
            for (int i = 0; i < 50000; ++i) {
                OS()->refCounts()->increment(count);
                OS()->refCounts()->increaseBy(count, 2);
                OS()->refCounts()->decrement(count);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(count, 1u + 4u * 50000u * 2u);
}

namespace {

class PlainCounts final : public iRefCountService {
public:
    PlainCounts() : previous_(OS()->setRefCounts(this)) {}
    ~PlainCounts() { OS()->setRefCounts(previous_); }
    void increment(std::uint32_t& count) noexcept override {
        ++count;
        ++ups;
    }
    std::uint32_t decrement(std::uint32_t& count) noexcept override {
        ++downs;
        return --count;
    }
    int ups = 0;
    int downs = 0;

private:
    iRefCountService* previous_;
};

}  // namespace

TEST(RefCounts, ReplacementCountsStringsAndSharedObjects) {
    struct Thing : Quor::InternalRefCount {};
    PlainCounts counts;
    {
        const S text("abc");
        const S copy(text);
        EXPECT_EQ(counts.ups, 1);
        const Quor::Ptr<Thing> thing(new Thing);
        const Quor::Ptr<Thing> share(thing);
        EXPECT_EQ(counts.ups, 3);
    }
    EXPECT_EQ(counts.downs, 4);
}

TEST(RefCounts, ReplacementAddsManyAtOnceOneByOne) {
    PlainCounts counts;
    std::uint32_t count = 0;
    OS()->refCounts()->increaseBy(count, 3);
    EXPECT_EQ(count, 3u);
    EXPECT_EQ(counts.ups, 3);
}
