#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <sstream>

#include "cli/program.h"

namespace {

constexpr const char* logText =
    "\"VEKDB:Rev 1\"\n\"VEKDB\"\n\"4\",\"4\"\n\"text\",\"text\"\n\"Reel\",\"Take\"\n"
    "\"A001\",\"1\"\n\"A002\",\"2\"\n";

Start shell(const std::string& script) {
    Start start;
    start.words = {"/bin/sh", "-c", script, VEK_PROGRAM};
    return start;
}

std::string rows(int count) {
    std::string text = "Name,Note\n";
    for (int i = 0; i < count; ++i) text += "r" + std::to_string(i) + ",\n";
    return text;
}

// Starts so many changes of one file at once; says which of them ended well and are not in it.
void changeAtOnce(const WorkFolder& folder, int count) {
    folder.write("log.csv", rows(count));
    Finish finish = run(folder, shell("for i in $(seq 0 " + std::to_string(count - 1) +
                                      "); do (\"$0\" set log.csv Note=done$i --where Name==r$i "
                                      "2>/dev/null && echo r$i,done$i) & done; wait"));
    std::string text = folder.read("log.csv");
    std::istringstream told(finish.output);
    int well = 0;
    for (std::string line; std::getline(told, line); ++well) {
        EXPECT_NE(text.find(line + "\n"), std::string::npos) << line << " is lost\n" << text;
    }
    EXPECT_GT(well, 0);
}

}  // namespace

TEST(AtOnce, NoChangeThatEndedWellIsLost) {
    WorkFolder folder;
    for (int i = 0; i < 15; ++i) changeAtOnce(folder, 2);
    for (int i = 0; i < 3; ++i) changeAtOnce(folder, 8);
    EXPECT_EQ(folder.names(), std::vector<std::string>{"log.csv"});
}

namespace {

// A change that is killed after so many thousandths of a second, unless it has ended by then.
std::string killedChange(int row, unsigned thousandths) {
    const std::string digits = std::to_string(1000 + thousandths).substr(1);
    const std::string name = std::to_string(row);
    return "(timeout -s KILL 0." + digits + " \"$0\" set log.csv Note=done" + name +
           " --where Name==r" + name + " 2>/dev/null && echo r" + name + ",done" + name + ") & ";
}

// Every row is there, and is as it was or as it was to become.
void expectWhole(const std::string& text, int count) {
    std::istringstream lines(text);
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(line, "Name,Note");
    for (int i = 0; i < count; ++i) {
        std::getline(lines, line);
        const std::string name = "r" + std::to_string(i);
        EXPECT_TRUE(line == name + "," || line == name + ",done" + std::to_string(i)) << line;
    }
    EXPECT_FALSE(std::getline(lines, line)) << line;
}

// Tells how many of the changes ended well.
int changeAndKill(const WorkFolder& folder, int count, std::mt19937& random) {
    folder.write("log.csv", rows(count));
    std::string script;
    for (int i = 0; i < count; ++i) script += killedChange(i, random() % 60);
    const Finish finish = run(folder, shell(script + "wait"));
    const std::string text = folder.read("log.csv");
    expectWhole(text, count);
    std::istringstream told(finish.output);
    int well = 0;
    for (std::string line; std::getline(told, line); ++well) {
        EXPECT_NE(text.find(line + "\n"), std::string::npos) << line << " is lost\n" << text;
    }
    run(folder, shell("exec \"$0\" set log.csv Note=last --every"));
    EXPECT_EQ(folder.names(), std::vector<std::string>{"log.csv"});
    return well;
}

std::chrono::seconds timeToKill() {
    return std::chrono::seconds(std::getenv("VEKDB_TEST_WHOLE") == nullptr ? 2 : 60);
}

}  // namespace

// Some are killed at random times on their way; the next save clears up after them.
TEST(AtOnce, NoChangeThatEndedWellIsLostWhereOthersAreKilled) {
    WorkFolder folder;
    std::mt19937 random(std::random_device{}());
    const auto end = std::chrono::steady_clock::now() + timeToKill();
    int changes = 0;
    int well = 0;
    for (int round = 0; std::chrono::steady_clock::now() < end && !testing::Test::HasFailure();
         ++round) {
        const int count = round % 2 == 0 ? 2 : 8;
        changes += count;
        well += changeAndKill(folder, count, random);
    }
    std::printf("%d changes at once, %d of them killed on the way\n", changes, changes - well);
}

