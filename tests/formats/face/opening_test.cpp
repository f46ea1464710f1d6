#include <gmock/gmock.h>

#include <fcntl.h>
#include <unistd.h>

#include <string>
#include <vector>

#include <vekdb/formats/log.h>
#include "testing/temp_dir.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using testing_support::TempDir;

namespace {

constexpr const char* csv = "Scene,Take,Notes\n12,1,good\n12,2,\"said \"\"cut\"\"\"\n7,1,\n";

std::vector<std::string> cellsOf(const vek::Row& row) {
    std::vector<std::string> cells;
    for (std::string_view cell : row) cells.emplace_back(cell);
    return cells;
}

std::vector<std::string> valuesOf(const vek::Column& column) {
    std::vector<std::string> values;
    for (std::string_view value : column) values.emplace_back(value);
    return values;
}

}  // namespace

TEST(Open, GivesTheRowsAndColumnsOfATextInMemory) {
    auto log = vek::openText(csv, "day.csv");
    ASSERT_TRUE(log) << log.reason().text();
    EXPECT_EQ(log->format(), vek::Format::csv);
    EXPECT_EQ(log->name(), "day.csv");
    EXPECT_EQ(log->size(), 3u);
    EXPECT_THAT(cellsOf(log->at(1)), ElementsAre("12", "2", "said \"cut\""));
    std::vector<std::string> names;
    for (vek::Column column : log->columns()) names.push_back(column.name());
    EXPECT_THAT(names, ElementsAre("Scene", "Take", "Notes"));
    EXPECT_THAT(valuesOf(*log->column("scene")), ElementsAre("12", "12", "7"));
    EXPECT_EQ(log->at(2).line(), 4u);
}

TEST(Open, GoesOverALogThatNobodyKeeps) {
    std::string scenes;
    for (vek::Row row : *vek::openText(csv, "day.csv")) scenes += std::string(row["Scene"]) + " ";
    EXPECT_EQ(scenes, "12 12 7 ");
}

TEST(Open, SaysWhyAFileIsNotRead) {
    TempDir folder;
    auto log = vek::open(folder.file("nothing.csv").string());
    ASSERT_FALSE(log);
    EXPECT_EQ(log.reason().kind, vek::Reason::unreadable);
    EXPECT_EQ(log.reason().file, folder.file("nothing.csv").string());
    EXPECT_THAT(log.reason().found, HasSubstr("No such file"));
    EXPECT_EQ(log.reason().advice, "check the path");
}

TEST(Open, SaysFileLineAndWhatWasExpectedOfATextThatIsNoLog) {
    auto log = vek::openText("[{\"a\":1},\n{\"a\":]", "x.json");
    ASSERT_FALSE(log);
    EXPECT_EQ(log.reason().file, "x.json");
    EXPECT_EQ(log.reason().line, 2u);
    EXPECT_FALSE(log.reason().found.empty());
    EXPECT_EQ(log.reason().expected, "JSON objects of names and values");
    EXPECT_EQ(log.reason().text().find("x.json:2: "), 0u);
}

TEST(Open, GivesProblemsAsValues) {
    auto log = vek::openText("A,B\n1\n1,2,3\n", "ragged.csv");
    ASSERT_TRUE(log);
    ASSERT_EQ(log->problems().size(), 2u);
    EXPECT_EQ(log->problems()[0].line, 2u);
    EXPECT_EQ(log->problems()[1].line, 3u);
    EXPECT_EQ(log->moreProblems(), 0u);
    EXPECT_THAT(log->notRead(), IsEmpty());
}

TEST(Open, SaysAnEmptyTextIsNoLog) {
    auto log = vek::openText("");
    ASSERT_FALSE(log);
    EXPECT_EQ(log.reason().expected, "a log");
}

TEST(Open, ReadsADescriptorAndLeavesItOpen) {
    TempDir folder;
    folder.write("day.csv", csv);
    const int descriptor = ::open(folder.file("day.csv").c_str(), O_RDONLY);
    auto log = vek::openDescriptor(descriptor, "day.csv");
    EXPECT_TRUE(log);
    EXPECT_EQ(log->size(), 3u);
    EXPECT_EQ(::fcntl(descriptor, F_GETFD) & FD_CLOEXEC, 0);
    EXPECT_EQ(::close(descriptor), 0);
}

TEST(Open, ReadsADescriptorFromWhereItStands) {
    TempDir folder;
    folder.write("day.csv", "a line that somebody read\nScene,Take\n1,2\n");
    const int descriptor = ::open(folder.file("day.csv").c_str(), O_RDONLY);
    ASSERT_EQ(::lseek(descriptor, 26, SEEK_SET), 26);
    auto log = vek::openDescriptor(descriptor, "day.csv");
    ASSERT_TRUE(log) << log.reason().text();
    EXPECT_EQ(log->columns().at(0).name(), "Scene");
    EXPECT_EQ(log->size(), 1u);
    ::lseek(descriptor, 0, SEEK_END);
    EXPECT_THAT(vek::openDescriptor(descriptor, "day.csv").reason().text(), HasSubstr("is empty"));
    ::close(descriptor);
}

