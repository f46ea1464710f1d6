#include <vekdb/host/text_file.h>
#include "host/disk_flush.h"
#include "host/posix/file_io.h"
#include "host/text_in_pieces.h"

#include "testing/failing_allocator.h"
#include "testing/failing_calls.h"
#include "testing/print_strings.h"
#include "testing/temp_dir.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using testing_support::TempDir;
using Names = std::vector<std::string>;

LightweightString<wchar_t> wide(const char* path) {
    return fromUTF8(LightweightString<char>(path));
}

unsigned modeOf(const TempDir& folder, const char* name) {
    struct stat status {};
    EXPECT_EQ(::lstat(folder.file(name).c_str(), &status), 0);
    return status.st_mode & 07777;
}

class TextFileSave : public ::testing::Test {
protected:
    TextFileSave() {
        file.appendLine("one");
        file.appendLine("two");
    }

    bool save(const char* name, TextFile::eEOLStyle style = TextFile::eLF) const {
        return file.save(folder.widePath(name), style);
    }

    TempDir folder;
    TextFile file;
};

TEST_F(TextFileSave, StyleOneEndsEveryLineWithALineFeed) {
    EXPECT_TRUE(save("out", TextFile::eEOLStyle(1)));
    EXPECT_EQ(folder.read("out"), "one\ntwo\n");
}

TEST_F(TextFileSave, StyleZeroIsThePlatformsOwn) {
    EXPECT_TRUE(save("out", TextFile::eEOLStyle(0)));
    EXPECT_EQ(folder.read("out"), "one\ntwo\n");
}

TEST_F(TextFileSave, StyleTwoEndsLinesWithCarriageReturnAndLineFeed) {
    EXPECT_TRUE(save("out", TextFile::eEOLStyle(2)));
    EXPECT_EQ(folder.read("out"), "one\r\ntwo\r\n");
}

TEST_F(TextFileSave, StyleThreeEndsLinesWithACarriageReturn) {
    EXPECT_TRUE(save("out", TextFile::eEOLStyle(3)));
    EXPECT_EQ(folder.read("out"), "one\rtwo\r");
}

TEST_F(TextFileSave, UnknownStyleIsALineFeed) {
    EXPECT_TRUE(save("out", TextFile::eEOLStyle(-1)));
    EXPECT_EQ(folder.read("out"), "one\ntwo\n");
}

TEST_F(TextFileSave, NoLinesGiveAnEmptyFile) {
    for (const auto style : {TextFile::eLF, TextFile::eCRLF}) {
        EXPECT_TRUE(TextFile().save(folder.widePath("out"), style));
        EXPECT_EQ(folder.read("out"), "");
    }
}

TEST_F(TextFileSave, LoadedLinesAreWrittenWithTheAskedEndOfLine) {
    folder.write("in", std::string_view("a\r\nb\0x\n\nc", 9));
    ASSERT_TRUE(file.load(folder.widePath("in"), '\n', false));
    file.appendLine("d");
    EXPECT_TRUE(save("lf"));
    EXPECT_TRUE(save("crlf", TextFile::eCRLF));
    EXPECT_EQ(folder.read("lf"), "a\nb\n\nc\nd\n");
    EXPECT_EQ(folder.read("crlf"), "a\r\nb\r\n\r\nc\r\nd\r\n");
}

TEST_F(TextFileSave, AppendedTextIsWrittenAsItStands) {
    file.appendLine("a\nb\r");
    EXPECT_TRUE(save("lf"));
    EXPECT_TRUE(save("crlf", TextFile::eCRLF));
    EXPECT_EQ(folder.read("lf"), "one\ntwo\na\nb\r\n");
    EXPECT_EQ(folder.read("crlf"), "one\r\ntwo\r\na\nb\r\r\n");
}

TEST_F(TextFileSave, SavingChangesNothingInTheFile) {
    file.currentLine = 1;
    EXPECT_TRUE(save("out", TextFile::eCRLF));
    EXPECT_TRUE(save("again"));
    EXPECT_EQ(folder.read("again"), "one\ntwo\n");
    EXPECT_EQ(file.currentLine, 1u);
}