namespace {

// Each of the commands ends with 0 or 4; how many with 0.
int doneOf(const WorkFolder& folder, const std::vector<std::string>& commands) {
    std::string script;
    for (const std::string& command : commands) {
        script += "(\"$0\" " + command + " >/dev/null 2>&1; echo $?) & ";
    }
    std::istringstream codes(run(folder, shell(script + "wait")).output);
    int done = 0;
    for (int code = 0; codes >> code;) {
        EXPECT_TRUE(code == 0 || code == 4) << code;
        done += code == 0 ? 1 : 0;
    }
    return done;
}

std::vector<std::string> eightTimes(const std::string& before, const std::string& after) {
    std::vector<std::string> commands;
    for (int i = 0; i < 8; ++i) commands.push_back(before + std::to_string(i) + after);
    return commands;
}

}  // namespace

// What somebody was told to be there is there.
TEST(AtOnce, OfThoseThatMakeOneFileOneIsDoneAndTheOthersAreTold) {
    const std::string identity = " 910a2debbeeb8da0f893a2ed71c1868f0000";
    for (int round = 0; round < 5; ++round) {
        WorkFolder folder;
        EXPECT_EQ(doneOf(folder, eightTimes("container create c.vek" + identity, "a")), 1);
        folder.write("log.csv", "Reel,Take\nA,1\n");
        EXPECT_EQ(
            doneOf(folder, eightTimes("split log.csv --by Reel -o {Reel}.csv -w 'Take!=", "0'")),
            1);
        const std::string part = "convert log.csv --partition Reel --to jsonl -o parts --append";
        const int done = doneOf(folder, std::vector<std::string>(4, part));
        const auto begin = std::filesystem::directory_iterator(folder.path() / "parts/Reel=A");
        EXPECT_EQ(std::distance(begin, std::filesystem::directory_iterator()), done);
        EXPECT_GE(done, 1);
    }
}

TEST(AtOnce, AnotherLogThatIsReplacedMustBeAsItWasRead) {
    WorkFolder folder;
    folder.write("log.vek", logText);
    folder.write("first.csv", "Reel,Take\nB001,9\n");
    Finish finish = run(folder, shell("(sleep 0.4; echo more >> log.vek) & "
                                      "(cat log.vek; sleep 0.8) | "
                                      "\"$0\" append first.csv log.vek - -o log.vek 2>&1; wait"));
    EXPECT_NE(finish.output.find("log.vek: was changed by another program since it was read"),
              std::string::npos)
        << finish.output;
    EXPECT_EQ(folder.read("log.vek"), std::string(logText) + "more\n");
}

// Only root can give links to others; those of anybody else are their own, and are followed.
TEST(Names, OfFoldersThatLeadThroughLinksOfOthersAreNotMade) {
    const bool isOthers = ::geteuid() == 0;
    WorkFolder folder;
    folder.write("log.csv", "Reel,Take\nA,1\n");
    std::filesystem::create_directory(folder.path() / "mine");
    std::filesystem::create_directory(folder.path() / "open");
    ASSERT_EQ(::chmod((folder.path() / "open").c_str(), 01777), 0);
    std::filesystem::create_symlink("../mine", folder.path() / "open/link");
    const int given = ::lchown((folder.path() / "open/link").c_str(), 2001, 2001);
    ASSERT_EQ(given == 0, isOthers);
    for (const char* line : {"convert log.csv --to jsonl -o open/link/deep/er",
                             "convert log.csv --partition Reel --to jsonl -o open/link/parts"}) {
        const Finish finish = runVekLine(folder, line);
        EXPECT_EQ(finish.exitCode, isOthers ? 4 : 0) << line;
        const auto told = finish.errors.find("a link that somebody else put there");
        EXPECT_EQ(told != std::string::npos, isOthers) << finish.errors;
    }
    EXPECT_EQ(std::filesystem::is_empty(folder.path() / "mine"), isOthers);
}

