#include <gtest/gtest.h>

#include <chrono>

#include "cli/program.h"

namespace {

constexpr const char* columns = "\"VEKDB\"\n\"4\",\"4\"\n\"text\",\"text\"\n\"A\",\"B\"\n";

// A header of parameters, the last but one cut at another place by the end of a first piece.
std::string headerOf(std::size_t size) {
    std::string text = "\"VEKDB:Rev 1\"\n\"Note:";
    text += std::string(size - text.size() - 2, 'x') + "\"\n";
    return text + "\"VEKDB 2:y\"\n\"VEKDB3:z\"\n" + columns;
}

}  // namespace

// Rows are told by their lines, wherever in the text the header ends.
class HeaderAroundTheFirstPiece : public testing::TestWithParam<std::size_t> {};

TEST_P(HeaderAroundTheFirstPiece, IsFoundWhole) {
    WorkFolder folder;
    std::string text = headerOf(GetParam());
    folder.write("whole.vek", text + "\"1\",\"2\"\n");
    folder.write("short.vek", text + "\"1\",\"2\"\n\"3\"\n");
    Finish whole = runVekLine(folder, "show whole.vek --format csv");
    EXPECT_EQ(whole.exitCode, 0);
    EXPECT_EQ(whole.output, "A,B\n1,2\n");
    const std::string lost =
        "vek: standard output: parameters have no place in this format: 3, first \"Note\"\n";
    EXPECT_EQ(whole.errors, lost);
    Finish damaged = runVekLine(folder, "show short.vek --format csv");
    EXPECT_EQ(damaged.exitCode, 1);
    EXPECT_EQ(damaged.output, "A,B\n1,2\n3,\n");
    EXPECT_EQ(damaged.errors,
              "vek: short.vek:10: 1 value, expected 2; the row is kept, the missing cells are "
              "empty\n" +
                  lost);
}

INSTANTIATE_TEST_SUITE_P(Sizes, HeaderAroundTheFirstPiece,
                         testing::Values(40, 4000, 4040, 4062, 4064, 4070, 4075, 4080, 4081, 4082,
                                         4083, 4084, 4085, 4089, 4090, 4091, 4096));

// Lines that are no rows are found wherever they stand.
class LongTable : public testing::Test {
protected:
    static constexpr int rowCount = 40000;

    // A table with a line put in front of one of its rows.
    void writeWith(const std::string& line, int row) const {
        std::string text = headerOf(40);
        for (int i = 0; i < rowCount; ++i) {
            if (i == row) text += line;
            text += "\"" + std::to_string(i) + "\",\"2\"\n";
        }
        folder_.write("long.vek", text);
    }

    WorkFolder folder_;
};

TEST_F(LongTable, IsReadWhole) {
    writeWith("", 0);
    Finish finish = runVekLine(folder_, "show long.vek --where A==39999");
    EXPECT_EQ(finish.exitCode, 0);
    EXPECT_EQ(finish.errors, "");
    EXPECT_NE(finish.output.find("1 of 40000 rows"), std::string::npos) << finish.output;
}

TEST_F(LongTable, EndsAtAnEmptyLine) {
    writeWith("\n", 30000);
    Finish finish = runVekLine(folder_, "show long.vek --limit 1");
    EXPECT_EQ(finish.exitCode, 1);
    EXPECT_EQ(
        finish.errors,
        "vek: long.vek:30009: an empty line, which ends the rows, expected rows to the end of "
        "the file; 10000 lines from line 30010 on not read\n");
}

TEST_F(LongTable, KeepsARowThatLooksLikeAHeader) {
    writeWith("\"VEKDB\",\"2\"\n", 39998);
    Finish finish = runVekLine(folder_, "check long.vek");
    EXPECT_EQ(finish.exitCode, 1);
    EXPECT_NE(finish.output.find("long.vek:40007:A: \"VEKDB\""), std::string::npos)
        << finish.output;
}

// The plain variant is read from the open file, whatever its name: no other place is written to.
TEST(PlainVariant, NeedsNoFolderForTemporaryFiles) {
    namespace fs = std::filesystem;
    const WorkFolder folder;
    folder.write("log.txt", "A,B\n1,2\n");
    fs::create_directory(folder.path() / "other");
    const auto longAgo = fs::last_write_time(folder.path() / "other") - std::chrono::hours(1);
    fs::last_write_time(folder.path() / "other", longAgo);
    for (const char* place : {"other", "missing/folder"}) {
        Start start;
        start.words = shellWords("vek convert log.txt - --from plain-csv --to csv");
        start.environment = {std::string("TMPDIR=") + place};
        const Finish finish = run(folder, start);
        EXPECT_EQ(finish.exitCode, 0) << finish.errors;
        EXPECT_EQ(finish.output, "A,B\n1,2\n");
    }
    EXPECT_EQ(fs::last_write_time(folder.path() / "other"), longAgo);
}
