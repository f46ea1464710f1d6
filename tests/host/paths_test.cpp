#include <vekdb/host/paths.h>

#include "testing/print_strings.h"
#include "testing/temp_dir.h"

#include <gtest/gtest.h>

using testing_support::TempDir;
using W = LightweightString<wchar_t>;

TEST(FileExists, IsTrueForAFile) {
    TempDir dir;
    dir.write("log.txt", "");
    EXPECT_TRUE(fileExists(dir.widePath("log.txt")));
    EXPECT_FALSE(fileExists(dir.widePath("other.txt")));
}

TEST(FileExists, IsFalseForAFolder) {
    TempDir dir;
    EXPECT_FALSE(fileExists(dir.widePath("")));
    EXPECT_FALSE(fileExists(L"/"));
}

TEST(FileExists, FollowsLinks) {
    TempDir dir;
    dir.write("real", "x");
    std::filesystem::create_symlink(dir.file("real"), dir.file("link"));
    std::filesystem::create_symlink(dir.file("gone"), dir.file("dangling"));
    EXPECT_TRUE(fileExists(dir.widePath("link")));
    EXPECT_FALSE(fileExists(dir.widePath("dangling")));
}

TEST(FileExists, IsFalseForPathsThatNoFileCanHave) {
    const wchar_t broken[] = {'/', wchar_t(0xD800), 0};
    EXPECT_FALSE(fileExists(W()));
    EXPECT_FALSE(fileExists(broken));
    EXPECT_FALSE(fileExists(W(L"/\0", 2)));
}

TEST(StripPathAndExt, CutsFoldersAndExtension) {
    EXPECT_EQ(stripPathAndExt(L"/logs/day one/reel.txt"), W(L"reel"));
    EXPECT_EQ(stripPathAndExt(L"C:\\logs\\reel.txt"), W(L"reel"));
    EXPECT_EQ(stripPathAndExt(L"C:\\logs/reel.txt"), W(L"reel"));
    EXPECT_EQ(stripPathAndExt(L"/logs\\reel"), W(L"reel"));
    EXPECT_EQ(stripPathAndExt(L"reel"), W(L"reel"));
}

TEST(StripPathAndExt, CutsOnlyTheLastExtension) {
    EXPECT_EQ(stripPathAndExt(L"reel.v2.txt"), W(L"reel.v2"));
    EXPECT_EQ(stripPathAndExt(L"reel."), W(L"reel"));
    EXPECT_EQ(stripPathAndExt(L"/logs.d/reel"), W(L"reel"));
}

TEST(StripPathAndExt, KeepsANameThatBeginsWithItsOnlyDot) {
    EXPECT_EQ(stripPathAndExt(L"/logs/.hidden"), W(L".hidden"));
    EXPECT_EQ(stripPathAndExt(L".hidden.txt"), W(L".hidden"));
}

TEST(StripPathAndExt, PathOfAFolderHasNoName) {
    EXPECT_TRUE(stripPathAndExt(L"/logs/").empty());
    EXPECT_TRUE(stripPathAndExt(W()).empty());
}
