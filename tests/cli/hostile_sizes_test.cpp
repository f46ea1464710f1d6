#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "cli/program.h"

namespace {

std::string times(std::string_view text, std::size_t count) {
    std::string out;
    for (std::size_t i = 0; i < count; ++i) out += text;
    return out;
}

// A table file of two columns with a row of many values behind many of two.
std::string longRowInATable() {
    return "\"VEKDB:Rev 1\"\n\"VEKDB\"\n\"4\",\"4\"\n\"text\",\"text\"\n\"a\",\"b\"\n" +
           times("\"1\",\"2\"\n", 50000) + times("x,", 60000) + "x\n";
}

std::string sparseLines() {
    std::string out;
    for (int i = 0; i < 60000; ++i) out += "{\"k" + std::to_string(i) + "\":\"1\"}\n";
    return out;
}

void expectTooManyCells(const Finish& finish) {
    EXPECT_EQ(finish.exitCode, 3);
    EXPECT_NE(finish.errors.find("--max-cells allows more"), std::string::npos) << finish.errors;
}

}  // namespace

TEST(HostileSizes, FewBytesThatWouldMakeAnEnormousTableAreRefused) {
    WorkFolder folder;
    folder.write("wide.csv", times("c,", 65534) + "c\n" + times("1\n", 50000));
    folder.write("long.csv", "a\n" + times("1\n", 50000) + times("x,", 60000) + "x\n");
    folder.write("long.vek", longRowInATable());
    folder.write("sparse.jsonl", sparseLines());
    for (const char* file : {"wide.csv", "long.csv", "long.vek", "sparse.jsonl"}) {
        for (const char* command : {"info ", "show ", "check "}) {
            expectTooManyCells(runVekLine(folder, std::string(command) + file));
        }
    }
}

TEST(HostileSizes, ALongRowAmongFewIsATable) {
    WorkFolder folder;
    folder.write("long.csv", "a\n1\n" + times("x,", 60000) + "x\n2\n");
    Finish finish = runVekLine(folder, "convert long.csv - --to csv");
    EXPECT_EQ(finish.exitCode, 0);
    EXPECT_TRUE(finish.output.starts_with("a,Extra 1,Extra 2,")) << finish.output.substr(0, 50);
    EXPECT_NE(finish.output.find(",Extra 60000\n1,,"), std::string::npos);
}

TEST(HostileSizes, EqualNamesGetNumbersInTheirOrder) {
    WorkFolder folder;
    folder.write("names.csv", times("x,", 15999) + "x\n1\n");
    Finish finish = runVekLine(folder, "convert names.csv - --to jsonl");
    EXPECT_EQ(finish.exitCode, 0);
    EXPECT_TRUE(finish.output.starts_with("{\"x\": \"1\", \"x 2\": \"\", \"x 3\": \"\""));
    EXPECT_TRUE(finish.output.ends_with("\"x 16000\": \"\"}\n"));
}

TEST(HostileSizes, OneLongCellMakesNotEveryRowOfAPipeAsLong) {
    WorkFolder folder;
    folder.write("cell.csv", "a,b\n" + std::string(500000, 'x') + ",y\n" + times("1,2\n", 1000));
    Finish finish = runVekLine(folder, "show cell.csv");
    EXPECT_EQ(finish.exitCode, 0);
    EXPECT_NE(finish.output.find(std::string(500000, 'x') + "  y\n"), std::string::npos);
    EXPECT_LT(finish.output.size(), 800000u);
}

TEST(HostileSizes, ProblemsAreKeptUpToAThousandAndCountedFromThere) {
    WorkFolder folder;
    folder.write("short.csv", "a,b\n" + times("1\n", 1500));
    Finish info = runVekLine(folder, "info short.csv");
    EXPECT_NE(info.errors.find("1480 more like these; vek check lists the first thousand"),
              std::string::npos)
        << info.errors;
    EXPECT_NE(info.output.find("Problems    1500\n"), std::string::npos) << info.output;
    Finish check = runVekLine(folder, "check short.csv");
    EXPECT_NE(check.output.find("short.csv: 500 problems more of reading\n"), std::string::npos);
    EXPECT_NE(check.errors.find("1500 problems"), std::string::npos) << check.errors;
}

TEST(HostileSizes, LongNamesInEveryRowAreNotWrittenWithoutEnd) {
    WorkFolder folder;
    folder.write("name.csv", std::string(500000, 'n') + ",b\n" + times("1,2\n", 20000));
    folder.write("other.csv", "c\n");
    for (const char* command :
         {"convert name.csv - --to json", "convert name.csv - --to jsonl",
          "diff name.csv other.csv", "diff name.csv other.csv --format json"}) {
        Start start;
        start.words = shellWords("vek " + std::string(command) + " --max-output 9000000");
        start.output = "/dev/null";
        Finish finish = run(folder, start);
        EXPECT_EQ(finish.exitCode, 4) << command;
        EXPECT_NE(finish.errors.find("--max-output allows more"), std::string::npos)
            << finish.errors;
    }
    Finish finish = runVekLine(folder, "convert other.csv - --to csv --max-output 1");
    EXPECT_EQ(finish.exitCode, 4);
    EXPECT_EQ(runVekLine(folder, "convert other.csv - --to csv --max-output 2").exitCode, 0);
}