TEST(AtOnce, WhoWaitsTooLongForAnotherIsTold) {
    WorkFolder folder;
    folder.write("log.vek", logText);
    int other = ::open((folder.path() / "log.vek").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(::flock(other, LOCK_EX), 0);
    Finish finish = run(folder, shell("exec \"$0\" set log.vek Take=9 --every"));
    ::close(other);
    EXPECT_EQ(finish.exitCode, 4);
    EXPECT_NE(finish.errors.find("log.vek: another program is changing it"), std::string::npos)
        << finish.errors;
    EXPECT_EQ(folder.read("log.vek"), logText);
}

TEST(AtOnce, AFileThatWasChangedWhileItWasReadIsLeftAlone) {
    WorkFolder folder;
    folder.write("log.vek", logText);
    // The second input keeps it waiting once the first is read.
    Finish finish = run(folder, shell("(sleep 0.4; echo more >> log.vek) & "
                                      "(cat log.vek; sleep 0.8) | "
                                      "\"$0\" merge log.vek - -o log.vek 2>&1; echo $?; wait"));
    EXPECT_NE(finish.output.find("log.vek: was changed by another program since it was read"),
              std::string::npos)
        << finish.output;
    EXPECT_EQ(folder.read("log.vek"), std::string(logText) + "more\n");
}

TEST(Names, ThatAreNoUtf8AreReadAndWrittenByteForByte) {
    const std::string name = "caf\xE9.vek";
    const char* lines[] = {
        "set NAME Take=9 --every", "tag NAME --invert",      "delete NAME -w Take==9",
        "column add NAME Extra",   "param set NAME Day 2",   "convert other.csv NAME",
        "merge other.csv -o NAME", "show other.csv -o NAME", "set NAME Take=9 --every --backup"};
    for (const char* locale : {"C", "C.UTF-8"}) {
        for (const char* line : lines) {
            WorkFolder folder;
            folder.write(name, logText);
            folder.write("other.csv", "Reel,Take\nB001,9\n");
            Start start;
            start.words = shellWords("vek " + std::string(line));
            for (std::string& word : start.words) {
                if (word == "NAME") word = name;
            }
            start.environment = {std::string("LC_ALL=") + locale};
            Finish finish = run(folder, start);
            EXPECT_TRUE(finish.exitCode == 0 || finish.exitCode == 1) << line << finish.errors;
            bool changes = std::string(line).find("delete") == std::string::npos;
            EXPECT_EQ(folder.read(name) != logText, changes) << line;
            bool backs = std::string(line).find("--backup") != std::string::npos;
            EXPECT_EQ(folder.names().size(), backs ? 3u : 2u) << line;
            EXPECT_EQ(backs ? folder.read(name + ".bak") : logText, logText);
        }
    }
}

TEST(Names, OfContainersAreBytesToo) {
    WorkFolder folder;
    const std::string name = "b\xFFin.vek";
    Start start;
    start.words = {"vek", "container", "create", name, "910a2debbeeb8da0f893a2ed71c1868f00004d"};
    EXPECT_EQ(run(folder, start).exitCode, 0);
    EXPECT_EQ(folder.names(), std::vector<std::string>{name});
    EXPECT_NE(folder.read(name).find("Name:b\xFFin"), std::string::npos);
    start.words[2] = "contains";
    EXPECT_EQ(run(folder, start).exitCode, 0);
}

TEST(Names, ThatBeginWithAControlCharacterOpenThatFileOrNone) {
    WorkFolder folder;
    folder.write("log.vek", logText);
    for (const char* control : {"\x01", "\x1b", "\t", "\n"}) {
        const std::string name = std::string(control) + "log.vek";
        Start start;
        start.words = {"vek", "info", name};
        EXPECT_EQ(run(folder, start).exitCode, 3);
        for (const std::vector<std::string>& words :
             {std::vector<std::string>{"vek", "show", "log.vek", "--output=" + name},
              std::vector<std::string>{"vek", "show", "log.vek", "-o" + name},
              std::vector<std::string>{"vek", "convert", "log.vek", name}}) {
            start.words = words;
            Finish finish = run(folder, start);
            EXPECT_EQ(finish.exitCode, 0) << finish.errors;
            EXPECT_TRUE(folder.has(name)) << words.back();
            std::filesystem::remove(folder.path() / name);
        }
    }
    EXPECT_EQ(folder.read("log.vek"), logText);
}

TEST(StandardOutput, ThatIsAFileIsWrittenToWhereItStands) {
    for (const char* name : {"-", "/dev/stdout", "/dev/fd/1", "/proc/self/fd/1"}) {
        WorkFolder folder;
        folder.write("log.csv", "A\n1\n");
        std::string program = std::string("\"$0\" convert log.csv ") + name + " --to csv";
        run(folder, shell("echo head > f; " + program + " >> f; { " + program +
                          "; echo tail; } > g; exec 3< g"));
        EXPECT_EQ(folder.read("f"), "head\nA\n1\n") << name;
        EXPECT_EQ(folder.read("g"), "A\n1\ntail\n") << name;
        EXPECT_EQ(folder.names(), (std::vector<std::string>{"f", "g", "log.csv"})) << name;
    }
}

TEST(Zeros, AFileGetsAllBytesThatTheStandardOutputGets) {
    WorkFolder folder;
    folder.write("in.json",
                 "[{\"a\":\"x\",\"b\":\"1\"},{\"a\":\"p\\u0000q\",\"b\":\"2\"},{\"a\":\"z\","
                 "\"b\":\"3\"}]");
    for (const char* format : {"csv", "tsv"}) {
        Start start;
        start.words = {"vek", "convert", "in.json", "-", "--to", format};
        Finish printed = run(folder, start);
        start.words[3] = std::string("out.") + format;
        Finish finish = run(folder, start);
        EXPECT_EQ(finish.exitCode, 0);
        EXPECT_EQ(folder.read(start.words[3]), printed.output);
        EXPECT_EQ(printed.output.size(), 18u);
        EXPECT_NE(finish.errors.find("zero byte"), std::string::npos) << finish.errors;
    }
}

namespace {

// Starts the program, gives it time to get to where it waits, and ends it by a signal.
int endBySignal(const WorkFolder& folder, const std::string& line, int signal) {
    return run(folder, shell("exec timeout -s " + std::to_string(signal) + " 0.5 \"$0\" " + line))
        .exitCode;
}

}  // namespace

TEST(Interrupted, AFifoWithoutAReaderIsLeft) {
    for (int signal : {SIGINT, SIGTERM}) {
        WorkFolder folder;
        folder.write("log.csv", "A\n1\n");
        ASSERT_EQ(::mkfifo((folder.path() / "fifo").c_str(), 0600), 0);
        EXPECT_EQ(endBySignal(folder, "convert log.csv fifo --to csv", signal), 124);
        EXPECT_EQ(folder.names(), (std::vector<std::string>{"fifo", "log.csv"}));
    }
}

// A text of several pieces goes to a file beside the target while it is made.
TEST(LongOutput, IsWholeAndLeavesNothingBeside) {
    WorkFolder folder;
    folder.write("log.csv", rows(200000));
    Finish finish = run(folder, shell("exec \"$0\" convert log.csv copy.csv"));
    EXPECT_EQ(finish.exitCode, 0) << finish.errors;
    EXPECT_EQ(folder.read("copy.csv"), rows(200000));
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"copy.csv", "log.csv"}));
}

