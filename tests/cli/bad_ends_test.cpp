#include <gtest/gtest.h>

#include "cli/program.h"

namespace {

// A command line for each subcommand that reads a log; FILE stands for the log.
struct Reading {
    const char* name;
    const char* line;
};

std::ostream& operator<<(std::ostream& out, const Reading& reading) {
    return out << reading.name;
}

constexpr Reading readings[] = {
    {"show", "vek show FILE"},
    {"info", "vek info FILE"},
    {"check", "vek check FILE"},
    {"convert", "vek convert FILE - --to csv"},
    {"tag", "vek tag FILE --where Take=1"},
    {"untag", "vek untag FILE"},
    {"set", "vek set FILE Take=1 --every"},
    {"delete", "vek delete FILE --every"},
    {"columnAdd", "vek column add FILE X"},
    {"columnRemove", "vek column remove FILE Take"},
    {"paramList", "vek param list FILE"},
    {"paramSet", "vek param set FILE Day 2"},
    {"merge", "vek merge FILE FILE"},
    {"diff", "vek diff FILE FILE"},
    {"stats", "vek stats FILE"},
    {"report", "vek report FILE"},
    {"containerList", "vek container list FILE"},
    {"containerAdd", "vek container add FILE 910a2debbeeb8da0f893a2ed71c1868f00004d"},
    {"containerRemove", "vek container remove FILE 910a2debbeeb8da0f893a2ed71c1868f00004d"},
    {"containerContains", "vek container contains FILE 910a2debbeeb8da0f893a2ed71c1868f00004d"},
};

Start startOf(const Reading& reading, const std::string& file) {
    Start start;
    start.words = shellWords(reading.line);
    for (std::string& word : start.words) {
        if (word == "FILE") word = file;
    }
    return start;
}

void expectRefused(const Finish& finish, int code, const std::string& about) {
    EXPECT_EQ(finish.exitCode, code);
    EXPECT_EQ(finish.output, "");
    EXPECT_TRUE(finish.errors.starts_with("vek: ")) << finish.errors;
    EXPECT_NE(finish.errors.find(about), std::string::npos) << finish.errors;
}

std::string nameOf(const testing::TestParamInfo<Reading>& info) {
    return info.param.name;
}

}  // namespace

class Unreadable : public testing::TestWithParam<Reading> {
protected:
    void expectUnreadable(const std::string& file, const std::string& about) {
        expectRefused(run(folder_, startOf(GetParam(), file)), 3, about);
    }

    WorkFolder folder_;
};

TEST_P(Unreadable, MissingFile) {
    expectUnreadable("none.vek", "none.vek: No such file");
    EXPECT_FALSE(folder_.has("none.vek"));
}

TEST_P(Unreadable, Folder) {
    std::filesystem::create_directory(folder_.path() / "folder.vek");
    expectUnreadable("folder.vek", "folder.vek: Is a directory");
}

TEST_P(Unreadable, EmptyFile) {
    folder_.write("empty.vek", "");
    expectUnreadable("empty.vek", "empty.vek: is empty");
    EXPECT_EQ(folder_.read("empty.vek"), "");
}

TEST_P(Unreadable, FileWithoutTheRightToRead) {
    folder_.write("secret.vek", "\"VEKDB:Rev 1\"\n");
    std::filesystem::permissions(folder_.path() / "secret.vek", std::filesystem::perms::none);
    Start start = startOf(GetParam(), "secret.vek");
    start.asNobody = true;
    expectRefused(run(folder_, start), 3, "secret.vek: Permission denied");
}

TEST_P(Unreadable, FileThatCannotBeReadThrough) {
    expectUnreadable("/proc/self/mem", "/proc/self/mem: ");
}

// A disk that fails behind the beginning of a file: neither a damaged line nor a shorter log.
TEST(UnreadableFile, WhoseMiddleCannotBeReadIsToldAsSuch) {
    std::string table = "\"VEKDB:Rev 1\"\n\"VEKDB\"\n\"8\"\n\"text\"\n\"Scene\"\n";
    std::string plain = "Scene\n";
    while (plain.size() < 6u << 20) {
        table += "\"a scene of a log that is long\"\n";
        plain += "a scene of a log that is long\n";
    }
    const WorkFolder folder;
    folder.write("log.vek", table);
    folder.write("log.csv", plain);
    for (const std::string name : {"log.vek", "log.csv"}) {
        Start start;
        start.words = {"vek", "set", name, "Scene=other", "--every"};
        start.failsToRead = true;
        expectRefused(run(folder, start), 3,
                      name + ": Input/output error; the disk or the network did not give");
    }
    EXPECT_EQ(folder.read("log.vek"), table);
    EXPECT_EQ(folder.read("log.csv"), plain);
}