TEST_F(TextFileSave, LongLinesAndManyLinesAreWrittenWhole) {
    std::string expected = "one\r\ntwo\r\n";
    for (const std::size_t length : {300000u, 10u, 262143u, 262144u, 262145u, 0u}) {
        const std::string line(length, 'x');
        file.appendLine(std::string_view(line));
        expected += line + "\r\n";
    }
    for (int i = 0; i < 50000; ++i) {
        file.appendLine("abcdefg");
        expected += "abcdefg\r\n";
    }
    EXPECT_TRUE(save("out", TextFile::eCRLF));
    EXPECT_TRUE(folder.read("out") == expected);
}

TEST_F(TextFileSave, ReplacesTheOldFile) {
    folder.write("out", "a much longer text than the new one\n");
    EXPECT_TRUE(save("out"));
    EXPECT_EQ(folder.read("out"), "one\ntwo\n");
    EXPECT_EQ(folder.names(), Names{"out"});
}

TEST_F(TextFileSave, WhoHasTheOldFileOpenKeepsReadingIt) {
    folder.write("out", "old\n");
    std::ifstream old(folder.file("out"));
    EXPECT_TRUE(save("out"));
    std::string text;
    std::getline(old, text);
    EXPECT_EQ(text, "old");
}

TEST_F(TextFileSave, KeepsTheModeOfTheOldFile) {
    for (const unsigned mode : {0600u, 0644u, 0666u, 0751u}) {
        folder.write("out", "old\n");
        ASSERT_EQ(::chmod(folder.file("out").c_str(), mode), 0);
        EXPECT_TRUE(save("out"));
        EXPECT_EQ(modeOf(folder, "out"), mode);
    }
}

