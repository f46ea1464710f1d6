#include <gmock/gmock.h>

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <string>

#include <vekdb/table.h>
#include "host/disk_flush.h"
#include "host/posix/file_io.h"
#include "round_trip.h"
#include "testing/failing_allocator.h"
#include "testing/failing_calls.h"
#include "testing/quiet.h"
#include "testing/temp_dir.h"

using testing::ElementsAre;
using testing_support::CountingAllocator;
using testing_support::failEachAllocation;
using testing_support::Quiet;
using testing_support::TempDir;

namespace {

const std::string smallFile =
    "\"VEKDB:Rev 1\"\n"
    "\"Project:Night\"\n"
    "\"VEKDB\"\n"
    "\"10\",\"4\",\"100\",\"1\"\n"
    "\"text\",\"long\",\"text\",\"text\"\n"
    "\"Reel\",\"Take\",\"Notes\",\"Tag\"\n"
    "\"A001\",\"3\",\"He said \"\"cut\"\"\\nthen left\",\"0\"\n"
    "\"A002\",\"\",\"C:\\\\new, , x\",\"1\"\n";

// Damaged files are many: they need not reach the disk, nor developers' eyes.
class Damage : public testing::Test {
protected:
    void SetUp() override { DiskFlush::isOn = false; }
    void TearDown() override { DiskFlush::isOn = true; }

    std::string check(const std::string& name, const std::string& bytes) {
        folder_.write(name, bytes);
        return fuzz::checkTableFile(folder_.file(name).string());
    }

    void cutEverywhere(const std::string& name) {
        for (std::size_t length = 0; length <= smallFile.size(); ++length) {
            EXPECT_EQ(check(name, smallFile.substr(0, length)), "") << "cut at " << length;
        }
    }

    void alterEverywhere(const std::string& name, const std::string& values) {
        for (std::size_t at = 0; at < smallFile.size(); ++at) {
            for (char value : values) {
                std::string bytes = smallFile;
                bytes[at] = value;
                EXPECT_EQ(check(name, bytes), "") << "byte " << at << " is " << int(value);
            }
        }
    }

    TempDir folder_;
    Quiet quiet_;
};

const std::string telling("\0\n\r\t \",\\:&x\xFF", 12);

}  // namespace

TEST_F(Damage, AFileCutAtAnyLengthIsAnswered) {
    cutEverywhere("log.vek");
}

TEST_F(Damage, AFileWithAnyByteAlteredIsAnswered) {
    alterEverywhere("log.vek", telling);
}

TEST_F(Damage, AFileWithAnyByteTakenOutIsAnswered) {
    for (std::size_t at = 0; at < smallFile.size(); ++at) {
        std::string bytes = smallFile;
        bytes.erase(at, 1);
        EXPECT_EQ(check("log.vek", bytes), "") << "without byte " << at;
    }
}

TEST_F(Damage, PlainCommaSeparatedTextCutOrAlteredIsAnswered) {
    cutEverywhere("log.csv");
    alterEverywhere("log.csv", telling);
}

TEST_F(Damage, NoDamageLeaksABlock) {
    check("log.vek", smallFile);  // what a process keeps for good is taken now
    for (std::size_t length = 0; length <= smallFile.size(); length += 7) {
        folder_.write("log.vek", smallFile.substr(0, length));
        auto path = folder_.widePath("log.vek");
        CountingAllocator counting;
        { vekdb table(path, 100, false); }
        EXPECT_EQ(counting.liveBlocks(), 0) << "cut at " << length;
    }
}

TEST_F(Damage, AnyAllocationOfALoadMayFail) {
    folder_.write("log.vek", smallFile);
    auto path = folder_.widePath("log.vek");
    auto load = [&] { vekdb table(path, 100, true); };
    load();  // what a process keeps for good is taken now
    CountingAllocator counting;
    unsigned failures = failEachAllocation(load, [&] { EXPECT_EQ(counting.liveBlocks(), 0); });
    EXPECT_GT(failures, 5u);
}

