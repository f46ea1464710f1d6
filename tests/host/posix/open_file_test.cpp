#include <vekdb/host/open_file.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "testing/temp_dir.h"

using testing_support::TempDir;

namespace {

std::string restOf(const OpenFile& file) {
    std::string text;
    char room[3];
    std::size_t got = 0;
    while (file.read(room, sizeof room, got) == 0 && got != 0) {
        text.append(room, got);
    }
    return text;
}

}  // namespace

TEST(OpenFile, ReadsAFileFromItsStartAndFromAnyPlace) {
    TempDir folder;
    folder.write("a", "0123456789");
    const OpenFile file = OpenFile::at(folder.file("a").c_str());
    ASSERT_EQ(file.error(), 0);
    OpenFile::Kind kind = OpenFile::Kind::stream;
    std::uint64_t size = 0;
    ASSERT_EQ(file.look(kind, size), 0);
    EXPECT_EQ(kind, OpenFile::Kind::regular);
    EXPECT_EQ(size, 10u);
    EXPECT_EQ(restOf(file), "0123456789");
    char room[4];
    std::size_t got = 0;
    ASSERT_EQ(file.readAt(8, room, sizeof room, got), 0);
    EXPECT_EQ(std::string(room, got), "89");
}

TEST(OpenFile, SaysWhyItIsNotOpen) {
    TempDir folder;
    EXPECT_EQ(OpenFile::at(folder.file("none").c_str()).error(), ENOENT);
    EXPECT_EQ(OpenFile::of(-1).error(), EBADF);
}

TEST(OpenFile, TellsAFolder) {
    TempDir folder;
    const OpenFile file = OpenFile::at(folder.path().c_str());
    OpenFile::Kind kind = OpenFile::Kind::regular;
    std::uint64_t size = 0;
    ASSERT_EQ(file.look(kind, size), 0);
    EXPECT_EQ(kind, OpenFile::Kind::folder);
}

TEST(OpenFile, HoldsATextThatCanBeReadAgain) {
    const OpenFile file = OpenFile::holding("a text");
    ASSERT_EQ(file.error(), 0);
    char room[6];
    std::size_t got = 0;
    ASSERT_EQ(file.readAt(0, room, sizeof room, got), 0);
    EXPECT_EQ(std::string(room, got), "a text");
}

TEST(OpenFile, LeavesTheDescriptorThatItWasMadeOf) {
    const OpenFile first = OpenFile::holding("text");
    { const OpenFile second = OpenFile::of(first.descriptor()); }
    char byte = 0;
    std::size_t got = 0;
    EXPECT_EQ(first.readAt(0, &byte, 1, got), 0);
    EXPECT_EQ(byte, 't');
}

TEST(OpenFile, IsMovedWithWhatIsOpen) {
    OpenFile first = OpenFile::holding("text");
    const int descriptor = first.descriptor();
    OpenFile second = std::move(first);
    EXPECT_EQ(second.descriptor(), descriptor);
    OpenFile third;
    third = std::move(second);
    EXPECT_EQ(third.descriptor(), descriptor);
}

TEST(OpenFile, IsLockedByOneUntilAllDescriptorsOfItAreClosed) {
    TempDir folder;
    folder.write("a", "text");
    const std::string path = folder.file("a").string();
    OpenFile first = OpenFile::at(path.c_str());
    EXPECT_EQ(first.lock(), 0);
    OpenFile further = OpenFile::of(first.descriptor());
    EXPECT_EQ(further.lock(), 0);
    const OpenFile other = OpenFile::at(path.c_str());
    EXPECT_EQ(other.lock(), EWOULDBLOCK);
    first = OpenFile();
    EXPECT_EQ(other.lock(), EWOULDBLOCK);
    further = OpenFile();
    EXPECT_EQ(other.lock(), 0);
}

TEST(OpenFile, ThatIsNotThereIsNotLocked) {
    EXPECT_NE(OpenFile().lock(), 0);
}

TEST(OpenFile, FindsWhereAFileWasNeverWritten) {
    TempDir folder;
    folder.write("a", std::string(1 << 16, 'x'));
    std::filesystem::resize_file(folder.file("a"), 8 << 20);
    const OpenFile file = OpenFile::at(folder.file("a").c_str());
    EXPECT_EQ(file.beginOfGap(8 << 20), 1u << 16);
    EXPECT_EQ(restOf(OpenFile::at(folder.file("a").c_str())).size(), 8u << 20);
}
