// Loading a file in one go and reading its lines one by one must come to the same table.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <fstream>
#include <string>
#include <thread>

#include "testing/arrival.h"
#include "testing/capture_diagnostics.h"
#include "testing/failing_allocator.h"
#include "testing/random.h"
#include "testing/table_files.h"
#include "testing/temp_dir.h"
#include "vekdb/record/record_access.h"

namespace {

using testing_support::ArrivalOf;
using testing_support::BrokenPiece;
using testing_support::CaptureDiagnostics;
using testing_support::CountingAllocator;
using testing_support::errorOf;
using testing_support::failEachAllocation;
using testing_support::headerAnd;
using testing_support::headerOf;
using testing_support::joined;
using testing_support::quotedLine;
using testing_support::Random;
using testing_support::ReadingAhead;
using testing_support::rowsOf;
using testing_support::Strings;
using testing_support::TempDir;

constexpr int all = 1 << 30;

std::string randomValue(Random& random) {
    if (random.oneIn(8)) return random.text("\"\"\\n, \t\r\x01\x7F\xE9", 6);
    return random.text("abc ,", random.oneIn(20) ? 150 : 8);
}

std::string randomLine(Random& random, std::size_t columns) {
    if (random.oneIn(30)) return random.pick(Strings{"\"VEKDB\"", "vekdb,", " ", "\x01", "x"});
    if (random.oneIn(60)) return std::string(random.between(4000, 4200), 'x');
    Strings values(columns);
    for (std::string& value : values) value = randomValue(random);
    std::string line = quotedLine(values);
    if (random.oneIn(20)) {
        line[random.below(line.size())] = random.pick(std::string("\",\\ \0a", 6));
    }
    return line;
}

std::string randomFile(Random& random, std::size_t columns) {
    std::string text = joined(headerOf(Strings(columns, "Column")));
    for (std::size_t lines = random.below(60); lines > 0; --lines) {
        text += randomLine(random, columns) + random.pick(Strings{"\n", "\n", "\n", "\r\n"});
    }
    if (random.oneIn(3)) text.pop_back();
    return text;
}

struct Outcome {
    std::vector<Strings> rows;
    unsigned capacity;
    std::vector<int> error;
    std::vector<std::string> said;
    bool stamped;
    bool operator==(const Outcome&) const = default;
};

Outcome outcomeOf(const vekdb& table, const CaptureDiagnostics& said) {
    return {rowsOf(table), table.get_capacity(), errorOf(table), said.messages,
            table.get_modification_time() != 0};
}

Outcome loadInOneGo(const TempDir& folder, int most) {
    CaptureDiagnostics said;
    const vekdb table(folder.widePath("log"), most, true);
    EXPECT_FALSE(table.get_modified());
    for (unsigned row = 0; row < table.get_num_records(); ++row) {
        EXPECT_FALSE(table.get_record(row)->get_changed());
    }
    return outcomeOf(table, said);
}

Outcome loadLineByLine(const TempDir& folder, int most) {
    vekdb table(folder.widePath("log"), 0, true);
    CaptureDiagnostics said;
    TextFile file;
    EXPECT_TRUE(file.load(folder.widePath("log"), '\n', false));
    file.currentLine = 5;
    table.add_text(file, 0, most);
    return outcomeOf(table, said);
}

TEST(WaysToLoad, ComeToTheSameTable) {
    Random random;
    const TempDir folder;
    for (int i = 0; i < 600; ++i) {
        const std::string text = randomFile(random, 1 + random.below(4));
        folder.write("log", text);
        const int most = random.oneIn(4) ? random.between(-1, 30) : all;
        ASSERT_TRUE(loadInOneGo(folder, most) == loadLineByLine(folder, most)) << text;
    }
}

TEST(WaysToLoad, AFileThatIsStillComingMakesTheSameTable) {
    Random random;
    const TempDir folder;
    for (int i = 0; i < 600; ++i) {
        const std::string text = randomFile(random, 1 + random.below(4));
        folder.write("log", text);
        const int most = random.oneIn(4) ? random.between(-1, 30) : all;
        const Outcome atOnce = loadInOneGo(folder, most);
        const ArrivalOf pieces(1 + random.below(random.oneIn(2) ? 20 : 5000));
        const ReadingAhead ahead(random.oneIn(2));
        ASSERT_TRUE(loadInOneGo(folder, most) == atOnce) << text;
    }
}

// The longest line that is told apart in one look, and each piece that may end around its end.
TEST(WaysToLoad, AFileMayComeUpToAnyByteAroundTheEndOfALongLine) {
    const TempDir folder;
    for (const std::size_t size : {4094u, 4095u, 4096u}) {
        const Strings values(5, std::string((size - 14) / 5, 'v'));
        std::string line = quotedLine(values);
        line.insert(1, size - line.size(), 'w');
        const std::string front =
            joined(headerAnd(Strings(5, "Column"), {quotedLine(Strings(5, "front"))}));
        folder.write("log", front + line + "\r\n" + line + "\r\n");
        for (std::size_t behind = size - 5; behind < size + 10; ++behind) {
            const ArrivalOf pieces(front.size() + behind);
            const vekdb table(folder.widePath("log"), all, true);
            ASSERT_EQ(3u, table.get_num_records()) << size << ' ' << behind;
        }
    }
}

TEST(WaysToLoad, AFileThatBreaksOffIsReadInThePlainWayAndElseLeavesNothing) {
    const TempDir folder;
    folder.write("log", joined(headerAnd({"A"}, Strings(100, "\"value\""))));
    const ArrivalOf pieces(16);
    for (int failAt = 1; failAt < 50; ++failAt) {
        for (const bool thenWorks : {true, false}) {
            const ReadingAhead ahead(failAt % 2 == 0);
            const BrokenPiece broken(failAt, thenWorks);
            const vekdb table(folder.widePath("log"), all, true);
            EXPECT_EQ(thenWorks, table.get_valid());
            EXPECT_EQ(thenWorks ? 100u : 0u, table.get_num_records());
            EXPECT_EQ(thenWorks ? 1u : 0u, table.get_num_params());
            EXPECT_EQ(thenWorks ? 500u : 0u, table.get_capacity());
        }
    }
}

// Files of twenty rows and one more that the loader stops at, in the header or behind it.
Strings filesThatEndEarly() {
    const Strings rows(20, "\"value\"");
    Strings files;
    for (const char* stop : {"", "two,values", "\"VEKDB\""}) {
        Strings lines = headerAnd({"A"}, rows);
        lines.push_back(stop);
        lines.insert(lines.end(), rows.begin(), rows.end());
        files.push_back(joined(lines));
    }
    Strings header = headerAnd({"A"}, rows);
    header[0] = "\"VEKDB:Rev 2\"";
    header[4] = "\"A\",\"B\"";
    files.push_back(joined(header));
    return files;
}

TEST(WaysToLoad, AFileThatBreaksOffLeavesNothingHoweverLittleOfItIsWanted) {
    const TempDir folder;
    for (const std::string& text : filesThatEndEarly()) {
        folder.write("log", text);
        const ArrivalOf pieces(16);
        for (const int most : {0, 3, all}) {
            for (std::size_t failAt = 1; failAt <= text.size() / 16; ++failAt) {
                const BrokenPiece broken(static_cast<int>(failAt), false);
                const CaptureDiagnostics said;
                const vekdb table(folder.widePath("log"), most, true);
                ASSERT_FALSE(table.get_valid()) << text;
                ASSERT_EQ(0u, table.get_num_params() + table.get_num_fields());
                ASSERT_EQ(std::vector<int>{}, errorOf(table));
                ASSERT_EQ(Strings{}, said.messages);
                ASSERT_EQ(0, table.get_modification_time());
            }
        }
    }
}

// What a load says of why it could not read its file.
int readErrorOf(const LightweightString<wchar_t>& path) {
    const vekdb table(path, all, true);
    EXPECT_TRUE(table.get_read_error() == 0 || !table.get_valid());
    EXPECT_EQ(std::vector<int>{}, errorOf(table));
    return table.get_read_error();
}

// The system's calls with a reading that fails from the n-th piece on.
class FailingReads {
public:
    explicit FailingReads(int failAt) : before_(FileIO::systemCalls()) {
        left_ = failAt;
        FileIO::systemCalls().read = [](int file, void* to, std::size_t size) {
            return isDue() ? ssize_t{-1} : ::read(file, to, size);
        };
        FileIO::systemCalls().readAt = [](int file, void* to, std::size_t size, off_t from) {
            return isDue() ? ssize_t{-1} : ::pread(file, to, size, from);
        };
    }
    FailingReads(const FailingReads&) = delete;
    FailingReads& operator=(const FailingReads&) = delete;
    ~FailingReads() { FileIO::systemCalls() = before_; }

private:
    static bool isDue() {
        errno = EIO;
        return --left_ <= 0;
    }