TEST_F(Damage, ATableThatFailedToReloadForWantOfMemoryCanBeLoadedAgain) {
    folder_.write("log.vek", smallFile);
    vekdb table(folder_.widePath("log.vek"), 100, true);
    auto reload = [&] { table.loadFromFile(100, true); };
    unsigned failures = failEachAllocation(reload, [&] {
        table.loadFromFile(100, true);
        ASSERT_TRUE(table.get_valid());
        ASSERT_EQ(table.get_num_records(), 2u);
    });
    EXPECT_GT(failures, 5u);
}

// A table that held only the rows read so far and passed for valid would be saved over the rest.
// A parameter whose text finds no memory ends no load: it is empty.
TEST_F(Damage, ALoadThatMemoryCutsShortLeavesNoPartOfATable) {
    folder_.write("log.vek", smallFile);
    folder_.write("log.csv", "Reel,Take\nA001,3\nA002,4\n");
    for (const char* name : {"log.vek", "log.csv"}) {
        vekdb table(folder_.widePath(name), 100, true);
        bool loaded = false;
        auto reload = [&] {
            loaded = false;
            table.loadFromFile(100, true);
            loaded = true;
        };
        unsigned failures = failEachAllocation(reload, [&] {
            EXPECT_EQ(table.get_valid(), loaded);
            EXPECT_EQ(table.get_num_records(), loaded ? 2u : 0u);
            EXPECT_EQ(table.get_num_fields() == 0, !loaded);
            EXPECT_EQ(table.get_capacity(), loaded ? 500u : 0u);
        });
        EXPECT_GT(failures, 5u);
        EXPECT_EQ(table.get_num_records(), 2u);
    }
}

TEST_F(Damage, AnySystemCallOfALoadMayFail) {
    folder_.write("log.vek", smallFile);
    auto path = folder_.widePath("log.vek");
    unsigned calls = 0;
    for (bool fired = true; fired; ++calls) {
        testing_support::FailingCalls failing(calls + 1);
        vekdb table(path, 100, true);
        fired = failing.fired();
        bool whole = table.get_valid() && table.get_num_records() == 2;
        bool nothing = !table.get_valid() && table.get_num_records() == 0;
        EXPECT_TRUE(whole || (fired && nothing)) << "call " << calls + 1;
    }
    EXPECT_GT(calls, 2u);
}

namespace {

// A table whose file holds older text than itself.
class SavedLater : public Damage {
protected:
    void SetUp() override {
        DiskFlush::isOn = true;
        folder_.write("log.vek", smallFile);
        table_ = std::make_unique<vekdb>(folder_.widePath("log.vek"), 100, true);
        table_->set_field(0, 0, "B777");
    }

    std::string newText() {
        std::string text = smallFile;
        text.replace(text.find("A001"), 4, "B777");
        return text.replace(text.find("\"1\"\n", text.find("A002")), 3, "\"0\"");
    }

    // The file is the old or the new one, whole, and nothing else is left beside it.
    void expectWhole(bool saved) {
        EXPECT_EQ(folder_.read("log.vek"), saved ? newText() : smallFile);
        EXPECT_THAT(folder_.names(), ElementsAre("log.vek"));
        EXPECT_EQ(table_->get_num_records(), 2u);
        EXPECT_EQ(table_->getField(0, 0), "B777");
    }

    std::unique_ptr<vekdb> table_;
};

}  // namespace

TEST_F(SavedLater, AnyAllocationOfASaveMayFail) {
    unsigned failures =
        failEachAllocation([&] { EXPECT_EQ(table_->save_text(), 2); }, [&] { expectWhole(false); });
    EXPECT_GT(failures, 0u);
    expectWhole(true);
}

