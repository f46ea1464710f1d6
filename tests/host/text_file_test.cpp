#include <vekdb/host/text_file.h>

#include "testing/failing_allocator.h"
#include "testing/print_strings.h"
#include "testing/temp_dir.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace {

using testing_support::TempDir;
using Lines = std::vector<std::string>;

Lines linesOf(const TextFile& file) {
    Lines lines;
    for (unsigned i = 0; i < file.size(); ++i) {
        lines.emplace_back(file.line(i));
        EXPECT_EQ(file[i].view(), lines.back());
    }
    return lines;
}

class TextFileLoad : public ::testing::Test {
protected:
    Lines load(std::string_view bytes, char separator = '\n') {
        folder.write("in", bytes);
        EXPECT_TRUE(file.load(folder.widePath("in"), separator, false));
        return linesOf(file);
    }

    TempDir folder;
    TextFile file;
};

TEST_F(TextFileLoad, LinesStandWithoutTheirEndOfLine) {
    EXPECT_EQ(load("one\ntwo\nthree\n"), (Lines{"one", "two", "three"}));
}

TEST_F(TextFileLoad, LastLineWithoutNewlineCounts) {
    EXPECT_EQ(load("a\nb"), (Lines{"a", "b"}));
}

TEST_F(TextFileLoad, FinalNewlineOpensNoFurtherLine) {
    EXPECT_EQ(load("a\nb\n"), (Lines{"a", "b"}));
}

TEST_F(TextFileLoad, ZeroBytesAreNoLine) {
    EXPECT_EQ(load(""), Lines{});
    EXPECT_EQ(file.textSize(), 0u);
}

TEST_F(TextFileLoad, OneNewlineIsOneEmptyLine) {
    EXPECT_EQ(load("\n"), Lines{""});
    EXPECT_EQ(load("\n\n"), (Lines{"", ""}));
}

TEST_F(TextFileLoad, OneCarriageReturnBelongsToTheEndOfLine) {
    EXPECT_EQ(load("a\r\nb\r\n"), (Lines{"a", "b"}));
    EXPECT_EQ(load("a\r\r\nb\rc\n"), (Lines{"a\r", "b\rc"}));
    EXPECT_EQ(load("\r\n"), Lines{""});
}

TEST_F(TextFileLoad, CarriageReturnAtTheEndOfTheFileBelongsToTheEndOfLine) {
    EXPECT_EQ(load("a\r\nb\r"), (Lines{"a", "b"}));
    EXPECT_EQ(load("\r"), Lines{""});
}

TEST_F(TextFileLoad, CarriageReturnsAloneSplitNothing) {
    EXPECT_EQ(load("a\rb\rc"), Lines{"a\rb\rc"});
}

TEST_F(TextFileLoad, LineEndsAtItsFirstNul) {
    EXPECT_EQ(load(std::string_view("a\0b\nc\n\0\n", 8)), (Lines{"a", "c", ""}));
}

TEST_F(TextFileLoad, ByteOrderMarkIsText) {
    EXPECT_EQ(load("\xEF\xBB\xBF\"VEKDB\"\n"), Lines{"\xEF\xBB\xBF\"VEKDB\""});
}

TEST_F(TextFileLoad, HighBytesAreCarriedThrough) {
    EXPECT_EQ(load("\x80\xFF\xA0\n"), Lines{"\x80\xFF\xA0"});
}

TEST_F(TextFileLoad, OtherSeparatorsSplit) {
    EXPECT_EQ(load("a;b\n;c", ';'), (Lines{"a", "b\n", "c"}));
    EXPECT_EQ(load("a\rb\r", '\r'), (Lines{"a", "b"}));
}

TEST_F(TextFileLoad, FlagHasNoMeaning) {
    folder.write("in", "a\nb\n");
    ASSERT_TRUE(file.load(folder.widePath("in"), '\n', true));
    EXPECT_EQ(linesOf(file), (Lines{"a", "b"}));
}

TEST_F(TextFileLoad, PastTheEndIsTheNullString) {
    load("a\n");
    EXPECT_TRUE(file[1].empty());
    EXPECT_TRUE(file[0xFFFFFFFF].empty());
    EXPECT_TRUE(file.line(1).empty());
    EXPECT_NE(file.line(1).data(), nullptr);
    EXPECT_TRUE(TextFile()[0].empty());
}

TEST_F(TextFileLoad, LinesAreFoundInAnyOrder) {
    folder.write("in", "a\nbb\nccc\ndddd");
    ASSERT_TRUE(file.load(folder.widePath("in"), '\n', false));
    EXPECT_EQ(file.line(2), "ccc");
    EXPECT_EQ(file.line(0), "a");
    EXPECT_EQ(file.line(3), "dddd");
    EXPECT_EQ(file.line(1), "bb");
}

