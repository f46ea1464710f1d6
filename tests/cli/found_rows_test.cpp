#include <gtest/gtest.h>

#include <string>

#include "cli/program.h"

namespace {

// More rows than are looked at together, in files of which the second has another column.
struct Files {
    Files() {
        std::string first = "a,b\n";
        std::string second = "c,a\n";
        csv = "File,Row,a,b,c\n";
        json = "[\n";
        for (int i = 1; i <= 9000; ++i) {
            const std::string number = std::to_string(i);
            first += number + ",\"x " + number + "\"\n";
            csv += "first.csv," + number + "," + number + ",x " + number + ",\n";
            json += R"(  {"File": "first.csv", "Row": ")" + number + R"(", "a": ")" + number +
                    R"(", "b": "x )" + number + "\", \"c\": \"\"},\n";
        }
        for (int i = 1; i <= 5000; ++i) {
            const std::string number = std::to_string(i);
            second += "y\"\"," + number + "\n";
            csv += "second.csv," + number + "," + number + ",,\"y\"\"\"\"\"\n";
        }
        folder.write("first.csv", first);
        folder.write("second.csv", second);
    }

    WorkFolder folder;
    std::string csv;
    std::string json;
};

}  // namespace

TEST(FoundRows, OfManyAreWrittenEachOnce) {
    const Files files;
    const Finish found = runVekLine(files.folder, "find --every first.csv second.csv --format csv");
    EXPECT_EQ(found.exitCode, 0) << found.errors;
    EXPECT_TRUE(found.output == files.csv) << found.output.substr(0, 300);
}

TEST(FoundRows, AreThoseOfALogThatIsMadeOfThem) {
    const Files files;
    const std::string words = "find --every first.csv second.csv -o ";
    for (const char* name : {"found.csv", "found.tsv", "found.json", "found.jsonl", "found.vek"}) {
        EXPECT_EQ(runVekLine(files.folder, words + name).exitCode, 0) << name;
    }
    for (const char* name : {"found.csv", "found.tsv", "found.json", "found.jsonl"}) {
        const Finish compared = runVekLine(files.folder, std::string("diff found.vek ") + name);
        EXPECT_EQ(compared.exitCode, 0)
            << name << compared.output.substr(0, 300) << compared.errors;
    }
}

TEST(FoundRows, OfOneFileEndWhereTheyEnd) {
    const Files files;
    std::string json = files.json;
    std::size_t at = 0;
    while ((at = json.find(", \"c\": \"\"", at)) != json.npos) json.erase(at, 9);
    json.erase(json.rfind(','), 1);
    EXPECT_TRUE(runVekLine(files.folder, "find --every first.csv --format json").output ==
                json + "]\n");
    EXPECT_EQ(runVekLine(files.folder, "find a==8192 first.csv --format csv").output,
              "File,Row,a,b\nfirst.csv,8192,8192,x 8192\n");
    EXPECT_EQ(runVekLine(files.folder, "find a==none first.csv --format csv").output, "File,Row\n");
}