TEST(LongOutput, ThatFailsOnTheWayLeavesTheOldFileAndNothingBeside) {
    WorkFolder folder;
    folder.write("log.csv", rows(200000));
    folder.write("copy.csv", "older");
    Finish finish = run(folder, shell("trap '' XFSZ; ulimit -f 1100; exec \"$0\" convert log.csv "
                                      "copy.csv"));
    EXPECT_EQ(finish.exitCode, 4);
    EXPECT_NE(finish.errors.find("copy.csv: File too large"), std::string::npos) << finish.errors;
    EXPECT_EQ(folder.read("copy.csv"), "older");
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"copy.csv", "log.csv"}));
}

TEST(FullDisk, OfTheStandardOutputIsToldAsWell) {
    WorkFolder folder;
    folder.write("log.csv", rows(20000));
    Finish finish = run(folder, shell("ulimit -f 20; exec \"$0\" convert log.csv - --to json > o"));
    EXPECT_EQ(finish.exitCode, 4);
    EXPECT_EQ(finish.errors, "vek: standard output: File too large\n");
}

TEST(FullDisk, OfABackupIsCalledSoAndLeavesFileAndOlderBackup) {
    WorkFolder folder;
    folder.write("log.csv", rows(20000));
    folder.write("log.csv.bak", "older");
    Finish finish = run(folder, shell("trap '' XFSZ; ulimit -f 8; exec \"$0\" delete log.csv "
                                      "--where 'Name!=r7' --backup"));
    EXPECT_EQ(finish.exitCode, 4);
    EXPECT_NE(finish.errors.find("log.csv.bak: File too large"), std::string::npos)
        << finish.errors;
    EXPECT_EQ(folder.read("log.csv.bak"), "older");
    EXPECT_EQ(folder.read("log.csv"), rows(20000));
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"log.csv", "log.csv.bak"}));
}