TEST_F(TextFileLoad, ReplacesWhatWasThere) {
    load("a\nb\n");
    EXPECT_EQ(load("c\n"), Lines{"c"});
    file.appendLine("d");
    EXPECT_EQ(load("e"), Lines{"e"});
}

TEST_F(TextFileLoad, CurrentLineStartsAtZeroAgain) {
    EXPECT_EQ(file.currentLine, 0u);
    file.currentLine = 5;
    load("a\n");
    EXPECT_EQ(file.currentLine, 0u);
}

TEST_F(TextFileLoad, CurrentLineIsNotMovedByReading) {
    load("a\nb\n");
    EXPECT_EQ(file.currentLine, 0u);
}

TEST_F(TextFileLoad, OffsetsTellWhereLinesBegin) {
    load("a\r\nbb\nccc");
    EXPECT_EQ(file.lineOffset(0), 0u);
    EXPECT_EQ(file.lineOffset(1), 3u);
    EXPECT_EQ(file.lineOffset(2), 6u);
    EXPECT_EQ(file.lineOffset(3), 9u);
    EXPECT_EQ(file.lineOffset(0xFFFFFFFF), 9u);
}

TEST_F(TextFileLoad, BlockHoldsTheWholeTextAndANul) {
    const std::string_view text("a\r\nb\0c", 6);
    load(text);
    ASSERT_EQ(file.textSize(), 6u);
    EXPECT_EQ(std::string_view(file.block()->data(), 6), text);
    EXPECT_EQ(file.block()->data()[6], '\0');
}

TEST_F(TextFileLoad, TakenTextLeavesNoLines) {
    load("a\nb");
    const Quor::Ptr<TextBlock> text = file.takeText();
    ASSERT_TRUE(text);
    EXPECT_STREQ(text->data(), "a\nb");
    EXPECT_EQ(file.size(), 0u);
    EXPECT_EQ(file.textSize(), 0u);
    EXPECT_FALSE(file.block());
    EXPECT_EQ(file.currentLine, 0u);
    file.appendLine("c");
    EXPECT_EQ(linesOf(file), Lines{"c"});
    EXPECT_STREQ(text->data(), "a\nb");
}

TEST_F(TextFileLoad, TextOfAFileWithoutLinesIsAnEmptyBlock) {
    const Quor::Ptr<TextBlock> text = file.takeText();
    ASSERT_TRUE(text);
    EXPECT_EQ(text->data()[0], '\0');
}

TEST_F(TextFileLoad, LongTextsAreReadWhole) {
    std::string text;
    for (int i = 0; text.size() < 300000; ++i) {
        text += "line " + std::to_string(i) + "\n";
    }
    load(text);
    EXPECT_EQ(std::string_view(file.block()->data(), file.textSize()), text);
    EXPECT_EQ(file.line(20000), "line 20000");
}

TEST_F(TextFileLoad, MemoryFailureLeavesNoLines) {
    folder.write("in", "a\nb\n");
    const auto path = folder.widePath("in");
    const unsigned failures = testing_support::failEachAllocation(
        [&] { file.load(path, '\n', false); }, [&] { EXPECT_EQ(file.size(), 0u); });
    EXPECT_GE(failures, 2u);
    EXPECT_EQ(linesOf(file), (Lines{"a", "b"}));
}

TEST(TextFileAppend, LinesFollowEachOther) {
    TextFile file;
    file.appendLine("one");
    file.appendLine("");
    file.appendLine(LightweightString<char>("three"));
    file.appendLine(std::string_view("four"));
    EXPECT_EQ(linesOf(file), (Lines{"one", "", "three", "four"}));
}

TEST(TextFileAppend, BlockHoldsEachLineWithALineFeed) {
    TextFile file;
    file.appendLine("a");
    file.appendLine("b");
    EXPECT_EQ(file.textSize(), 4u);
    EXPECT_STREQ(file.block()->data(), "a\nb\n");
    EXPECT_EQ(file.lineOffset(1), 2u);
    EXPECT_EQ(file.lineOffset(2), 4u);
}

TEST(TextFileAppend, LineWithALineFeedIsOneLine) {
    TextFile file;
    file.appendLine("a\nb\n");
    file.appendLine("c");
    EXPECT_EQ(linesOf(file), (Lines{"a\nb\n", "c"}));
}

TEST(TextFileAppend, CarriageReturnOfAnAppendedLineStays) {
    TextFile file;
    file.appendLine("a\r");
    EXPECT_EQ(linesOf(file), Lines{"a\r"});
}

TEST(TextFileAppend, AppendedLineEndsAtItsFirstNul) {
    TextFile file;
    file.appendLine(std::string_view("a\0b", 3));
    file.appendLine("c");
    EXPECT_EQ(linesOf(file), (Lines{"a", "c"}));
    EXPECT_STREQ(file.block()->data(), "a\nc\n");
}