// Sanitizers need descriptors of their own.
#if !defined(__SANITIZE_ADDRESS__)
TEST(UnreadableTable, ForWantOfDescriptorsIsNotCalledMalformed) {
    const WorkFolder folder;
    Start start;
    start.words = {"/bin/sh", "-c",
                   "exec 3<&- 4<&- 5<&- 6<&- 7<&- 8<&- 9<&-; ulimit -n 3; "
                   "exec \"$0\" show samples/docs.vek",
                   VEK_PROGRAM};
    expectRefused(run(folder, start), 3,
                  "samples/docs.vek: Too many open files; close other files");
}
#endif

TEST_P(Unreadable, TextThatIsNoLog) {
    folder_.write("odd.vek", "\"VEKDB:Rev 1\"\n\"VEKDB\"\n\"1\",\"2\"\n\"text\"\n");
    expectUnreadable("odd.vek", "odd.vek:4: ");
}

TEST_P(Unreadable, UnknownOptionIsWrongUsage) {
    folder_.write("log.csv", "Take\n1\n");
    Start start = startOf(GetParam(), "log.csv");
    start.words.push_back("--no-such-option");
    expectRefused(run(folder_, start), 2, "--no-such-option");
    EXPECT_EQ(folder_.read("log.csv"), "Take\n1\n");
}

TEST_P(Unreadable, NoArgumentsAreWrongUsage) {
    Start start = startOf(GetParam(), "log.csv");
    start.words.resize(2);
    expectRefused(run(folder_, start), 2, start.words[1] + ": ");
}

INSTANTIATE_TEST_SUITE_P(Vek, Unreadable, testing::ValuesIn(readings), nameOf);

namespace {

// A command line for each subcommand that prints.
constexpr Reading printings[] = {
    {"show", "vek show FILE"},
    {"showJson", "vek show FILE --format json"},
    {"showFile", "vek show FILE -o OUT --format csv"},
    {"info", "vek info FILE"},
    {"check", "vek check bad.csv"},
    {"convert", "vek convert FILE - --to vekdb"},
    {"convertFile", "vek convert FILE OUT --to ale"},
    {"tag", "vek tag - --invert"},
    {"untag", "vek untag -"},
    {"set", "vek set - Take=2 --every"},
    {"setDryRun", "vek set FILE Take=2 --every --dry-run"},
    {"delete", "vek delete - --where Take=1"},
    {"column", "vek column add - X"},
    {"param", "vek param list FILE"},
    {"merge", "vek merge FILE FILE"},
    {"mergeFile", "vek merge FILE FILE -o OUT --to csv"},
    {"diff", "vek diff FILE bad.csv"},
    {"stats", "vek stats FILE"},
    {"report", "vek report FILE"},
    {"reportFile", "vek report FILE -o OUT"},
    {"container", "vek container list bin.vek"},
    {"completions", "vek completions bash"},
    {"man", "vek man"},
    {"help", "vek --help"},
    {"helpShow", "vek show --help"},
    {"version", "vek --version"},
};

constexpr const char* logText =
    "\"VEKDB:Rev 1\"\n\"FPS:24\"\n\"VEKDB\"\n\"4\",\"4\",\"1\"\n"
    "\"text\",\"text\",\"text\"\n\"Reel\",\"Take\",\"Tag\"\n\"A001\",\"1\",\"1\"\n"
    "\"A002\",\"2\",\"0\"\n";

}  // namespace

class Unwritable : public testing::TestWithParam<Reading> {
protected:
    Unwritable() {
        folder_.write("log.vek", logText);
        folder_.write("bad.csv", "A,B\n1\n");
        folder_.write("bin.vek",
                      "\"VEKDB:Rev 1\"\n\"VEKDB\"\n\"4\"\n\"text\"\n\"Cookie\"\n"
                      "\"910a2debbeeb8da0f893a2ed71c1868f00004d\"\n");
    }

