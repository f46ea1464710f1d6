#include <gmock/gmock.h>

#include <string>

#include "formats/failure.h"
#include "formats/saving/file_sink.h"
#include "testing/temp_dir.h"

using testing::IsEmpty;
using testing_support::TempDir;
using namespace vek::formats;

TEST(FileSink, LeavesTheOldFileUntilTheEnd) {
    TempDir folder;
    folder.write("day.csv", "old");
    FileSink sink(folder.file("day.csv").string());
    sink.take("new ");
    EXPECT_EQ(folder.read("day.csv"), "old");
    sink.take("text");
    EXPECT_THAT(sink.end(), IsEmpty());
    EXPECT_EQ(folder.read("day.csv"), "new text");
}

TEST(FileSink, LeavesTheOldFileWhereNobodySaidThatAllWasWritten) {
    TempDir folder;
    folder.write("day.csv", "old");
    { FileSink(folder.file("day.csv").string()).take("half of"); }
    EXPECT_EQ(folder.read("day.csv"), "old");
    EXPECT_EQ(folder.names(), std::vector<std::string>{"day.csv"});
}

TEST(FileSink, MakesAnEmptyFileOfNoText) {
    TempDir folder;
    FileSink(folder.file("day.csv").string()).end();
    EXPECT_EQ(folder.read("day.csv"), "");
}

TEST(FileSink, KeepsTheOldFileBesideTheNewOne) {
    TempDir folder;
    folder.write("day.csv", "old");
    const std::string path = folder.file("day.csv").string();
    FileSink sink(path, holdFile(path), true);
    sink.take("new");
    sink.end();
    EXPECT_EQ(folder.read("day.csv"), "new");
    EXPECT_EQ(folder.read("day.csv.bak"), "old");
}

TEST(FileSink, SaysWhyAFileCannotBeWritten) {
    TempDir folder;
    FileSink sink(folder.file("none/day.csv").string());
    try {
        sink.take("text");
        FAIL() << "a file in a folder that is not there";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.kind, unwritable);
        EXPECT_THAT(failure.text, testing::HasSubstr("make its folder first"));
    }
}

TEST(HoldInput, TakesHoldOfAnOutputThatIsAnInput) {
    TempDir folder;
    folder.write("day.csv", "old");
    const std::string path = folder.file("day.csv").string();
    EXPECT_NE(holdInput({path}, path), nullptr);
    EXPECT_EQ(holdInput({path}, folder.file("other.csv").string()), nullptr);
    EXPECT_EQ(holdFile("-"), nullptr);
}
