#include <gtest/gtest.h>

#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>

#include "cli/terminal.h"

namespace fs = std::filesystem;

namespace {

void append(const WorkFolder& folder, const std::string& name, const std::string& text) {
    std::ofstream(folder.path() / name, std::ios::binary | std::ios::app) << text;
}

// As editors save: another file takes the name.
void replace(const WorkFolder& folder, const std::string& name, const std::string& text) {
    folder.write(name + ".new", text);
    fs::rename(folder.path() / (name + ".new"), folder.path() / name);
}

// What follows a log through a pipe writes into a file here, so that nothing waits for a reader.
class Followed {
public:
    Followed(const WorkFolder& folder, const std::string& options)
        : shell_(folder, {"/bin/sh", "-c",
                          std::string(VEK_PROGRAM) + " show --watch " + options +
                              " 2>&1 | while IFS= read -r line; do echo \"$line\"; done"}) {}

    void waitFor(const std::string& text) { seen_ += shell_.waitFor(text); }
    /// All that came so far, up to a text that is the last to come.
    std::string seenUpTo(const std::string& text) {
        waitFor(text);
        std::erase(seen_, '\r');
        return seen_.substr(0, seen_.rfind(text) + text.size());
    }

private:
    Terminal shell_;
    std::string seen_;
};

}  // namespace

TEST(Watch, ATerminalIsDrawnAnewWhenTheFileGrows) {
    WorkFolder folder;
    folder.write("a.csv", "Name,Take\nA1,1\nA2,2\n");
    Terminal screen(folder, {"vek", "show", "--watch", "a.csv", "-w", "Take>1"});
    screen.waitFor("A2");
    screen.waitFor("1 of 2 rows");
    append(folder, "a.csv", "A3,3\n");
    const std::string drawn = screen.waitFor("2 of 3 rows");
    EXPECT_NE(drawn.find("\x1b[H\x1b[2J"), std::string::npos);
    EXPECT_NE(drawn.find("A2"), std::string::npos);
    EXPECT_NE(drawn.find("A3"), std::string::npos);
    EXPECT_EQ(drawn.find("A1"), std::string::npos);
    screen.type("\x03");
    EXPECT_EQ(screen.finish(), 1000 + SIGINT);
}

TEST(Watch, ATerminalShowsTheLastRowsThatFitIt) {
    WorkFolder folder;
    std::string text = "Name\n";
    for (int i = 1000; i < 1100; ++i) text += "N" + std::to_string(i) + "\n";
    folder.write("a.csv", text);
    Terminal screen(folder, {"vek", "show", "--watch", "a.csv"});
    const std::string drawn = screen.waitFor("19 of 100 rows");
    EXPECT_EQ(drawn.find("N1080"), std::string::npos);
    EXPECT_NE(drawn.find("N1081"), std::string::npos);
    EXPECT_NE(drawn.find("N1099"), std::string::npos);
}

TEST(Watch, ATerminalOfAnotherWidthIsDrawnAnew) {
    WorkFolder folder;
    folder.write("a.csv", "Name,Take\nA1,1\n");
    Terminal screen(folder, {"vek", "show", "--watch", "a.csv"});
    screen.waitFor("1 of 1 row");
    screen.resize(40);
    EXPECT_NE(screen.waitFor("1 of 1 row").find("#1"), std::string::npos);
}

