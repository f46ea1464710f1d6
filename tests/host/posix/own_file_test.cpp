#include <vekdb/host/own_file.h>

#include "testing/temp_dir.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <memory>

namespace {

using testing_support::TempDir;

struct Closing {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using Made = std::unique_ptr<std::FILE, Closing>;

bool isOpened(const std::filesystem::path& path) {
    return openOwnFile(path.c_str()).descriptor() >= 0;
}

}  // namespace

TEST(OwnFile, IsItsOwnersAloneFromTheFirstMomentOn) {
    const TempDir folder;
    const mode_t before = ::umask(0);
    const Made made(makeOwnFile(folder.file("own").c_str()));
    ::umask(before);
    ASSERT_NE(made, nullptr);
    struct stat status = {};
    ASSERT_EQ(::lstat(folder.file("own").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600u);
    EXPECT_TRUE(isOpened(folder.file("own")));
}

TEST(OwnFile, IsNotMadeWhereAnythingStands) {
    const TempDir folder;
    folder.write("there", "mine");
    std::filesystem::create_symlink("nowhere", folder.file("link"));
    for (const char* name : {"there", "link"}) {
        const Made made(makeOwnFile(folder.file(name).c_str()));
        EXPECT_EQ(made, nullptr) << name;
        EXPECT_EQ(errno, EEXIST) << name;
    }
    EXPECT_EQ(folder.read("there"), "mine");
    EXPECT_FALSE(std::filesystem::exists(folder.file("nowhere")));
}

// Only root can give files to others.
TEST(OwnFile, IsNeitherALinkNorAFifoNorSomebodyElses) {
    const TempDir folder;
    folder.write("own", "mine");
    std::filesystem::create_symlink("own", folder.file("link"));
    ASSERT_EQ(::mkfifo(folder.file("fifo").c_str(), 0600), 0);
    EXPECT_TRUE(isOpened(folder.file("own")));
    for (const char* name : {"link", "fifo", ".", "none"}) {
        EXPECT_FALSE(isOpened(folder.file(name))) << name;
    }
    const bool isGiven = ::chown(folder.file("own").c_str(), 2001, 2001) == 0;
    EXPECT_EQ(isOpened(folder.file("own")), !isGiven);
}