TEST(TextFileAppend, NullTextIsAnEmptyLine) {
    TextFile file;
    file.appendLine(static_cast<const char*>(nullptr));
    file.appendLine(std::string_view());
    EXPECT_EQ(linesOf(file), (Lines{"", ""}));
}

TEST(TextFileAppend, OwnLineMayBeAppended) {
    TextFile file;
    file.appendLine("abcdefgh");
    for (unsigned i = 0; i < 100; ++i) {
        file.appendLine(file.line(i));
    }
    EXPECT_EQ(linesOf(file), Lines(101, "abcdefgh"));
}

TEST(TextFileAppend, LinesMayBeWrittenInPlace) {
    TextFile file;
    std::string_view("abc").copy(file.beginLine(1000), 3);
    file.endLine(3);
    file.beginLine(0);
    file.endLine(0);
    const std::string full(5000, 'x');
    full.copy(file.beginLine(5000), 5000);
    file.endLine(5000);
    EXPECT_EQ(linesOf(file), (Lines{"abc", "", full}));
    EXPECT_EQ(file.block()->data()[file.textSize()], '\0');
}

TEST(TextFileAppend, BlockGrowsGeometrically) {
    testing_support::CountingAllocator counting;
    {
        TextFile file;
        for (int i = 0; i < 20000; ++i) {
            file.appendLine(std::string_view("0123456789012345678901234567890123456789"));
        }
        EXPECT_EQ(file.size(), 20000u);
    }
    EXPECT_LT(counting.allocations(), 60);
}

TEST(TextFileAppend, GoesOnBehindLoadedLines) {
    const TempDir folder;
    for (const char* text : {"a\nb", "a\nb\n", "a\r\nb\r", "a\r\nb\r\n"}) {
        folder.write("in", text);
        TextFile file;
        ASSERT_TRUE(file.load(folder.widePath("in"), '\n', false));
        file.appendLine("c\r");
        EXPECT_EQ(linesOf(file), (Lines{"a", "b", "c\r"}));
    }
}

TEST(TextFileAppend, GoesOnBehindLinesOfAnotherSeparator) {
    const TempDir folder;
    folder.write("in", "a;b");
    TextFile file;
    ASSERT_TRUE(file.load(folder.widePath("in"), ';', false));
    file.appendLine("c;d");
    EXPECT_EQ(linesOf(file), (Lines{"a", "b", "c;d"}));
}

TEST(TextFileAppend, GoesOnBehindAnEmptyFile) {
    const TempDir folder;
    folder.write("in", "");
    TextFile file;
    ASSERT_TRUE(file.load(folder.widePath("in"), '\n', false));
    file.appendLine("a");
    EXPECT_EQ(linesOf(file), Lines{"a"});
}

TEST(TextFileAppend, WhoSharesTheBlockKeepsItsText) {
    TextFile file;
    file.appendLine("a");
    const Quor::Ptr<TextBlock> shared = file.block();
    const std::string_view old(shared->data(), file.textSize());
    for (int i = 0; i < 100; ++i) {
        file.appendLine("bcdefghij");
    }
    EXPECT_EQ(old, "a\n");
    EXPECT_EQ(file.size(), 101u);
}

TEST(TextFileAppend, MemoryFailureLeavesTheLinesAsTheyWere) {
    TextFile file;
    const std::string longLine(1000, 'x');
    const unsigned failures =
        testing_support::failEachAllocation([&] { file.appendLine(std::string_view(longLine)); },
                                            [&] { EXPECT_EQ(linesOf(file), Lines{}); });
    EXPECT_GE(failures, 1u);
    EXPECT_EQ(linesOf(file), Lines{longLine});
}

TEST(TextFileAppend, MemoryFailureKeepsTheNulBehindTheText) {
    TextFile file;
    file.appendLine("a");
    const auto appendMany = [&] {
        for (int i = 0; i < 40; ++i) {
            file.appendLine("bcd");
        }
    };
    const unsigned failures = testing_support::failEachAllocation(appendMany, [&] {
        EXPECT_EQ(file.block()->data()[file.textSize()], '\0');
        EXPECT_EQ(file.textSize(), 2 + 4 * (std::size_t{file.size()} - 1));
    });
    EXPECT_GE(failures, 3u);
}

TEST(TextFileAppend, AbsurdLengthIsAMemoryFailure) {
    TextFile file;
    file.appendLine("a");
    EXPECT_THROW(file.beginLine(static_cast<std::size_t>(-1)), Quor::Exception::BadAlloc);
    EXPECT_EQ(linesOf(file), Lines{"a"});
}

}  // namespace