TEST(Watch, APipeGetsTheRowsThatWereNotThereBefore) {
    WorkFolder folder;
    folder.write("a.csv", "Name,Take\nA1,1\n");
    Followed followed(folder, "a.csv --format csv");
    followed.waitFor("A1,1");
    append(folder, "a.csv", "A2,2\nA3,3\n");
    followed.waitFor("A3,3");
    replace(folder, "a.csv", "Name,Take\nA1,1\nA2,2\nA2b,2\nA3,3\n");
    followed.waitFor("A2b,2");
    folder.write("a.csv", "Name,Take\n");
    append(folder, "a.csv", "A4,4\n");
    EXPECT_EQ(followed.seenUpTo("A4,4"), "Name,Take\nA1,1\nA2,2\nA3,3\nA2b,2\nA4,4");
    fs::remove(folder.path() / "a.csv");
    followed.waitFor("vek: a.csv: is gone; waiting for it to come back");
    folder.write("a.csv", "Name,Take\nA4,4\nA5,5\n");
    followed.waitFor("A5,5");
    append(folder, "a.csv", "A6,6\n");
    EXPECT_EQ(followed.seenUpTo("A6,6"),
              "Name,Take\nA1,1\nA2,2\nA3,3\nA2b,2\nA4,4\n"
              "vek: a.csv: is gone; waiting for it to come back\nA5,5\nA6,6");
}

TEST(Watch, WhatHasNoPlaceInTheFormatIsToldOnce) {
    WorkFolder folder;
    const std::string table =
        "\"VEKDB:Rev 1\"\n\"FPS:24\"\n\"VEKDB\"\n\"4\"\n\"text\"\n\"Name\"\n\"A1\"\n";
    folder.write("a.vek", table);
    Followed followed(folder, "a.vek -f jsonl");
    followed.waitFor("A1");
    append(folder, "a.vek", "\"A2\"\n");
    followed.waitFor("A2");
    append(folder, "a.vek", "\"Last\"\n");
    const std::string seen = followed.seenUpTo("Last");
    const std::string told = "vek: standard output: parameters have no place in this format: 1";
    EXPECT_NE(seen.find(told), std::string::npos) << seen;
    EXPECT_EQ(seen.find(told), seen.rfind(told)) << seen;
}

TEST(Watch, APipeGetsNoRowThatIsWrittenByHalf) {
    WorkFolder folder;
    folder.write("a.csv", "Na");
    Followed followed(folder, "a.csv --format csv");
    followed.waitFor("vek: a.csv:1: the last line has no end");
    append(folder, "a.csv", "me,Take\nA1,1\nA2");
    followed.waitFor("A1,1");
    followed.waitFor("vek: a.csv:3: the last line has no end");
    append(folder, "a.csv", "b,2\nA3,\"x\n");
    followed.waitFor("A2b,2");
    followed.waitFor("vek: a.csv:4: the last line has no end");
    append(folder, "a.csv", "y\"\n");
    followed.waitFor("y\"");
    append(folder, "a.csv", "Last,4\n");
    std::string seen = followed.seenUpTo("Last,4");
    const std::size_t message = seen.find("vek: ");
    EXPECT_NE(message, std::string::npos);
    for (std::size_t at; (at = seen.find("vek: ")) != std::string::npos;) {
        seen.erase(at, seen.find('\n', at) + 1 - at);
    }
    EXPECT_EQ(seen, "Name,Take\nA1,1\nA2b,2\nA3,\"x\ny\"\nLast,4");
}

TEST(Watch, ATableFileGetsNoRowThatIsWrittenByHalf) {
    WorkFolder folder;
    folder.write("a.vek",
                 "\"VEKDB:Rev 1\"\n\"VEKDB\"\n\"4\",\"4\"\n\"text\",\"text\"\n"
                 "\"Name\",\"Take\"\n\"A1\",\"1\"\n\"A2\",\"2");
    Followed followed(folder, "a.vek -f jsonl");
    followed.waitFor("A1");
    followed.waitFor("the last line has no end");
    append(folder, "a.vek", "2\"\n");
    EXPECT_EQ(followed.seenUpTo("\"22\"").find("\"2\""), std::string::npos);
}