    Start start(const std::string& output) const {
        Start made = startOf(GetParam(), "log.vek");
        for (std::string& word : made.words) {
            if (word == "OUT") word = output;
        }
        made.input = logText;
        return made;
    }

    bool writesFile() const {
        return std::string_view(GetParam().line).find("OUT") != std::string_view::npos;
    }

    WorkFolder folder_;
};

TEST_P(Unwritable, FullDeviceNeverEndsWell) {
    Start made = start("/dev/full");
    if (!writesFile()) made.output = "/dev/full";
    Finish finish = run(folder_, made);
    EXPECT_EQ(finish.exitCode, 4);
    EXPECT_NE(finish.errors.find("No space left on device"), std::string::npos) << finish.errors;
}

TEST_P(Unwritable, ClosedPipeEndsQuietly) {
    Start made = start("-");
    made.readAtMost = 0;
    Finish finish = run(folder_, made);
    EXPECT_EQ(finish.exitCode, 0) << finish.errors;
    EXPECT_EQ(finish.errors.find("pipe"), std::string::npos) << finish.errors;
}

INSTANTIATE_TEST_SUITE_P(Vek, Unwritable, testing::ValuesIn(printings), nameOf);

namespace {

// A command line for each subcommand that changes its file.
constexpr Reading changes[] = {
    {"tag", "vek tag FILE --invert --backup"},
    {"untag", "vek untag FILE"},
    {"set", "vek set FILE Take=9 --every"},
    {"delete", "vek delete FILE --every"},
    {"columnAdd", "vek column add FILE X"},
    {"columnRemove", "vek column remove FILE Take"},
    {"columnRename", "vek column rename FILE Take Number"},
    {"columnOrder", "vek column order FILE Take"},
    {"paramSet", "vek param set FILE Day 2"},
    {"convertOver", "vek convert other.csv FILE"},
    {"showOver", "vek show other.csv -o FILE"},
    {"mergeOver", "vek merge other.csv other.csv -o FILE"},
};

}  // namespace

class InPlace : public testing::TestWithParam<Reading> {
protected:
    InPlace() {
        folder_.write("box/log.vek", logText);
        folder_.write("other.csv", "Reel\nB001\n");
        std::filesystem::permissions(folder_.path() / "box", std::filesystem::perms::all);
    }

    WorkFolder folder_;
};

TEST_P(InPlace, KeepsModeAndLinksAndLeavesNothingBeside) {
    namespace fs = std::filesystem;
    auto mode = fs::perms::owner_read | fs::perms::owner_write | fs::perms::others_read;
    fs::permissions(folder_.path() / "box/log.vek", mode);
    fs::create_symlink("box/log.vek", folder_.path() / "way.vek");
    Finish finish = run(folder_, startOf(GetParam(), "way.vek"));
    EXPECT_EQ(finish.exitCode, 0) << finish.errors;
    EXPECT_NE(folder_.read("box/log.vek"), logText);
    EXPECT_TRUE(fs::is_symlink(folder_.path() / "way.vek"));
    EXPECT_EQ(fs::status(folder_.path() / "box/log.vek").permissions(), mode);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_.path() / "box"), {}), 1);
}

TEST_P(InPlace, AFolderThatTakesNoFileLeavesTheOldOne) {
    namespace fs = std::filesystem;
    fs::permissions(folder_.path() / "box",
                    fs::perms::owner_all | fs::perms::others_read | fs::perms::others_exec);
    fs::permissions(folder_.path() / "box/log.vek", fs::perms::owner_all | fs::perms::others_read);
    Start start = startOf(GetParam(), "box/log.vek");
    start.asNobody = true;
    Finish finish = run(folder_, start);
    EXPECT_EQ(finish.exitCode, 4) << finish.errors;
    EXPECT_NE(finish.errors.find("box/log.vek"), std::string::npos) << finish.errors;
    EXPECT_EQ(folder_.read("box/log.vek"), logText);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_.path() / "box"), {}), 1);
}

INSTANTIATE_TEST_SUITE_P(Vek, InPlace, testing::ValuesIn(changes), nameOf);