TEST_F(SavedLater, AnySystemCallOfASaveMayFail) {
    unsigned calls = 0;
    for (bool fired = true; fired; ++calls) {
        folder_.write("log.vek", smallFile);
        testing_support::FailingCalls failing(calls + 1);
        bool saved = table_->save_text() == 2;
        fired = failing.fired();
        EXPECT_TRUE(saved || fired);
        expectWhole(folder_.read("log.vek") != smallFile);
        EXPECT_TRUE(!saved || folder_.read("log.vek") == newText()) << "call " << calls + 1;
    }
    EXPECT_GT(calls, 4u);
}

namespace {

using testing_support::FailingCalls;

struct Disturbance {
    int error;
    FailingCalls::Failing failing;
};

constexpr Disturbance disturbances[] = {{EIO, FailingCalls::Failing::fromThereOn},
                                        {ENOSPC, FailingCalls::Failing::once},
                                        {EINTR, FailingCalls::Failing::once}};

// Reads and writes so much at most at a time, and is interrupted every other time.
class FewBytes {
public:
    explicit FewBytes(std::size_t most) : before_(FileIO::systemCalls()) {
        most_ = most;
        FileIO::SystemCalls& calls = FileIO::systemCalls();
        calls.read = [](int file, void* to, std::size_t size) {
            return isInterrupted() ? -1 : ::read(file, to, std::min(size, most_));
        };
        calls.readAt = [](int file, void* to, std::size_t size, off_t from) {
            return isInterrupted() ? -1 : ::pread(file, to, std::min(size, most_), from);
        };
        calls.write = [](int file, const void* from, std::size_t size) {
            return isInterrupted() ? -1 : ::write(file, from, std::min(size, most_));
        };
    }
    FewBytes(const FewBytes&) = delete;
    FewBytes& operator=(const FewBytes&) = delete;
    ~FewBytes() { FileIO::systemCalls() = before_; }

private:
    static bool isInterrupted() {
        static bool isOdd = false;
        isOdd = !isOdd;
        errno = EINTR;
        return isOdd;
    }

    static inline std::size_t most_ = 0;
    FileIO::SystemCalls before_;
};

}  // namespace

TEST_F(SavedLater, EveryKindOfFailureOfASaveLeavesOldOrNewAndNoDescriptor) {
    const auto descriptors = testing_support::openDescriptors();
    for (const Disturbance& disturbance : disturbances) {
        bool fired = true;
        for (unsigned n = 1; fired; ++n) {
            folder_.write("log.vek", smallFile);
            bool saved = false;
            {
                FailingCalls failing(n, disturbance.error, disturbance.failing);
                saved = table_->save_text() == 2;
                fired = failing.fired();
            }
            const std::string text = folder_.read("log.vek");
            EXPECT_TRUE(text == newText() || (!saved && text == smallFile)) << n << text;
            EXPECT_EQ(testing_support::openDescriptors(), descriptors) << n;
        }
        EXPECT_EQ(table_->save_text(), 2);
        EXPECT_THAT(folder_.names(), ElementsAre("log.vek"));
    }
}

TEST_F(Damage, EveryKindOfFailureOfALoadGivesAllRowsOrNone) {
    folder_.write("log.vek", smallFile);
    const auto path = folder_.widePath("log.vek");
    for (const Disturbance& disturbance : disturbances) {
        bool fired = true;
        for (unsigned n = 1; fired; ++n) {
            FailingCalls failing(n, disturbance.error, disturbance.failing);
            const vekdb table(path, 100, true);
            fired = failing.fired();
            EXPECT_EQ(table.get_num_records(), table.get_valid() ? 2u : 0u) << n;
            EXPECT_TRUE(table.get_valid() || fired) << n;
        }
    }
}

TEST_F(SavedLater, PiecesOfAFewBytesAndInterruptionsChangeNothing) {
    for (std::size_t most : {1u, 7u}) {
        const FewBytes few(most);
        EXPECT_EQ(table_->save_text(), 2);
        EXPECT_EQ(folder_.read("log.vek"), newText());
        const vekdb again(folder_.widePath("log.vek"), 100, true);
        EXPECT_EQ(again.get_num_records(), 2u);
    }
}
