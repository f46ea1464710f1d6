#include <gmock/gmock.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "testing/random.h"
#include "testing/temp_dir.h"

// What the program writes as a file of Arrow, read by the library that wrote it.

namespace {

std::string contents(const std::filesystem::path& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

class ArrowFiles : public testing::Test {
protected:
    std::string path(const char* name) const { return folder_.file(name).string(); }
    void write(const char* name, const std::string& text) const {
        std::ofstream(path(name), std::ios::binary) << text;
    }
    // What a command prints; it must not fail.
    std::string printed(const std::string& command) const {
        const std::string all = "cd '" + path("") + "' && " + command + " > printed 2>> said";
        EXPECT_EQ(std::system(all.c_str()), 0) << command << '\n' << contents(path("said"));
        return contents(path("printed"));
    }
    void convert(const char* from, const char* to) const {
        printed("VEK_ARROW=\"$VEKDB_APACHE_ARROW\" \"$VEK_PROGRAM\" convert " + std::string(from) +
                " " + to);
    }
    std::string read(const char* name) const {
        return printed("node \"$VEKDB_ARROW_READER\" " + std::string(name));
    }
    // The rows alone.
    std::string rowsOf(const char* name) const {
        const std::string all = read(name);
        return all.substr(all.find('\n', all.find('\n') + 1) + 1);
    }

private:
    testing_support::TempDir folder_;
};

}  // namespace

TEST_F(ArrowFiles, HoldEachCellOfALogOfManyRows) {
    testing_support::Random random;
    std::string csv = "Name,Take,Note\n";
    for (int row = 0; row < 150000; ++row) {
        csv += random.oneIn(9) ? "\"caf\xC3\xA9, two\nlines\"," : "x,";
        csv += std::to_string(row) + ",\"" + random.text("xyz ,\n'\\", 30) + "\"\n";
    }
    write("in.csv", csv);
    convert("in.csv", "out.arrow");
    const std::string rows = printed("\"$VEK_PROGRAM\" convert in.csv - --to jsonl");
    EXPECT_TRUE(rowsOf("out.arrow") == rows);
}

TEST_F(ArrowFiles, HoldMoreBytesThanABatchHasRoomFor) {
    std::string csv = "Short,Long\n";
    for (int row = 0; row < 40; ++row) {
        csv += "a," + std::string(1'000'000 + 7 * static_cast<unsigned>(row), 'b') + '\n';
    }
    write("in.csv", csv + "end," + std::string(20'000'000, 'c') + "\nlast,\n");
    convert("in.csv", "out.arrow");
    EXPECT_TRUE(rowsOf("out.arrow") == printed("\"$VEK_PROGRAM\" convert in.csv - --to jsonl"));
}

TEST_F(ArrowFiles, HoldNamesAndCellsThatAreNoCode) {
    write("in.csv",
          "\"'); process.exit(3); ('\",\"\\\"\"${x}\",__proto__\n"
          "\"`id`\",\"\"\"; import os\",\"$(id)\"\n");
    convert("in.csv", "out.arrow");
    EXPECT_EQ(rowsOf("out.arrow"), printed("\"$VEK_PROGRAM\" convert in.csv - --to jsonl"));
}

TEST_F(ArrowFiles, HaveParametersAndTypesInTheirMetadata) {
    write("in.vek",
          "\"VEKDB:Rev 1\"\n\"Project:Night \\ shoot\"\n\"FPS:24\"\n\"VEKDB\"\n"
          "\"24\",\"12\"\n\"text\",\"timecode\"\n\"Scene\",\"Start\"\n\"12\",\"01:00:00:00\"\n");
    convert("in.vek", "out.arrow");
    EXPECT_EQ(read("out.arrow"),
              "[[\"vekdb.parameter:Project\",\"Night \\\\ shoot\"],"
              "[\"vekdb.parameter:FPS\",\"24\"]]\n"
              "[[\"Scene\",\"Utf8\",false,[\"vekdb.type\",\"text\"]],"
              "[\"Start\",\"Utf8\",false,[\"vekdb.type\",\"timecode\"]]]\n"
              "{\"Scene\": \"12\", \"Start\": \"01:00:00:00\"}\n");
}

TEST_F(ArrowFiles, OfALogWithoutRowsHaveItsColumns) {
    write("in.csv", "Name,name\n");
    convert("in.csv", "out.arrow");
    EXPECT_EQ(read("out.arrow"),
              "[]\n[[\"Name\",\"Utf8\",false,[\"vekdb.type\",\"text\"]],"
              "[\"name 2\",\"Utf8\",false,[\"vekdb.type\",\"text\"]]]\n");
}
