// What can be loaded as a text file, and what cannot.
#include <vekdb/host/text_file.h>
#include "host/posix/file_io.h"

#include "testing/print_strings.h"
#include "testing/temp_dir.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <string_view>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using testing_support::TempDir;

LightweightString<wchar_t> wide(const char* path) {
    return fromUTF8(LightweightString<char>(path));
}

bool canLoad(const LightweightString<wchar_t>& path) {
    TextFile file;
    const bool loaded = file.load(path, '\n', false);
    EXPECT_TRUE(loaded || file.size() == 0);
    return loaded;
}

TEST(TextFileSource, MissingFileFails) {
    const TempDir folder;
    EXPECT_FALSE(canLoad(folder.widePath("none")));
    EXPECT_FALSE(canLoad(folder.widePath("none/inside")));
}

TEST(TextFileSource, FolderFails) {
    const TempDir folder;
    EXPECT_FALSE(canLoad(folder.widePath(".")));
    ASSERT_EQ(::mkdir(folder.file("x.csv").c_str(), 0700), 0);
    EXPECT_FALSE(canLoad(folder.widePath("x.csv")));
}

TEST(TextFileSource, PathsThatNameNoFileFail) {
    const TempDir folder;
    folder.write("in", "a\n");
    EXPECT_FALSE(canLoad(LightweightString<wchar_t>()));
    LightweightString<wchar_t> path = folder.widePath("in");
    EXPECT_TRUE(canLoad(path));
    path.push_back(wchar_t(0xD800));
    EXPECT_FALSE(canLoad(path));
    EXPECT_FALSE(canLoad(folder.widePath("in") + L"\x110000"));
    EXPECT_FALSE(canLoad(folder.widePath("in/")));
}

TEST(TextFileSource, FailedLoadLeavesNoLines) {
    const TempDir folder;
    folder.write("in", "a\n");
    TextFile file;
    ASSERT_TRUE(file.load(folder.widePath("in"), '\n', false));
    file.currentLine = 1;
    EXPECT_FALSE(file.load(folder.widePath("none"), '\n', false));
    EXPECT_EQ(file.size(), 0u);
    EXPECT_EQ(file.currentLine, 0u);
}

TEST(TextFileSource, NamesAreUtf8Bytes) {
    const TempDir folder;
    folder.write("r\xC3\xA9l \xF0\x9F\x8E\xAC", "a\n");
    EXPECT_TRUE(canLoad(folder.widePath("") + L"r\x00E9l \x1F3AC"));
}

TEST(TextFileSource, LinksAreFollowed) {
    const TempDir folder;
    folder.write("in", "a\n");
    ASSERT_EQ(::symlink("in", folder.file("link").c_str()), 0);
    ASSERT_EQ(::symlink("loop", folder.file("loop").c_str()), 0);
    EXPECT_TRUE(canLoad(folder.widePath("link")));
    EXPECT_FALSE(canLoad(folder.widePath("loop")));
}

TEST(TextFileSource, FifoIsReadToItsEnd) {
    const TempDir folder;
    ASSERT_EQ(::mkfifo(folder.file("fifo").c_str(), 0600), 0);
    std::string text;
    for (int i = 0; text.size() < 300000; ++i) {
        text += std::to_string(i) + "\n";
    }
    std::thread writer([&] { folder.write("fifo", text); });
    TextFile file;
    EXPECT_TRUE(file.load(folder.widePath("fifo"), '\n', false));
    writer.join();
    EXPECT_EQ(std::string_view(file.block()->data(), file.textSize()), text);
    EXPECT_EQ(file.block()->data()[file.textSize()], '\0');
}

TEST(TextFileSource, CharacterDeviceIsRead) {
    TextFile file;
    EXPECT_TRUE(file.load(wide("/dev/null"), '\n', false));
    EXPECT_EQ(file.size(), 0u);
}

TEST(TextFileSource, FileWhoseSizeTellsNothingIsReadToItsEnd) {
    TextFile file;
    EXPECT_TRUE(file.load(wide("/proc/self/status"), '\n', false));
    EXPECT_GT(file.size(), 5u);
    EXPECT_EQ(file.line(0).substr(0, 5), "Name:");
}