// A reader that has seen enough of a long log closes its end while more is being written.
TEST(ClosedPipe, InTheMiddleOfALongLogEndsQuietly) {
    WorkFolder folder;
    std::string rows = "Name,Note\n";
    for (int i = 0; i < 50000; ++i) rows += std::to_string(i) + ",a note of some length\n";
    folder.write("long.csv", rows);
    for (const char* line : {"vek show long.csv", "vek convert long.csv - --to json"}) {
        Start start;
        start.words = shellWords(line);
        start.readAtMost = 100;
        Finish finish = run(folder, start);
        EXPECT_EQ(finish.exitCode, 0);
        EXPECT_EQ(finish.errors, "");
    }
}

TEST(ClosedOutput, IsAnError) {
    WorkFolder folder;
    folder.write("log.csv", "A\n1\n");
    Start start;
    start.words = {"/bin/sh", "-c", std::string("exec \"$0\" show log.csv >&-"), VEK_PROGRAM};
    Finish finish = run(folder, start);
    EXPECT_EQ(finish.exitCode, 4);
    EXPECT_EQ(finish.errors, "vek: standard output: Bad file descriptor\n");
}

namespace {

// A log that takes over a second to come.
Finish readSlowly(bool onTerminal) {
    WorkFolder folder;
    Start start;
    start.words = {
        "/bin/sh", "-c",
        "(echo Name; sleep 1.2; echo A; sleep 0.2; echo B) | \"$0\" convert - - --to csv",
        VEK_PROGRAM};
    start.errorsToTerminal = onTerminal;
    return run(folder, start);
}

}  // namespace

TEST(ProgressBar, ShowsOnATerminalWhenAJobTakesLongAndGoesAtItsEnd) {
    Finish finish = readSlowly(true);
    EXPECT_EQ(finish.output, "Name\nA\nB\n");
    EXPECT_TRUE(finish.errors.starts_with("\rreading standard input 0 KB")) << finish.errors;
    EXPECT_TRUE(finish.errors.ends_with("\r\x1b[K")) << finish.errors;
}

TEST(ProgressBar, ShowsTheFilesNameEscaped) {
    WorkFolder folder;
    Start start;
    start.words = {"/bin/sh", "-c",
                   "mkfifo \"$1\"; (echo Name; sleep 1.2; echo A; sleep 0.2) > \"$1\" & "
                   "\"$0\" convert \"$1\" - --to csv --from csv; wait",
                   VEK_PROGRAM, "a\x1b[2Jb"};
    start.errorsToTerminal = true;
    Finish finish = run(folder, start);
    EXPECT_EQ(finish.output, "Name\nA\n");
    EXPECT_TRUE(finish.errors.starts_with("\rreading a\\x1b[2Jb 0 KB")) << finish.errors;
}

TEST(ProgressBar, IsNotForPipes) {
    EXPECT_EQ(readSlowly(false).errors, "");
}

// Ctrl-C while the rows are still coming.
TEST(Interrupted, LeavesTheOldFileAndNothingBeside) {
    WorkFolder folder;
    folder.write("log.vek", logText);
    Start start;
    start.words = {"/bin/sh", "-c",
                   "(echo A; sleep 1) | timeout -s INT 0.5 \"$0\" convert - log.vek --from csv",
                   VEK_PROGRAM};
    EXPECT_EQ(run(folder, start).exitCode, 124);
    EXPECT_EQ(folder.read("log.vek"), logText);
    EXPECT_EQ(folder.names(), std::vector<std::string>{"log.vek"});
}

// An answer that never ends, behind changes that are not saved yet.
TEST(Interrupted, AnSqlQueryEndsAndItsChangesAreNotSaved) {
    WorkFolder folder;
    folder.write("log.vek", logText);
    const std::string endless =
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) SELECT count(*) FROM n";
    for (const std::string options : {"", "--write --backup", "--write -o out.csv"}) {
        Start start;
        const std::string change = options.empty() ? "" : "DELETE FROM log; ";
        start.words = {"/bin/sh", "-c",
                       "exec timeout -s INT 0.5 \"$0\" sql log.vek \"$1\" " + options, VEK_PROGRAM,
                       change + endless};
        EXPECT_EQ(run(folder, start).exitCode, 124);
        EXPECT_EQ(folder.read("log.vek"), logText);
        EXPECT_EQ(folder.names(), std::vector<std::string>{"log.vek"}) << options;
    }
}