// Only the superuser may give a file away; for others the owner is themselves.
TEST_F(TextFileSave, KeepsTheOwnerOfTheOldFile) {
    folder.write("out", "old\n");
    const bool given = ::chown(folder.file("out").c_str(), 1234, 1235) == 0;
    ASSERT_EQ(::chmod(folder.file("out").c_str(), 04755), 0);
    EXPECT_TRUE(save("out"));
    struct stat status {};
    ASSERT_EQ(::stat(folder.file("out").c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, given ? 1234 : ::geteuid());
    EXPECT_EQ(status.st_gid, given ? 1235 : ::getegid());
    EXPECT_EQ(modeOf(folder, "out"), 04755u);
}

TEST_F(TextFileSave, NewFileHasTheUsualMode) {
    const mode_t before = ::umask(027);
    EXPECT_TRUE(save("out"));
    ::umask(before);
    EXPECT_EQ(modeOf(folder, "out"), 0640u);
}

TEST_F(TextFileSave, LinkIsKeptAndItsTargetReplaced) {
    ASSERT_EQ(::mkdir(folder.file("there").c_str(), 0700), 0);
    folder.write("there/real", "old\n");
    ASSERT_EQ(::chmod(folder.file("there/real").c_str(), 0604), 0);
    ASSERT_EQ(::symlink("there/real", folder.file("second").c_str()), 0);
    ASSERT_EQ(::symlink(folder.file("second").c_str(), folder.file("first").c_str()), 0);
    EXPECT_TRUE(save("first"));
    EXPECT_EQ(folder.read("there/real"), "one\ntwo\n");
    EXPECT_EQ(modeOf(folder, "there/real"), 0604u);
    EXPECT_TRUE(std::filesystem::is_symlink(folder.file("first")));
    EXPECT_TRUE(std::filesystem::is_symlink(folder.file("second")));
    EXPECT_EQ(folder.names(), (Names{"first", "second", "there"}));
}

TEST_F(TextFileSave, LinkToNothingGetsItsTarget) {
    ASSERT_EQ(::symlink("real", folder.file("link").c_str()), 0);
    EXPECT_TRUE(save("link"));
    EXPECT_EQ(folder.read("real"), "one\ntwo\n");
    EXPECT_TRUE(std::filesystem::is_symlink(folder.file("link")));
}

TEST_F(TextFileSave, LoopOfLinksFails) {
    ASSERT_EQ(::symlink("b", folder.file("a").c_str()), 0);
    ASSERT_EQ(::symlink("a", folder.file("b").c_str()), 0);
    EXPECT_FALSE(save("a"));
    EXPECT_EQ(folder.names(), (Names{"a", "b"}));
}

TEST_F(TextFileSave, NeverTouchesTheNameWithTmpBehindIt) {
    folder.write("out", "old\n");
    folder.write("out.tmp", "somebody's\n");
    EXPECT_TRUE(save("out"));
    EXPECT_EQ(folder.read("out"), "one\ntwo\n");
    EXPECT_EQ(folder.read("out.tmp"), "somebody's\n");
    EXPECT_EQ(folder.names(), (Names{"out", "out.tmp"}));
}

TEST_F(TextFileSave, LongestNameCanBeSaved) {
    const std::string name(255, 'n');
    EXPECT_TRUE(save(name.c_str()));
    EXPECT_TRUE(save(name.c_str()));
    EXPECT_EQ(folder.read(name), "one\ntwo\n");
}

TEST_F(TextFileSave, NameWithoutAFolderIsInTheCurrentOne) {
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(folder.path());
    const bool saved = file.save(wide("out"), TextFile::eLF);
    const bool again = file.save(wide("out"), TextFile::eLF);
    std::filesystem::current_path(before);
    EXPECT_TRUE(saved);
    EXPECT_TRUE(again);
    EXPECT_EQ(folder.read("out"), "one\ntwo\n");
}

TEST_F(TextFileSave, NamesAreUtf8Bytes) {
    EXPECT_TRUE(file.save(folder.widePath("") + L"r\x00E9l \x1F3AC", TextFile::eLF));
    EXPECT_EQ(folder.names(), Names{"r\xC3\xA9l \xF0\x9F\x8E\xAC"});
}

TEST_F(TextFileSave, PathsThatNameNoFileFail) {
    EXPECT_FALSE(file.save(LightweightString<wchar_t>(), TextFile::eLF));
    EXPECT_FALSE(file.save(folder.widePath("out") + L"\x110000", TextFile::eLF));
    EXPECT_FALSE(save(""));
    EXPECT_FALSE(save("out/"));
    EXPECT_FALSE(save("none/out"));
    EXPECT_EQ(folder.names(), Names{});
}

TEST_F(TextFileSave, FolderInTheTargetsPlaceStays) {
    ASSERT_EQ(::mkdir(folder.file("out").c_str(), 0700), 0);
    EXPECT_FALSE(save("out"));
    EXPECT_TRUE(std::filesystem::is_directory(folder.file("out")));
    EXPECT_EQ(folder.names(), Names{"out"});
}

TEST_F(TextFileSave, UnderAFileFails) {
    folder.write("plain", "old\n");
    EXPECT_FALSE(save("plain/out"));
    EXPECT_EQ(folder.read("plain"), "old\n");
}

TEST_F(TextFileSave, FolderThatTakesNoFilesFails) {
    EXPECT_FALSE(file.save(wide("/proc/vekdb-test"), TextFile::eLF));
    EXPECT_FALSE(file.save(wide("/proc/self/comm"), TextFile::eLF));
}

// For users whom modes bind; for the superuser the condition is told apart.
TEST_F(TextFileSave, WriteProtectionIsObeyed) {
    folder.write("out", "old\n");
    ASSERT_EQ(::chmod(folder.file("out").c_str(), 0444), 0);
    const bool binds = ::access(folder.file("out").c_str(), W_OK) != 0;
    EXPECT_EQ(save("out"), !binds);
    EXPECT_EQ(folder.read("out"), binds ? "old\n" : "one\ntwo\n");
    EXPECT_EQ(modeOf(folder, "out"), 0444u);
    EXPECT_EQ(folder.names(), Names{"out"});
}

TEST_F(TextFileSave, FullDeviceIsReported) {
    EXPECT_FALSE(file.save(wide("/dev/full"), TextFile::eLF));
    EXPECT_FALSE(file.save(wide("/dev/full"), TextFile::eCRLF));
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
}

TEST_F(TextFileSave, DeviceIsWrittenToDirectly) {
    EXPECT_TRUE(file.save(wide("/dev/null"), TextFile::eLF));
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST_F(TextFileSave, FifoIsWrittenToDirectly) {
    ASSERT_EQ(::mkfifo(folder.file("fifo").c_str(), 0600), 0);
    std::string received;
    std::thread reader([&] { received = folder.read("fifo"); });
    EXPECT_TRUE(save("fifo"));
    reader.join();
    EXPECT_EQ(received, "one\ntwo\n");
    EXPECT_TRUE(std::filesystem::is_fifo(folder.file("fifo")));
    EXPECT_EQ(folder.names(), Names{"fifo"});
}

TEST_F(TextFileSave, StandardOutputThatIsAPipeIsWrittenTo) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(ends[1], STDOUT_FILENO);
        ::_exit(file.save(wide("/dev/stdout"), TextFile::eLF) ? 0 : 1);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    ::close(ends[1]);
    char received[64] = "";
    EXPECT_EQ(::read(ends[0], received, sizeof received - 1), 8);
    ::close(ends[0]);
    EXPECT_EQ(status, 0);
    EXPECT_STREQ(received, "one\ntwo\n");
}

TEST_F(TextFileSave, ReaderThatLeavesAFifoIsAFailure) {
    ASSERT_EQ(::mkfifo(folder.file("fifo").c_str(), 0600), 0);
    const std::string line(1000000, 'x');
    file.appendLine(std::string_view(line));
    std::thread reader([&] { ::close(::open(folder.file("fifo").c_str(), O_RDONLY)); });
    EXPECT_FALSE(save("fifo"));
    reader.join();
}

// Runs a check in a process of its own, where files have a largest size.
int inProcessWithFileLimit(rlim_t bytes, bool (*check)(const TempDir&), const TempDir& folder) {
    const pid_t child = ::fork();
    if (child == 0) {
        const rlimit limit{bytes, bytes};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        ::_exit(check(folder) ? 0 : 1);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    return status;
}

bool longSaveFails(const TempDir& folder) {
    TextFile file;
    const std::string line(100000, 'x');
    file.appendLine(std::string_view(line));
    return !file.save(folder.widePath("out"), TextFile::eLF);
}

TEST_F(TextFileSave, DiskThatFillsUpLeavesTheOldFileAndNoLitter) {
    folder.write("out", "old\n");
    EXPECT_EQ(inProcessWithFileLimit(50000, longSaveFails, folder), 0);
    EXPECT_EQ(folder.read("out"), "old\n");
    EXPECT_EQ(folder.names(), Names{"out"});
}

TEST_F(TextFileSave, DeviceThatFailsOnClosingIsReported) {
    const FileIO::SystemCalls before = FileIO::systemCalls();
    FileIO::systemCalls().close = [](int closed) {
        ::close(closed);
        errno = EIO;
        return -1;
    };
    EXPECT_FALSE(file.save(wide("/dev/null"), TextFile::eLF));
    FileIO::systemCalls() = before;
}

TEST_F(TextFileSave, DiskThatFillsUpLeavesNoNewFile) {
    EXPECT_EQ(inProcessWithFileLimit(0, longSaveFails, folder), 0);
    EXPECT_EQ(folder.names(), Names{});
}

// Lines that take more room than is kept of them.
class TextFileSaveWhileMade : public ::testing::Test {
protected:
    void makeLines() {
        for (int i = 0; i < 30000; ++i) {
            const std::string line = "line " + std::to_string(i) + std::string(i % 97, '.');
            made += line + "\n";
            file.appendLine(line.c_str());
        }
    }

    TempDir folder;
    TextFile file;
    std::string made;
};

TEST_F(TextFileSaveWhileMade, GivesTheFileThatASaveGivesAndLeavesNoLines) {
    file.appendLine("before");
    TextInPieces::beginSave(file, folder.widePath("out"));
    makeLines();
    EXPECT_TRUE(TextInPieces::endSave(file));
    EXPECT_EQ(folder.read("out"), "before\n" + made);
    EXPECT_EQ(folder.names(), Names{"out"});
    EXPECT_EQ(file.size(), 0u);
    EXPECT_EQ(file.textSize(), 0u);
}

TEST_F(TextFileSaveWhileMade, AFifoIsOpenedWhenAllLinesAreMade) {
    ASSERT_EQ(::mkfifo(folder.file("out").c_str(), 0600), 0);
    std::string received;
    TextInPieces::beginSave(file, folder.widePath("out"));
    makeLines();
    EXPECT_EQ(file.textSize(), made.size());
    std::thread reader([&] { received = folder.read("out"); });
    EXPECT_TRUE(TextInPieces::endSave(file));
    reader.join();
    EXPECT_TRUE(received == made);
}

TEST_F(TextFileSaveWhileMade, NoLinesAreAnEmptyFile) {
    TextInPieces::beginSave(file, folder.widePath("out"));
    EXPECT_TRUE(TextInPieces::endSave(file));
    EXPECT_EQ(folder.read("out"), "");
}

TEST_F(TextFileSaveWhileMade, KeepsOnlyAPartOfTheLinesInMemory) {
    TextInPieces::beginSave(file, folder.widePath("out"));
    makeLines();
    EXPECT_LT(file.textSize(), made.size() / 2);
}

TEST_F(TextFileSaveWhileMade, FailsWherePathOrFolderIsNone) {
    for (const auto& path : {LightweightString<wchar_t>(), folder.widePath("no/out")}) {
        TextInPieces::beginSave(file, path);
        makeLines();
        EXPECT_FALSE(TextInPieces::endSave(file));
        EXPECT_EQ(file.size(), 0u);
    }
    EXPECT_EQ(folder.names(), Names{});
}

TEST_F(TextFileSaveWhileMade, AbandonedLeavesTheOldFileAndNoLitter) {
    folder.write("out", "old\n");
    {
        TextFile abandoned;
        TextInPieces::beginSave(abandoned, folder.widePath("out"));
        abandoned.appendLine("new");
    }
    EXPECT_EQ(folder.read("out"), "old\n");
    EXPECT_EQ(folder.names(), Names{"out"});
}

TEST_F(TextFileSaveWhileMade, AFailedWriteLeavesTheOldFileAndNoLitter) {
    folder.write("out", "old\n");
    static int writes;
    writes = 0;
    const FileIO::SystemCalls before = FileIO::systemCalls();
    FileIO::systemCalls().write = [](int to, const void* from, std::size_t size) {
        return ++writes == 2 ? ssize_t{-1} : ::write(to, from, size);
    };
    TextInPieces::beginSave(file, folder.widePath("out"));
    makeLines();
    EXPECT_FALSE(TextInPieces::endSave(file));
    FileIO::systemCalls() = before;
    EXPECT_EQ(writes, 2);
    EXPECT_EQ(folder.read("out"), "old\n");
    EXPECT_EQ(folder.names(), Names{"out"});
}

TEST_F(TextFileSaveWhileMade, WaitsForTheDiskUnlessToldNotTo) {
    static int waits;
    const FileIO::SystemCalls before = FileIO::systemCalls();
    const bool syncBefore = DiskFlush::isOn;
    FileIO::systemCalls().sync = [](int to) {
        ++waits;
        return ::fsync(to);
    };
    for (const bool sync : {false, true}) {
        waits = 0;
        DiskFlush::isOn = sync;
        TextInPieces::beginSave(file, folder.widePath("out"));
        file.appendLine("line");
        EXPECT_TRUE(TextInPieces::endSave(file));
        EXPECT_EQ(waits > 0, sync);
    }
    DiskFlush::isOn = syncBefore;
    FileIO::systemCalls() = before;
}

TEST_F(TextFileSaveWhileMade, AFifoIsOpenedAlsoWhereThereAreNoLines) {
    const std::string path = folder.file("fifo").string();
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    const int reader = ::open(path.c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    TextInPieces::beginSave(file, folder.widePath("fifo"));
    EXPECT_TRUE(TextInPieces::endSave(file));
    char byte;
    EXPECT_EQ(::read(reader, &byte, 1), 0);
    ::close(reader);
}

TEST_F(TextFileSaveWhileMade, ALineMayBePartOfAnotherThatIsThere) {
    TextInPieces::beginSave(file, folder.widePath("out"));
    const std::string other(100000, 'a');
    for (int i = 0; i < 40; ++i) {
        const std::string_view line = i % 5 == 0 ? other : file.line(0);
        made.append(line).append("\n");
        file.appendLine(line);
    }
    EXPECT_TRUE(TextInPieces::endSave(file));
    EXPECT_TRUE(folder.read("out") == made);
}

TEST_F(TextFileSave, EveryFailingCallLeavesTheOldFileOrTheNewOneAndNoLitter) {
    const auto descriptors = testing_support::openDescriptors();
    bool fired = true;
    int failures = 0;
    for (unsigned n = 1; fired; ++n) {
        folder.write("out", "old\n");
        bool saved = false;
        {
            const testing_support::FailingCalls calls(n);
            saved = save("out");
            fired = calls.fired();
        }
        failures += !saved;
        EXPECT_EQ(folder.read("out"), saved ? "one\ntwo\n" : "old\n") << n;
        EXPECT_EQ(folder.names(), Names{"out"}) << n;
        EXPECT_EQ(testing_support::openDescriptors(), descriptors) << n;
    }
    // At least: looking up, opening, writing, mode, flushing, closing and renaming.
    EXPECT_GE(failures, 8);
}

TEST_F(TextFileSave, InterruptedWritesGoOn) {
    const FileIO::SystemCalls before = FileIO::systemCalls();
    FileIO::systemCalls().write = [](int to, const void* from, std::size_t) -> ssize_t {
        static int calls = 0;
        errno = EINTR;
        return ++calls % 2 == 1 ? -1 : ::write(to, from, 1);
    };
    EXPECT_TRUE(save("out"));
    FileIO::systemCalls() = before;
    EXPECT_EQ(folder.read("out"), "one\ntwo\n");
}

TEST_F(TextFileSave, WritesTheWholeTextInOneCall) {
    static int calls;
    calls = 0;
    const FileIO::SystemCalls before = FileIO::systemCalls();
    FileIO::systemCalls().write = [](int to, const void* from, std::size_t size) {
        ++calls;
        return ::write(to, from, size);
    };
    for (int i = 0; i < 100000; ++i) {
        file.appendLine("a line among many others");
    }
    EXPECT_TRUE(save("out"));
    FileIO::systemCalls() = before;
    EXPECT_EQ(calls, 1);
}

TEST_F(TextFileSave, WaitsForTheDiskUnlessToldNotTo) {
    static int calls;
    calls = 0;
    const FileIO::SystemCalls before = FileIO::systemCalls();
    FileIO::systemCalls().sync = [](int synced) {
        ++calls;
        return ::fsync(synced);
    };
    EXPECT_TRUE(DiskFlush::isOn);
    EXPECT_TRUE(save("out"));
    EXPECT_EQ(calls, 2);  // the file and its folder
    DiskFlush::isOn = false;
    EXPECT_TRUE(save("out"));
    DiskFlush::isOn = true;
    FileIO::systemCalls() = before;
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(folder.read("out"), "one\ntwo\n");
}

TEST_F(TextFileSave, MemoryFailureLeavesTheOldFileAndNoLitter) {
    folder.write("out", "old\n");
    const auto path = folder.widePath("out");
    const unsigned failures =
        testing_support::failEachAllocation([&] { file.save(path, TextFile::eCRLF); },
                                            [&] {
                                                EXPECT_EQ(folder.read("out"), "old\n");
                                                EXPECT_EQ(folder.names(), Names{"out"});
                                            });
    EXPECT_GE(failures, 1u);
    EXPECT_EQ(folder.read("out"), "one\r\ntwo\r\n");
}

}  // namespace