TEST(TextFileSource, FileLargerThanAllMemoryFails) {
    const TempDir folder;
    folder.write("huge", "a\n");
    ASSERT_EQ(::truncate(folder.file("huge").c_str(), off_t{1} << 43), 0);
    EXPECT_FALSE(canLoad(folder.widePath("huge")));
}

// The system's calls, with a reading end that does as a test likes.
class ReadCalls {
public:
    explicit ReadCalls(ssize_t (*read)(int, void*, std::size_t)) : before_(FileIO::systemCalls()) {
        calls = 0;
        FileIO::systemCalls().read = read;
    }
    ~ReadCalls() { FileIO::systemCalls() = before_; }

    static inline int calls = 0;

private:
    FileIO::SystemCalls before_;
};

TEST(TextFileSource, EndlessDeviceIsGivenUpEarly) {
    static std::size_t total;
    total = 0;
    const ReadCalls replaced([](int file, void* to, std::size_t size) {
        const ssize_t got = ::read(file, to, size);
        total += got > 0 ? static_cast<std::size_t>(got) : 0;
        return got;
    });
    EXPECT_FALSE(canLoad(wide("/dev/zero")));
    EXPECT_LT(total, std::size_t{256} << 20);
}

TEST(TextFileSource, ReadErrorIsAFailedLoad) {
    const TempDir folder;
    folder.write("in", "a\nb\n");
    for (int failing = 1; failing <= 2; ++failing) {
        static int failAt;
        failAt = failing;
        const ReadCalls replaced([](int file, void* to, std::size_t size) -> ssize_t {
            if (++ReadCalls::calls == failAt) {
                errno = EIO;
                return -1;
            }
            return ::read(file, to, size);
        });
        EXPECT_FALSE(canLoad(folder.widePath("in"))) << failing;
    }
}

TEST(TextFileSource, InterruptedAndShortReadsGoOn) {
    const TempDir folder;
    const std::string text = "some lines\nof text\nin small pieces\n";
    folder.write("in", text);
    const ReadCalls replaced([](int file, void* to, std::size_t size) -> ssize_t {
        if (++ReadCalls::calls % 2 == 1) {
            errno = EINTR;
            return -1;
        }
        return ::read(file, to, size < 3 ? size : 3);
    });
    TextFile file;
    ASSERT_TRUE(file.load(folder.widePath("in"), '\n', false));
    EXPECT_STREQ(file.block()->data(), text.c_str());
}

TEST(TextFileSource, FileThatGrewIsReadToItsEnd) {
    const TempDir folder;
    folder.write("in", "a\n");
    static std::string path;
    path = folder.file("in").string();
    const ReadCalls replaced([](int file, void* to, std::size_t size) -> ssize_t {
        if (++ReadCalls::calls == 2) {
            std::FILE* more = std::fopen(path.c_str(), "ab");
            std::fputs("b\n", more);
            std::fclose(more);
        }
        return ::read(file, to, size);
    });
    TextFile file;
    ASSERT_TRUE(file.load(folder.widePath("in"), '\n', false));
    EXPECT_STREQ(file.block()->data(), "a\nb\n");
}

TEST(TextFileSource, FileThatShrankIsReadToItsEnd) {
    const TempDir folder;
    folder.write("in", "a\nb\nc\n");
    static std::string path;
    path = folder.file("in").string();
    const ReadCalls replaced([](int file, void* to, std::size_t size) -> ssize_t {
        if (++ReadCalls::calls == 1 && ::truncate(path.c_str(), 2) != 0) {
            return -1;
        }
        return ::read(file, to, size);
    });
    TextFile file;
    ASSERT_TRUE(file.load(folder.widePath("in"), '\n', false));
    EXPECT_STREQ(file.block()->data(), "a\n");
    EXPECT_EQ(file.textSize(), 2u);
}

TEST(TextFileSource, NoFileStaysOpen) {
    const TempDir folder;
    folder.write("in", "a\n");
    const int before = ::dup(0);
    ::close(before);
    canLoad(folder.widePath("in"));
    canLoad(folder.widePath("."));
    canLoad(folder.widePath("none"));
    const int after = ::dup(0);
    ::close(after);
    EXPECT_EQ(after, before);
}

}  // namespace