TEST(Open, SaysADescriptorThatIsNone) {
    EXPECT_EQ(vek::openDescriptor(-1, "none").reason().kind, vek::Reason::unreadable);
}

TEST(Open, ReadsTableFilesFromMemoryAsFromAPath) {
    auto log = vek::openText(
        "\"VEKDB:Rev 1\"\n\"FPS:24\"\n\"VEKDB\"\n\"4\",\"4\"\n"
        "\"text\",\"text\"\n\"A\",\"B\"\n\"1\",\"2\"\n");
    ASSERT_TRUE(log) << log.reason().text();
    EXPECT_EQ(log->format(), vek::Format::table);
    EXPECT_THAT(cellsOf(log->at(0)), ElementsAre("1", "2"));
    EXPECT_EQ(log->parameter("FPS"), "24");
    EXPECT_EQ(log->parameter("none"), std::nullopt);
}

TEST(Open, KeepsToTheLimitsOfOneCall) {
    vek::OpenOptions options;
    options.maxBytes = 10;
    EXPECT_EQ(vek::openText(csv, "day.csv", options).reason().kind, vek::Reason::unreadable);
    options.maxBytes = 0;
    options.maxCells = 8;
    EXPECT_FALSE(vek::openText(csv, "day.csv", options));
    EXPECT_TRUE(vek::openText(csv, "day.csv"));
}

TEST(Open, TakesTheFormatThatIsNamed) {
    vek::OpenOptions options;
    options.format = vek::Format::tsv;
    EXPECT_EQ(vek::openText("a,b\tc\n1\t2\n", "day.csv", options)->columns().size(), 2u);
    options.format = vek::Format::html;
    EXPECT_EQ(vek::openText("a,b\n", "", options).reason().kind, vek::Reason::wrongUsage);
}

TEST(Open, RefusesAZeroByteInAPath) {
    using std::string_view_literals::operator""sv;
    EXPECT_EQ(vek::open("a\0b"sv).reason().kind, vek::Reason::unreadable);
}

TEST(Open, TakesADashForTheNameOfAFile) {
    EXPECT_EQ(vek::open("-").reason().file, "./-");
}

TEST(Open, KnowsCellsUnderAnotherEndingWhereverItsFirstLookEnds) {
    for (int width = 1; width < 60; ++width) {
        std::string text = "Scene,Take,Notes\n";
        for (int i = 0; i < 1000; ++i) text += "1,2," + std::string(width, 'x') + "\n";
        for (const char* name : {"a.json", "a.ale", "a.edl"}) {
            auto log = vek::openText(text, name);
            ASSERT_TRUE(log) << name << " " << width << ": " << log.reason().text();
            EXPECT_EQ(log->format(), vek::Format::csv);
            ASSERT_EQ(log->size(), 1000u);
        }
    }
}

TEST(Open, FindsWhatSeparatesTheCellsOfManyRowsWithoutALineEndAtTheLast) {
    std::string text = "Name, first;Take";
    for (int i = 0; i < 60; ++i) text += "\nx;1";
    auto log = vek::openText(text, "a.csv");
    ASSERT_TRUE(log);
    EXPECT_EQ(log->columns().at(0).name(), "Name, first");
    EXPECT_EQ(log->size(), 60u);
}

TEST(Open, KeepsNoMoreThanAThousandProblemsOfAHeading) {
    std::string text = "Heading\n";
    for (int i = 0; i < 1500; ++i) text += "FIELD_DELIM odd\n";
    auto log = vek::openText(text + "Column\nName\nData\nA\n", "a.ale");
    ASSERT_TRUE(log) << log.reason().text();
    EXPECT_EQ(log->problems().size(), 1000u);
    EXPECT_GE(log->moreProblems(), 500u);
}

TEST(Formats, AreFoundByTheEndingUnderThatOfPackedFiles) {
    EXPECT_EQ(vek::formatOfPath("day.csv.gz"), vek::Format::csv);
    EXPECT_EQ(vek::formatOfPath("DAY.ALE.GZ"), vek::Format::ale);
    EXPECT_EQ(vek::formatOfPath("day.gz"), std::nullopt);
    EXPECT_EQ(vek::formatOfPath(".gz"), std::nullopt);
}

TEST(Formats, AreNamedAndFoundByTheEndingsOfFiles) {
    EXPECT_EQ(vek::nameOf(vek::Format::ale), "ale");
    EXPECT_EQ(vek::formatOfName("jsonl"), vek::Format::jsonl);
    EXPECT_EQ(vek::formatOfName("xml"), std::nullopt);
    EXPECT_EQ(vek::formatOfPath("a/b.CSV"), vek::Format::csv);
    EXPECT_EQ(vek::formatOfPath("a/b.htm"), vek::Format::html);
    EXPECT_EQ(vek::formatOfPath("csv"), std::nullopt);
    EXPECT_EQ(vek::formatOfPath("b."), std::nullopt);
    EXPECT_FALSE(vek::canRead(vek::Format::html));
    EXPECT_FALSE(vek::canWrite(vek::Format::plainCsv));
}