TEST(Split, WritesMoreFilesThanMayBeOpenAtOnce) {
    WorkFolder folder;
    std::string log = "Reel\n";
    for (int i = 0; i < 100; ++i) log += "R" + std::to_string(i) + "\n";
    folder.write("log.csv", log);
    const Finish finish =
        run(folder,
            shell("ulimit -n 40; exec \"$0\" split log.csv --by Reel -o '{Reel}.csv' --backup"));
    EXPECT_EQ(finish.exitCode, 0) << finish.errors;
    EXPECT_EQ(folder.names().size(), 101u);
    EXPECT_EQ(folder.read("R99.csv"), "Reel\nR99\n");
}

// What the rights to files and folders forbid is said by a dry run, too.
TEST(DryRun, RefusesWhatMayNotBeWritten) {
    WorkFolder folder;
    std::filesystem::create_directory(folder.path() / "shut");
    folder.write("log.csv", "A,B\n1,2\n");
    folder.write("shut/log.csv", "A\n1\n");
    folder.write("kept.csv", "A\n1\n");
    ASSERT_EQ(::chmod(folder.path().c_str(), 0777), 0);
    ASSERT_EQ(::chmod((folder.path() / "kept.csv").c_str(), 0444), 0);
    ASSERT_EQ(::chmod((folder.path() / "shut").c_str(), 0555), 0);
    for (const char* line :
         {"sort log.csv --by A -o shut/new.csv -n", "set shut/log.csv A=2 --every -n",
          "set kept.csv A=2 --every -n", "convert log.csv shut/new.json -n",
          "convert log.csv --to json -o shut/day -n", "convert log.csv --to json -o shut -n",
          "convert log.csv --partition A --to json -o shut/day -n",
          "split log.csv --by A -o 'shut/{A}.csv' -n",
          "container create shut/bin.vek 910a2debbeeb8da0f893a2ed71c1868f00004d -n"}) {
        Start start;
        start.asNobody = true;
        start.words = shellWords(std::string("vek ") + line);
        const Finish finish = run(folder, start);
        EXPECT_EQ(finish.exitCode, 4) << line;
        EXPECT_NE(finish.errors.find("Permission denied"), std::string::npos)
            << line << ": " << finish.errors;
    }
    ASSERT_EQ(::chmod((folder.path() / "shut").c_str(), 0777), 0);
}

TEST(SeveralLogs, AreAllSavedOrNoneWithTheirBackups) {
    WorkFolder folder;
    std::filesystem::create_directory(folder.path() / "shut");
    folder.write("a.csv", "A\n1\n");
    folder.write("shut/b.csv", "A\n1\n");
    for (const char* open : {"", "a.csv", "shut/b.csv"}) {
        ASSERT_EQ(::chmod((folder.path() / open).c_str(), 0777), 0);
    }
    ASSERT_EQ(::chmod((folder.path() / "shut").c_str(), 0555), 0);
    Start start;
    start.asNobody = true;
    start.words = {"vek",        "sql",     "a.csv",
                   "shut/b.csv", "--write", "UPDATE a SET A = 2; UPDATE b SET A = 2",
                   "--backup"};
    const Finish finish = run(folder, start);
    EXPECT_EQ(finish.exitCode, 4);
    EXPECT_NE(finish.errors.find("b.csv.bak: Permission denied"), std::string::npos)
        << finish.errors;
    EXPECT_EQ(folder.read("a.csv"), "A\n1\n");
    EXPECT_EQ(folder.read("shut/b.csv"), "A\n1\n");
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"a.csv", "shut"}));
    ASSERT_EQ(::chmod((folder.path() / "shut").c_str(), 0777), 0);
}
