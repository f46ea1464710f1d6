#include <vekdb/host/file_look.h>
#include "testing/temp_dir.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include <sys/stat.h>

namespace {

using Kind = FileLook::Kind;

class Looking : public testing::Test {
protected:
    FileLook at(const char* name) const { return FileLook::at(folder_.file(name).c_str()); }

    testing_support::TempDir folder_;
};

TEST_F(Looking, TellsWhatAPathLeadsToWithoutOpeningIt) {
    folder_.write("log", "text");
    ASSERT_EQ(::mkfifo(folder_.file("pipe").c_str(), 0600), 0);
    std::filesystem::create_symlink("log", folder_.file("link"));
    EXPECT_EQ(at("log").kind, Kind::regular);
    EXPECT_EQ(at("link"), at("log"));
    EXPECT_EQ(at(".").kind, Kind::folder);
    EXPECT_EQ(at("pipe").kind, Kind::other);
    EXPECT_EQ(FileLook::at("/dev/null").kind, Kind::other);
}

TEST_F(Looking, SaysWhyNothingIsSeen) {
    folder_.write("log", "text");
    EXPECT_EQ(at("none").kind, Kind::nothing);
    EXPECT_EQ(at("none").error, ENOENT);
    EXPECT_EQ(at("log/none").error, ENOTDIR);
}

TEST_F(Looking, KnowsAFileAgainThatStayedAsItWas) {
    folder_.write("log", "text");
    folder_.write("other", "text");
    const FileLook before = at("log");
    EXPECT_EQ(at("log"), before);
    folder_.write("log", "another text");
    EXPECT_NE(at("log"), before);
    std::filesystem::rename(folder_.file("other"), folder_.file("log"));
    EXPECT_NE(at("log"), before);
}

}  // namespace