    static inline int left_ = 0;
    FileIO::SystemCalls before_;
};

TEST(WaysToLoad, AnInputErrorIsToldAsOneWhereverItHappens) {
    const TempDir folder;
    for (const std::string& text : filesThatEndEarly()) {
        folder.write("log", text);
        for (const std::size_t leastBytes : {std::size_t{1}, std::size_t{1} << 20}) {
            const ArrivalOf pieces(16, leastBytes);
            const int reads = leastBytes == 1 ? static_cast<int>(text.size() / 16) : 2;
            for (int failAt = 1; failAt <= reads; ++failAt) {
                const FailingReads failing(failAt);
                ASSERT_EQ(EIO, readErrorOf(folder.widePath("log"))) << text << failAt;
            }
        }
    }
}

TEST(WaysToLoad, WhatCannotBeReadIsToldByItsError) {
    const TempDir folder;
    EXPECT_EQ(ENOENT, readErrorOf(folder.widePath("none")));
    EXPECT_EQ(EISDIR, readErrorOf(folder.widePath(".")));
    EXPECT_EQ(EINVAL, readErrorOf(LightweightString<wchar_t>()));
    EXPECT_EQ(EFBIG, readErrorOf(LightweightString<wchar_t>(L"/dev/zero")));
    folder.write("log", "no table");
    EXPECT_EQ(0, readErrorOf(folder.widePath("log")));
    vekdb table(folder.widePath("none"), all, true);
    table.free();
    EXPECT_EQ(0, table.get_read_error());
}

// Writes the file anew, with the same size, whenever some of it has been read.
class Rewriting {
public:
    Rewriting(const TempDir& folder, int times) : before_(FileIO::systemCalls()) {
        path_ = folder.file("log").string();
        times_ = times;
        FileIO::systemCalls().read = [](int file, void* to, std::size_t size) {
            const ssize_t got = ::read(file, to, size);
            if (got > 0) rewrite();
            return got;
        };
        FileIO::systemCalls().readAt = [](int file, void* to, std::size_t size, off_t from) {
            const ssize_t got = ::pread(file, to, size, from);
            if (got > 0 && from == 0) rewrite();
            return got;
        };
    }
    Rewriting(const Rewriting&) = delete;
    Rewriting& operator=(const Rewriting&) = delete;
    ~Rewriting() { FileIO::systemCalls() = before_; }

private:
    static void rewrite() {
        if (times_-- <= 0) return;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        std::fstream file(path_, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(-3, std::ios::end);
        file << "x\"\n";
    }

    static inline std::string path_;
    static inline int times_ = 0;
    FileIO::SystemCalls before_;
};

TEST(WaysToLoad, AFileRewrittenAtTheSameSizeIsReadAgainOrRefused) {
    const TempDir folder;
    const std::string text = joined(headerAnd({"A"}, Strings(20, "\"value\"")));
    for (const std::size_t leastBytes : {std::size_t{1}, std::size_t{1} << 20}) {
        const ArrivalOf pieces(16, leastBytes);
        folder.write("log", text);
        {
            const Rewriting once(folder, 1);
            const vekdb table(folder.widePath("log"), all, true);
            ASSERT_EQ(20u, table.get_num_records());
            EXPECT_EQ("valux", table.get_record(19)->fieldView(0));
        }
        const Rewriting always(folder, 100);
        EXPECT_EQ(EBUSY, readErrorOf(folder.widePath("log")));
    }
}

TEST(WaysToLoad, AnOpenFileIsReadFromItsFirstByteAndStaysOpen) {
    const TempDir folder;
    folder.write("log", joined(headerAnd({"A"}, Strings(20, "\"value\""))));
    for (const std::size_t leastBytes : {std::size_t{1}, std::size_t{1} << 20}) {
        const ArrivalOf pieces(16, leastBytes);
        const FileIO::Descriptor file(FileIO::openToRead(folder.file("log").c_str()));
        vekdb table;
        table.set_filename(L"another name");
        for (int i = 0; i < 3; ++i) {
            ASSERT_EQ(5, ::lseek(file.get(), 5, SEEK_SET));
            table.loadFromDescriptor(file.get(), 7, true);
            EXPECT_TRUE(table.get_valid());
            EXPECT_EQ(7u, table.get_num_records());
        }
        EXPECT_TRUE(table.get_filename() == L"another name");
        table.loadFromDescriptor(-1, all, true);
        EXPECT_FALSE(table.get_valid());
        EXPECT_EQ(EBADF, table.get_read_error());
    }
}

// The whole file would take a while, and more memory than there may be.
TEST(WaysToLoad, AFileThatIsNoTableIsNotReadOnForItsFirstLine) {
    const TempDir folder;
    static std::size_t bytes;
    for (const std::string& start :
         {std::string(), std::string("some text"), std::string(20, ' ') + "\"VEKDB\",",
          std::string("\"VEKDB;")}) {
        folder.write("log", start);
        ASSERT_EQ(0, ::truncate(folder.file("log").c_str(), off_t{1} << 28));
        bytes = 0;
        const FileIO::SystemCalls before = FileIO::systemCalls();
        FileIO::systemCalls().readAt = [](int file, void* to, std::size_t size, off_t from) {
            bytes += size;
            return ::pread(file, to, size, from);
        };
        const vekdb table(folder.widePath("log"), all, true);
        FileIO::systemCalls() = before;
        EXPECT_FALSE(table.get_valid());
        EXPECT_EQ(0, table.get_read_error());
        EXPECT_LE(bytes, std::size_t{1} << 20) << start;
        EXPECT_GT(bytes, 0u);
    }
}

TEST(WaysToLoad, TheFirstLineOfATableMayComeInAnyPieces) {
    const TempDir folder;
    for (const char* first :
         {"VEKDB:Rev 1", "\"VEKDB:Rev 1\"", "\"  vekdb:Rev 1\"", "\x01VEKDB:1"}) {
        Strings lines = headerAnd({"A"}, Strings(3, "\"value\""));
        lines[0] = first;
        folder.write("log", joined(lines));
        const Outcome atOnce = loadInOneGo(folder, all);
        for (std::size_t piece = 1; piece < 20; ++piece) {
            const ArrivalOf pieces(piece);
            ASSERT_TRUE(loadInOneGo(folder, all) == atOnce) << first << piece;
            const vekdb table(folder.widePath("log"), all, true);
            ASSERT_EQ(3u, table.get_num_records());
        }
    }
}

TEST(WaysToLoad, NothingIsSaidTwiceOfAFileThatIsReadTwice) {
    const TempDir folder;
    for (const std::string& text : filesThatEndEarly()) {
        folder.write("log", text);
        const Outcome atOnce = loadInOneGo(folder, all);
        const ArrivalOf pieces(16);
        for (std::size_t failAt = 1; failAt <= text.size() / 16; ++failAt) {
            const BrokenPiece broken(static_cast<int>(failAt), true);
            ASSERT_TRUE(loadInOneGo(folder, all) == atOnce) << text;
        }
    }
}

// Whoever writes to a FIFO takes notice of each reader.
TEST(WaysToLoad, AFifoIsReadByTheFirstWhoOpensIt) {
    const TempDir folder;
    ASSERT_EQ(0, ::mkfifo(folder.file("log").c_str(), 0600));
    const std::string text = joined(headerAnd({"A"}, Strings(3, "\"value\"")));
    for (int i = 0; i < 20; ++i) {
        std::thread writer([&] { folder.write("log", text); });
        const vekdb table(folder.widePath("log"), all, true);
        writer.join();
        ASSERT_EQ(3u, table.get_num_records());
    }
}

TEST(WaysToLoad, LoadTextAndAddTextAppendTheSame) {
    Random random;
    const TempDir folder;
    for (int i = 0; i < 200; ++i) {
        folder.write("log", joined(headerOf({"Column"})) + randomFile(random, 1));
        const CaptureDiagnostics said;
        vekdb loaded(folder.widePath("log"), 0, true);
        vekdb added(folder.widePath("log"), 0, true);
        TextFile file;
        ASSERT_TRUE(file.load(folder.widePath("log"), '\n', false));
        ASSERT_EQ(added.add_text(file, 1, all), loaded.load_text(all));
        ASSERT_EQ(rowsOf(added), rowsOf(loaded));
        ASSERT_EQ(errorOf(added), errorOf(loaded));
        ASSERT_EQ(added.get_modified(), loaded.get_modified());
        for (unsigned row = 0; row < loaded.get_num_records(); ++row) {
            ASSERT_TRUE(loaded.get_record(row)->get_changed());
        }
    }
}

// Rows cost their bytes, in pieces of many rows.
TEST(LoadedRows, CostAtMostOneAllocationInAHundredRows) {
    const TempDir folder;
    Strings lines;
    for (int i = 0; i < 20000; ++i) {
        const std::string number = std::to_string(i);
        lines.push_back(i % 10 == 0 ? " moved , \"" + number + "\"" : quotedLine({"a", number}));
    }
    folder.write("log", joined(headerAnd({"A", "B"}, lines)));
    const CountingAllocator counted;
    const vekdb table(folder.widePath("log"), all, true);
    EXPECT_EQ(20000u, table.get_num_records());
    EXPECT_LE(counted.allocations(), 200);
}

// Far apart is where memory of its own begins.
template <class Place>
bool areFarApart(const Place* a, const Place* b) {
    const auto from = reinterpret_cast<std::uintptr_t>(a);
    return reinterpret_cast<std::uintptr_t>(b) - from > 2 * sizeof(Place);
}

TEST(LoadedRows, OfALargeFileStandTogetherFromTheFirstFewOn) {
    const TempDir folder;
    folder.write("log", joined(headerAnd({"A", "B"}, Strings(20000, "\"a\",\"b\""))));
    const vekdb table(folder.widePath("log"), all, true);
    unsigned records = 0;
    unsigned slices = 0;
    for (unsigned row = 1; row < table.get_num_records(); ++row) {
        const dbrecord* before = table.get_record(row - 1);
        const dbrecord* record = table.get_record(row);
        records += areFarApart(before, record);
        slices += areFarApart(RecordAccess::slices(*before), RecordAccess::slices(*record));
    }
    EXPECT_LE(records, 2u);
    EXPECT_LE(slices, 2u);
}

TEST(LoadedRows, NothingIsLeftOfAFailedLoad) {
    const TempDir folder;
    folder.write("log", joined(headerAnd({"A", "Start", "Long"},
                                         {"\"a\",\"b\",\"c\"", " d , e ,\"\"\"\"", "x,y,z"})));
    const vekdb whatStaysForTheProcess(folder.widePath("log"), all, true);
    long live = 0;
    const unsigned failures = failEachAllocation(
        [&] {
            const CountingAllocator counted;
            try {
                const vekdb table(folder.widePath("log"), all, true);
            } catch (const std::bad_alloc&) {
                live += counted.liveBlocks();
                throw;
            }
            live += counted.liveBlocks();
        },
        [&] { EXPECT_EQ(0, live); });
    EXPECT_GT(failures, 2u);
}

}  // namespace