TEST(HostileSizes, ConflictsOfAMergeAreToldUpToAThousand) {
    WorkFolder folder;
    std::string one = "Name,b\n";
    std::string two = one;
    for (int i = 0; i < 1500; ++i) {
        one += std::to_string(i) + ",1\n";
        two += std::to_string(i) + ",2\n";
    }
    folder.write("one.csv", one);
    folder.write("two.csv", two);
    Finish finish = runVekLine(folder, "merge one.csv two.csv --key Name --to csv");
    EXPECT_EQ(finish.exitCode, 1);
    EXPECT_EQ(std::count(finish.errors.begin(), finish.errors.end(), '\n'), 1002);
    EXPECT_NE(finish.errors.find("vek: 500 more like these\nvek: 1500 conflicts; choose"),
              std::string::npos);
}

TEST(HostileSizes, LogsThatAreEnormousTogetherAreNotMerged) {
    WorkFolder folder;
    std::string names = "c0";
    for (int i = 1; i < 60000; ++i) names += ",c" + std::to_string(i);
    folder.write("wide.csv", names + "\n");
    folder.write("long.csv", "a\n" + times("1\n", 100000));
    expectTooManyCells(runVekLine(folder, "merge long.csv wide.csv --to csv"));
    expectTooManyCells(runVekLine(folder, "merge wide.csv long.csv --to csv"));
}

TEST(HostileSizes, MoreColumnsThanALogHoldsAreNotMerged) {
    WorkFolder folder;
    for (const char* side : {"a", "b"}) {
        std::string names = std::string(side) + "0";
        for (int i = 1; i < 40000; ++i) names += "," + (side + std::to_string(i));
        folder.write(std::string(side) + ".csv", names + "\n1\n");
    }
    Finish finish = runVekLine(folder, "merge a.csv b.csv -o out.vek");
    EXPECT_EQ(finish.exitCode, 4);
    EXPECT_NE(finish.errors.find("b.csv: no room for column \"b25535\", a log holds at most 65535"),
              std::string::npos)
        << finish.errors;
    EXPECT_FALSE(folder.has("out.vek"));
}

TEST(HostileSizes, ALogWithAllTheColumnsItCanHoldGetsNoFurtherOne) {
    WorkFolder folder;
    std::string names = "c0";
    for (int i = 1; i < 65535; ++i) names += ",c" + std::to_string(i);
    const std::string text = names + "\n1\n";
    folder.write("full.csv", text);
    EXPECT_EQ(runVekLine(folder, "convert full.csv full.vek").exitCode, 0);
    const std::string table = folder.read("full.vek");
    for (const char* file : {"full.csv", "full.vek"}) {
        for (const char* command : {"tag %s --where c0==1", "column add %s New",
                                    "tag %s --where c0==1 --dry-run", "column add %s New -n"}) {
            std::string line = command;
            line.replace(line.find("%s"), 2, file);
            const Finish finish = runVekLine(folder, line);
            EXPECT_EQ(finish.exitCode, 4) << line;
            EXPECT_NE(finish.errors.find(std::string(file) + ": no room for column "),
                      std::string::npos)
                << line << ": " << finish.errors.substr(0, 200);
        }
    }
    EXPECT_EQ(folder.read("full.csv"), text);
    EXPECT_EQ(folder.read("full.vek"), table);
}

TEST(HostileSizes, ProblemsOfHeadingsAndEditListsAreCountedToo) {
    WorkFolder folder;
    folder.write("x.edl", "TITLE: x\n1 A V C 01:00:00:00 01:00:01:00 02:00:00:00 02:00:01:00\n" +
                              times("2 A V C\n", 1500));
    EXPECT_NE(runVekLine(folder, "info x.edl").output.find("Problems    1500\n"),
              std::string::npos);
    folder.write("x.ale",
                 "Heading\n" + times("FPS\t24\nFPS\t25\n", 750) + "Column\nName\nData\nx\n");
    EXPECT_NE(runVekLine(folder, "info x.ale").output.find("Problems    1499\n"),
              std::string::npos);
    Finish check = runVekLine(folder, "check x.ale");
    EXPECT_NE(check.output.find("499 problems more of reading"), std::string::npos)
        << check.output.substr(0, 300);
}

TEST(HostileSizes, ARowOfMoreValuesThanATableHoldsIsNotLostInSilence) {
    WorkFolder folder;
    const std::string table =
        "\"VEKDB:Rev 1\"\n\"VEKDB\"\n\"4\"\n\"text\"\n\"a\"\n" + times("x,", 65536) + "last\n";
    folder.write("long.vek", table);
    Finish finish = runVekLine(folder, "set long.vek --every a=y");
    EXPECT_NE(finish.exitCode, 0);
    EXPECT_NE(finish.errors.find("more than 65535 values"), std::string::npos) << finish.errors;
    EXPECT_EQ(folder.read("long.vek"), table);
}
