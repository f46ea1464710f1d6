#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include <vekdb/host/foreign_program.h>

namespace {

std::string textIn(ScratchFile& file, std::uint64_t from = 0) {
    std::string text(1000, ' ');
    text.resize(file.read(from, text.data(), text.size()));
    return text;
}

}  // namespace

TEST(ScratchFile, KeepsWhatIsAppended) {
    ScratchFile file;
    ASSERT_EQ(file.error(), 0);
    EXPECT_GE(file.descriptor(), 10);
    EXPECT_TRUE(file.append("one, "));
    EXPECT_TRUE(file.append(""));
    EXPECT_TRUE(file.append("two"));
    EXPECT_EQ(textIn(file), "one, two");
    EXPECT_EQ(textIn(file, 5), "two");
    EXPECT_EQ(textIn(file, 100), "");
}

TEST(ForeignProgram, ReadsAndWritesTheFilesItIsHandedFromTheirFront) {
    ScratchFile in;
    ScratchFile out;
    ScratchFile other;
    in.append("some text");
    const ForeignEnd end = runForeignProgram(
        {"sh", "-c", "cat; echo more >&3; exit 7"},
        {in.descriptor(), out.descriptor(), out.descriptor(), other.descriptor()});
    EXPECT_EQ(end.error, 0);
    EXPECT_EQ(end.exitCode, 7);
    EXPECT_EQ(textIn(out), "some text");
    EXPECT_EQ(textIn(other), "more\n");
}

TEST(ForeignProgram, AFileWithoutANameCanBeOpenedByItsNumber) {
    ScratchFile in;
    ScratchFile out;
    in.append("text");
    const ForeignEnd end = runForeignProgram({"sh", "-c", "cat /dev/fd/0 > /dev/fd/1"},
                                             {in.descriptor(), out.descriptor()});
    EXPECT_EQ(end.exitCode, 0);
    EXPECT_EQ(textIn(out), "text");
}

TEST(ForeignProgram, OneThatIsNotThereIsNotStarted) {
    EXPECT_EQ(runForeignProgram({"/nowhere/at/all"}, {}).error, ENOENT);
    EXPECT_EQ(runForeignProgram({"no-program-has-this-name"}, {}).error, ENOENT);
}

TEST(ForeignProgram, OneThatASignalEndsSaysSo) {
    const ForeignEnd end = runForeignProgram({"sh", "-c", "kill -9 $$"}, {});
    EXPECT_EQ(end.error, 0);
    EXPECT_EQ(end.exitCode, 128 + 9);
}