TEST(Watch, ColumnsOfATableStayInLineBehindAPipe) {
    WorkFolder folder;
    folder.write("a.csv", "Name,Take\nLongName,1\n");
    Followed followed(folder, "a.csv -s Take -r");
    followed.waitFor("LongName");
    append(folder, "a.csv", "B,2\nC,3\n");
    followed.waitFor("B");
    append(folder, "a.csv", "D,4\n");
    EXPECT_EQ(followed.seenUpTo("D         4"),
              " #  Name      Take\n1   LongName  1\n3   C         3\n"
              "2   B         2\n4   D         4");
}

TEST(Watch, OtherColumnsGetANewHeading) {
    WorkFolder folder;
    folder.write("a.csv", "Name\nA1\n");
    Followed followed(folder, "a.csv -f tsv");
    followed.waitFor("A1");
    replace(folder, "a.csv", "Name,Take\nA1,1\n");
    followed.waitFor("A1\t1");
    append(folder, "a.csv", "A2,2\n");
    EXPECT_EQ(followed.seenUpTo("A2\t2"), "Name\nA1\nName\tTake\nA1\t1\nA2\t2");
}

TEST(Watch, AColumnThatIsGoneIsWaitedFor) {
    WorkFolder folder;
    folder.write("a.csv", "Name,Take\nA1,1\n");
    Followed followed(folder, "a.csv -f jsonl -w Take==1");
    followed.waitFor("A1");
    replace(folder, "a.csv", "Name\nA1\n");
    followed.waitFor("there is no column \"Take\"; did you mean Name? (waiting for it to change)");
    replace(folder, "a.csv", "Name,Take\nA1,1\nA7,1\n");
    followed.waitFor("A7");
}

TEST(Watch, ALinkLeadsToAFileThatGrows) {
    WorkFolder folder;
    folder.write("other/a.csv", "Name\nA1\n");
    fs::create_symlink("other/a.csv", folder.path() / "link.csv");
    Followed followed(folder, "link.csv -f csv");
    followed.waitFor("A1");
    append(folder, "other/a.csv", "A2\n");
    followed.waitFor("A2");
}

TEST(Watch, TheEndOfAPipeIsNoticedWithoutAChange) {
    WorkFolder folder;
    folder.write("a.csv", "Name\nA1\n");
    Terminal shell(
        folder, {"/bin/sh", "-c",
                 std::string(VEK_PROGRAM) + " show --watch a.csv -f csv | head -n 1; echo over"});
    shell.waitFor("over");
    EXPECT_EQ(shell.finish(), 0);
}

TEST(Watch, WaitingTakesNoTime) {
    WorkFolder folder;
    folder.write("a.csv", "Name\nA1\n");
    Terminal screen(folder, {"vek", "show", "--watch", "a.csv"});
    screen.waitFor("1 of 1 row");
    const std::chrono::milliseconds before = screen.timeTaken();
    // Others write into the folder all the time.
    for (int i = 0; i < 100; ++i) {
        folder.write("noise.txt", std::to_string(i));
        ::usleep(10000);
    }
    const std::chrono::milliseconds taken = screen.timeTaken() - before;
    EXPECT_LT(taken.count(), 300) << "of 1000 or more in which nothing happened to the log";
    screen.type("\x03");
    EXPECT_EQ(screen.finish(), 1000 + SIGINT);
}

TEST(Watch, WhatCannotBeReadAgainIsRefusedWithTheReason) {
    WorkFolder folder;
    ASSERT_EQ(::mkfifo((folder.path() / "fifo").c_str(), 0600), 0);
    for (const auto& [name, reason] : {std::pair{"fifo", "a pipe"},
                                       {"-", "standard input"},
                                       {".", "a folder"},
                                       {"/dev/null", "a device"}}) {
        Start start;
        start.words = {"vek", "show", "--watch", name};
        const Finish refused = run(folder, start);
        EXPECT_EQ(refused.exitCode, 2) << name;
        EXPECT_EQ(refused.output, "");
        EXPECT_NE(refused.errors.find(reason), std::string::npos) << refused.errors;
    }
}
