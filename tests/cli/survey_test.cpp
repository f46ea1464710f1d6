#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "cli/hostile_shapes.h"
#include "cli/program.h"

// Every command on files that are made to take long: what takes more time or memory than a file of
// that size may, is a fault.
namespace {

// FILE is the file, COPY one that may be changed, COLUMN a column of it.
constexpr const char* commands[] = {
    "info FILE",
    "info FILE --format json",
    "check FILE",
    "check FILE --format json",
    "show FILE",
    "show FILE --sort COLUMN --reverse",
    "show FILE --where COLUMN=1",
    "show FILE --where COLUMN~(a|b)*c",
    "show FILE --unique COLUMN",
    "show FILE --duplicates COLUMN",
    "show FILE --at 01:00:00:00",
    "show FILE --format html",
    "show FILE --format markdown",
    "show FILE --format json",
    "stats FILE --fps 25",
    "stats FILE --by COLUMN --format json",
    "convert FILE out.vek",
    "convert FILE out.csv --guard-formulas",
    "convert FILE out.tsv --crlf",
    "convert FILE out.json",
    "convert FILE out.jsonl",
    "convert FILE out.ale",
    "convert FILE out.edl --fps 25 --short-reels",
    "convert FILE out.otio --fps 25",
    "diff FILE FILE",
    "diff FILE FILE --key COLUMN",
    "diff FILE small.csv --format json",
    "merge FILE small.csv -o out.vek",
    "merge FILE FILE --key COLUMN -o out.csv --prefer last --yes",
    "append FILE small.csv -o out.csv",
    "append small.csv FILE --dry-run",
    "dedupe FILE -o out.csv",
    "dedupe FILE --by COLUMN --ignore-case --keep filled -o out.csv",
    "sort FILE --by COLUMN -o out.csv",
    "sort COPY --by COLUMN --reverse",
    "sample FILE 10% --seed 1 -o out.csv",
    "split FILE --by COLUMN -o {COLUMN}.csv --dry-run --max-files 50000",
    "set COPY COLUMN=q --every",
    "set COPY COLUMN={#}-{COLUMN|upper} --every",
    "set FILE COLUMN~s/(.)/\\1\\1/g --every --dry-run",
    "tag COPY --invert",
    "untag COPY",
    "delete COPY --where COLUMN=1",
    "column add COPY New",
    "column remove COPY COLUMN",
    "column rename COPY COLUMN New",
    "column rename COPY s/a/b/g",
    "column order COPY COLUMN",
    "param set COPY A b",
    "param list FILE",
    "timecode shift FILE 12 --fps 25 --dry-run",
    "timecode duration FILE --fps 25 -o out.csv",
    "container list FILE",
    "report FILE -o page.html",
    "find COLUMN=1 FILE small.csv",
    "find COLUMN~(a|b)*c FILE -f json",
    "find --every FILE --count",
    "sql FILE 'SELECT * FROM log' -o out.csv",
    "sql FILE 'SELECT count(*) FROM log GROUP BY [COLUMN]'",
    "sql COPY 'DELETE FROM log WHERE _row % 2' --write",
    "convert FILE out.xlsx",
    "convert FILE out.md",
    "show FILE --cards",
    "show FILE --wrap --width 80",
    "show FILE --sort COLUMN --limit 5 --offset 2",
    "show FILE --where COLUMN<5 --any --where COLUMN>=7",
    "show FILE --where COLUMN==1 --where COLUMN!=2",
    "show FILE --where COLUMN=",
    "show FILE --tagged",
    "show FILE --columns COLUMN",
    "show FILE --all --width 60",
    "show FILE --format csv --guard-formulas",
    "show FILE --format tsv --crlf",
    "show FILE --format ale",
    "show FILE --format edl --fps 25",
    "show FILE --format otio --fps 25",
    "show FILE --format jsonl",
    "show FILE --format vekdb",
    "show FILE --format xlsx -o out.xlsx",
    "show FILE --no-header --delimiter semicolon",
    "show FILE --skip-lines 1",
    "show FILE --encoding utf-16",
    "show FILE --encoding windows-1252",
    "show FILE --encoding utf-7",
    "show FILE --encoding iso-2022-jp",
    "info FILE --from csv",
    "info FILE --from tsv",
    "info FILE --from plain-csv",
    "info FILE --from json",
    "info FILE --from jsonl",
    "info FILE --from ale",
    "info FILE --from edl",
    "info FILE --from otio",
    "info FILE --from fcpxml",
    "info FILE --from xlsx",
    "info FILE --from vekdb",
    "info FILE small.csv",
    "check FILE --gauge 16",
    "check FILE FILE",
    "stats FILE --by COLUMN --fps 24",
    "stats FILE --by COLUMN,COLUMN",
    "stats FILE --format json",
    "convert FILE out.html",
    "convert FILE out.csv.gz",
    "convert FILE out.ale --fps 25 --tracks V --map COLUMN=Name",
    "convert FILE out.edl --fps 29.97df",
    "convert FILE small.csv -o folder --to csv --dry-run",
    "convert FILE -o parts --to csv --partition COLUMN --dry-run",
    "diff FILE small.csv",
    "diff small.csv FILE",
    "diff FILE FILE --format json --key COLUMN",
    "merge FILE FILE -o out.json",
    "merge small.csv FILE -o out.csv",
    "merge FILE FILE --key COLUMN -o out.vek --prefer first --yes",
    "append FILE FILE -o out.vek",
    "append COPY small.csv",
    "append COPY FILE --yes",
    "append small.csv FILE -o out.json",
    "dedupe COPY",
    "dedupe COPY --by COLUMN --keep last",
    "dedupe FILE --by COLUMN --dry-run",
    "sort FILE --by COLUMN -o out.vek",
    "sort FILE --by COLUMN -o out.json",
    "sort COPY --by COLUMN --backup",
    "sample FILE 5 --seed 7 -o out.vek",
    "sample FILE 50% --seed 2 -o out.json",
    "split FILE --by COLUMN -o {COLUMN}.vek --dry-run --max-files 50000",
    "split FILE --by COLUMN -o {COLUMN}.json --dry-run --max-files 50000",
    "set COPY COLUMN= --every",
    "set COPY COLUMN=q --where COLUMN=1",
    "set COPY COLUMN={COLUMN|trim} --every --backup",
    "set COPY COLUMN={COLUMN|lower} --where COLUMN~1",
    "set COPY COLUMN~s/1/\"/g --every",
    "tag COPY --where COLUMN=1",
    "tag COPY --where COLUMN=1 --keep",
    "untag COPY --where COLUMN=1",
    "delete COPY --where COLUMN!=1",
    "delete COPY --every",
    "delete FILE --where COLUMN=1 --dry-run",
    "column type COPY COLUMN long",
    "column type COPY COLUMN timecode",
    "column add COPY New timecode",
    "param get FILE FPS",
    "param set COPY FPS 25",
    "timecode shift COPY 12 --fps 25 --columns COLUMN",
    "timecode shift COPY 01:00:00:00 --fps 25",
    "timecode conform FILE 24 --fps 25 --dry-run",
    "timecode conform COPY 29.97df --fps 25 --round nearest",
    "timecode duration COPY --fps 25 --columns COLUMN,COLUMN",
    "timecode end COPY --fps 25 --columns COLUMN,COLUMN --into New",
    "container contains FILE 00",
    "report FILE --columns COLUMN -o page.html",
    "report FILE small.csv -o page.html --fps 25",
    "find COLUMN==1 FILE --count",
    "find COLUMN!=1 FILE -f jsonl",
    "find COLUMN=1 FILE -o out.csv",
    "sql FILE 'SELECT * FROM log ORDER BY [COLUMN]'",
    "sql FILE 'SELECT [COLUMN], count(*) FROM log GROUP BY 1 ORDER BY 2 DESC LIMIT 5'",
    "sql FILE 'SELECT * FROM log WHERE [COLUMN] = 1' -f json",
    "sql FILE small.csv 'SELECT count(*) FROM log'",
    "sql COPY 'UPDATE log SET [COLUMN] = 7 WHERE _row = 3' --write",
    "show FILE --columns COLUMN,COLUMN --limit 3 --cards --wrap",
    "show FILE --format arrow -o out.arrow",
    "show FILE --max-cells 1000",
    "show FILE --tagged --any --where COLUMN=1 --format csv",
    "show FILE --where COLUMN<=2 --sort COLUMN,COLUMN --format json",
    "info FILE --width 40",
    "info FILE --sheet 2",
    "check FILE --no-header",
    "stats FILE --gauge 35 --where COLUMN=1",
    "convert FILE - --to csv --no-header",
    "convert FILE out.json.gz",
    "convert FILE out.arrow",
    "convert FILE out.ale --fps 24 --video-format 1080 --audio-format 48khz",
    "convert FILE parts --to jsonl --partition COLUMN --part-size 1000 --dry-run",
    "find COLUMN=1 FILE COPY -o out.csv",
    "find --every FILE COPY -o out.vek",
    "find --every FILE COPY -f json --jobs 1",
    "find --every FILE -f html",
    "find --every FILE -f markdown --columns COLUMN",
    "find --every FILE --all --width 80",
    "find --every FILE -o out.xlsx",
    "find --at 01:00:00:00 FILE --limit 10",
    "find COLUMN~1 FILE --files-with-matches --null",
    "find --tagged FILE small.csv --any --where COLUMN=1 -f tsv",
    "diff FILE COPY --key COLUMN --width 80",
    "merge FILE COPY --key COLUMN -o out.json --prefer filled --yes --format json",
    "append COPY small.csv FILE --yes --backup",
    "append FILE COPY --dry-run --yes",
    "dedupe COPY --by COLUMN,COLUMN --backup",
    "sort COPY --by COLUMN,COLUMN --reverse --dry-run",
    "sample COPY 10 --seed 3 --every",
    "sample FILE 10% --seed 3 --where COLUMN=1 --dry-run",
    "split FILE --by COLUMN,COLUMN -o part_{COLUMN|lower}.csv --overwrite --max-files 20",
    "split FILE --by COLUMN -o {COLUMN}.ale --fps 24 --dry-run --max-files 50000",
    "split FILE --by COLUMN -o {COLUMN} --dry-run --backup --max-files 50000",
    "set COPY COLUMN={#} --every --start 10 --step 5 --digits 8",
    "set FILE COLUMN=q --every -o out.json",
    "set COPY COLUMN=q --unique COLUMN",
    "set COPY COLUMN={COLUMN}{COLUMN} --duplicates COLUMN --dry-run",
    "tag COPY --unique COLUMN",
    "tag COPY --duplicates COLUMN --dry-run",
    "tag COPY --clear --backup",
    "untag COPY --every --dry-run",
    "delete COPY --duplicates COLUMN",
    "delete COPY --at 01:00:00:00 --backup",
    "column rename COPY upper",
    "column order COPY COLUMN --dry-run",
    "param set COPY A --backup b",
    "timecode duration FILE --fps 25 --as frames --into New --dry-run",
    "timecode conform FILE 24 --fps 25 --keep frames --round down -o out.csv",
    "timecode shift FILE 12 --fps 25 --where COLUMN=1 -o out.vek",
    "container create FILE --dry-run",
    "container add COPY 910a2debbeeb8da0f893a2ed71c1868f00004d",
    "report FILE --all --lanes COLUMN -o page.html --fps 25",
    "report FILE COPY --gauge 16 -o page.html",
    "sql FILE 'SELECT * FROM log' --as other=small.csv --cards",
    "sql FILE COPY 'SELECT * FROM log ORDER BY _row DESC' -f vekdb -o out.vek",
    "sql FILE 'SELECT a.* FROM log a JOIN log b USING ([COLUMN]) LIMIT 3'",
    "sql COPY 'UPDATE log SET [COLUMN] = _row' --write",
    "sql COPY 'INSERT INTO log ([COLUMN]) SELECT [COLUMN] FROM log' --write",
    "sql COPY 'DELETE FROM log' --write --backup",
    "man show",
    "completions bash",
};

struct Bounds {
    std::size_t size = 1 << 14;
    double seconds = 2;
    long megabytes = 100;
    std::size_t every = 61;  // so many of the runs, one of these
    long moreOfTwo = 10;     // megabytes, where the file is read twice
};

// VEK_SURVEY says of how many bytes the files are when somebody has the time for all runs.
Bounds boundsWanted() {
    const char* size = std::getenv("VEK_SURVEY");
    if (size == nullptr) return {};
    return {std::strtoul(size, nullptr, 10), 2, 100, 1, 10};
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool isSanitized = true;
#else
constexpr bool isSanitized = false;
#endif

struct Cost {
    int status = 0;
    double seconds = 0;
    long megabytes = 0;
};

double secondsOf(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

[[noreturn]] void become(const WorkFolder& folder, std::vector<std::string>& words) {
    std::vector<char*> pointers{const_cast<char*>("vek")};
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    const rlimit most = {60, 60};
    ::setrlimit(RLIMIT_CPU, &most);
    const int nothing = ::open("/dev/null", O_RDWR);
    for (int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) ::dup2(nothing, stream);
    if (::chdir(folder.path().c_str()) == 0) ::execv(VEK_PROGRAM, pointers.data());
    ::_exit(127);
}

// What the program itself takes; how busy the machine is does not count.
Cost costOf(const WorkFolder& folder, std::vector<std::string> words) {
    const pid_t child = ::fork();
    if (child == 0) become(folder, words);
    Cost cost;
    rusage usage = {};
    ::wait4(child, &cost.status, 0, &usage);
    cost.seconds = secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime);
    cost.megabytes = usage.ru_maxrss / 1024;
    return cost;
}

void replaceAll(std::string& text, std::string_view from, std::string_view to) {
    for (std::size_t at = text.find(from); at != std::string::npos;
         at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
}

std::vector<std::string> wordsOf(const char* command, const HostileShape& shape) {
    std::vector<std::string> words = shellWords(std::string("") + command);
    for (std::string& word : words) {
        if (word == "FILE") word = shape.name;
        if (word == "COPY") word = std::string("copy-") + shape.name;
        replaceAll(word, "COLUMN", shape.column);
    }
    return words;
}

std::string joined(const std::vector<std::string>& words) {
    std::string out;
    for (const std::string& word : words) out += (out.empty() ? "" : " ") + word;
    return out;
}

// What docs/security.md says under Limits, in megabytes; 0 for what is held to the bounds.
long limitOf(std::string_view command) {
    if (command.starts_with("sql COPY 'UPDATE") || command.starts_with("sql COPY 'INSERT")) {
        return 180;
    }
    if (!command.starts_with("find")) return command.starts_with("append") ? 125 : 0;
    const bool isWhole =
        command.find("out.vek") != command.npos || command.find("out.xlsx") != command.npos;
    return isWhole ? 220 : 130;
}

class Survey {
public:
    explicit Survey(const Bounds& bounds) : bounds_(bounds) {
        folder_.write("small.csv", "Name,Take\nA,1\n");
    }

    void of(const HostileShape& shape) {
        name_ = shape.name;
        const std::string text = shape.make(bounds_.size);
        folder_.write(shape.name, text);
        for (const char* command : commands) {
            if (turn_++ % bounds_.every != 0) continue;
            const std::vector<std::string> words = wordsOf(command, shape);
            const std::string copy = std::string("copy-") + shape.name;
            if (std::string_view(command).find("COPY") != std::string_view::npos) {
                folder_.write(copy, text);
            }
            judge(words, command);
        }
        for (const std::string& name : folder_.names()) {
            if (name != "small.csv") std::filesystem::remove(folder_.path() / name);
        }
    }

    unsigned runs() const { return runs_; }

private:
    void judge(const std::vector<std::string>& words, std::string_view command) {
        const Cost cost = costOf(folder_, words);
        ++runs_;
        const bool isEnd = WIFEXITED(cost.status) && WEXITSTATUS(cost.status) <= 4;
        const bool isTwo = std::count_if(words.begin(), words.end(), [this](const auto& word) {
                               return word == name_ || word == "copy-" + name_;
                           }) > 1;
        const long most =
            std::max(bounds_.megabytes + (isTwo ? bounds_.moreOfTwo : 0), limitOf(command));
        const bool isSmall = isSanitized || cost.megabytes <= most;
        const bool isQuick = isSanitized || cost.seconds <= bounds_.seconds;
        if (isEnd && isSmall && isQuick) return;
        ADD_FAILURE() << "vek " << joined(words) << ": status " << cost.status << ", "
                      << cost.seconds << " s, " << cost.megabytes << " MB";
    }

    Bounds bounds_;
    WorkFolder folder_;
    std::string name_;
    std::size_t turn_ = 0;
    unsigned runs_ = 0;
};

}  // namespace

TEST(HostileFiles, TakeNoCommandLongNorMuchMemory) {
    Survey survey(boundsWanted());
    for (const HostileShape& shape : hostileShapes()) survey.of(shape);
    std::printf("%u runs on %zu files of %zu bytes\n", survey.runs(), hostileShapes().size(),
                boundsWanted().size);
}

// Rows of no byte at all are the most that a file can have, and so what costs most for each.
TEST(HostileFiles, OfAMillionEmptyCellsTakeNoCommandLongNorMuchMemory) {
    const WorkFolder folder;
    const std::string text = "a\n" + std::string(isSanitized ? 10000 : 1000000, '\n');
    folder.write("rows.csv", text);
    for (const char* command : {"sort copy.csv --by a --reverse", "diff rows.csv rows.csv --key a",
                                "set copy.csv a={#}-{a|upper} --every", "tag copy.csv --invert"}) {
        folder.write("copy.csv", text);
        const Cost cost = costOf(folder, shellWords(command));
        EXPECT_EQ(cost.status, 0) << command;
        if (isSanitized) continue;
        EXPECT_LE(cost.seconds, 2) << command;
        EXPECT_LE(cost.megabytes, 100) << command;
    }
}

// What is found is written row by row, with names and numbers; a change in SQL has beside the
// row what takes it back.
TEST(HostileFiles, OfAMillionEmptyCellsAreFoundAndChangedInSqlWithoutHoldingThemTwice) {
    struct Bound {
        const char* command;
        long megabytes;
    };
    const WorkFolder folder;
    folder.write("rows.csv", "a\n" + std::string(isSanitized ? 10000 : 1000000, '\n'));
    for (const Bound& bound : {Bound{"find --every rows.csv -f csv", 70},
                               Bound{"find --every rows.csv rows.csv -f json", 130},
                               Bound{"sql rows.csv 'SELECT * FROM log ORDER BY a'", 90},
                               Bound{"sql rows.csv \"UPDATE log SET a = 'q'\" --write", 180}}) {
        const Cost cost = costOf(folder, shellWords(bound.command));
        EXPECT_TRUE(WIFEXITED(cost.status) && WEXITSTATUS(cost.status) <= 1) << bound.command;
        if (isSanitized) continue;
        EXPECT_LE(cost.seconds, 2) << bound.command;
        EXPECT_LE(cost.megabytes, bound.megabytes) << bound.command;
    }
}

// What is said of each row is kept once.
TEST(HostileFiles, WithAProblemInEachRowTakeNoMuchMoreMemory) {
    const std::size_t rows = isSanitized ? 5000 : 500000;
    const WorkFolder folder;
    std::string blanks = "a\n";
    std::string times = "\"VEKDB:Rev 1\"\n\"VEKDB\"\n\"4\"\n\"timecode\"\n\"Start\"\n";
    std::string pairs = "Start,End\n";
    for (std::size_t i = 0; i < rows; ++i) {
        blanks += " \n";
        times += "x\n";
        if (i % 2 == 0) pairs += "1,0\n";
    }
    folder.write("blanks.csv", blanks);
    folder.write("times.vek", times);
    folder.write("pairs.csv", pairs);
    for (const char* command :
         {"check blanks.csv", "check blanks.csv --format json", "check times.vek",
          "timecode duration pairs.csv --fps 25 -o out.csv"}) {
        const Cost cost = costOf(folder, shellWords(command));
        EXPECT_TRUE(WIFEXITED(cost.status) && WEXITSTATUS(cost.status) == 1) << command;
        if (isSanitized) continue;
        EXPECT_LE(cost.seconds, 2) << command;
        EXPECT_LE(cost.megabytes, 100) << command;
    }
}

// Of the damaged ones, too: they are written anew.
TEST(HostileFiles, OfManyValuesAreSplitWithoutGoingThroughAllRowsForEach) {
    const WorkFolder folder;
    const int rows = isSanitized ? 500 : 50000;
    const std::string heading =
        "\"VEKDB:Rev 1\"\n\"VEKDB\"\n\"4\",\"4\"\n\"text\",\"text\"\n\"a\",\"b\"\n";
    std::string csv = "a\n";
    std::string table = heading;
    std::string damaged = heading;
    for (int i = 0; i < rows; ++i) {
        const std::string value = std::to_string(i) + "x";
        csv += value + "\n";
        table += "\"" + value + "\",\"1\"\n";
        damaged += "\"" + value + "\"\n";
    }
    folder.write("values.csv", csv);
    folder.write("values.vek", table);
    folder.write("damaged.vek", damaged);
    for (const char* words :
         {"values.csv --by a -o {a}.csv", "values.csv --by a -o {a}.vek",
          "values.vek --by a -o {a}.vek", "values.vek --by a -o {a}.vek --where b=1 --fps 25",
          "damaged.vek --by a -o {a}.vek"}) {
        const Cost cost =
            costOf(folder, shellWords(std::string("split --dry-run --max-files 1000000 ") + words));
        EXPECT_TRUE(WIFEXITED(cost.status) && WEXITSTATUS(cost.status) <= 1) << words;
        if (isSanitized) continue;
        EXPECT_LE(cost.seconds, 2) << words;
        EXPECT_LE(cost.megabytes, 100) << words;
    }
}

// What is packed leaves as it comes, and what is refused in the end was not collected.
TEST(HostileFiles, OfALongNameArePackedWithoutBeingCollected) {
    const WorkFolder folder;
    const std::size_t size = isSanitized ? 2000 : 500000;
    std::string text = std::string(size, 'n') + ",b\n";
    for (std::size_t i = 0; i < size / 4; ++i) text += "1,2\n";
    folder.write("long_name.csv", text);
    const Cost cost =
        costOf(folder, shellWords("convert long_name.csv out.json.gz --max-output 200000000"));
    EXPECT_TRUE(WIFEXITED(cost.status));
    EXPECT_EQ(folder.has("out.json.gz"), isSanitized);
    if (isSanitized) return;
    EXPECT_EQ(WEXITSTATUS(cost.status), 4);
    EXPECT_LE(cost.seconds, 2);
    EXPECT_LE(cost.megabytes, 100);
}

// Rows of another length than the columns are kept as they are read line by line.
TEST(HostileFiles, ThatAreDamagedTablesTakeNoCommandLongNorMuchMemory) {
    const WorkFolder folder;
    std::string text = "\"VEKDB:Rev 1\"\n\"VEKDB\"\n\"4\",\"4\"\n\"text\",\"text\"\n\"a\",\"b\"\n";
    for (int i = isSanitized ? 5000 : 500000; i > 0; --i) text += "x\n";
    folder.write("rows.vek", text);
    for (const char* command :
         {"sort copy.vek --by a --reverse", "diff rows.vek rows.vek --key a", "untag copy.vek",
          "merge rows.vek rows.vek --key a -o out.csv --prefer last --yes"}) {
        folder.write("copy.vek", text);
        const Cost cost = costOf(folder, shellWords(command));
        EXPECT_TRUE(WIFEXITED(cost.status) && WEXITSTATUS(cost.status) <= 1) << command;
        if (isSanitized) continue;
        EXPECT_LE(cost.seconds, 2) << command;
        EXPECT_LE(cost.megabytes, 100) << command;
    }
}

// What is made for all columns of a page is made once.
TEST(HostileFiles, OfManyColumnsMakeAPageWithoutLookingAtAllOfThemForEach) {
    const WorkFolder folder;
    std::string heading = "c0";
    std::string row = "0";
    for (int i = 1; i < (isSanitized ? 400 : 8000); ++i) {
        heading += ",c" + std::to_string(i);
        row += "," + std::to_string(i);
    }
    folder.write("wide.csv", heading + "\n" + row + "\n" + row + "1\n");
    const Cost cost = costOf(folder, shellWords("report wide.csv -o page.html"));
    EXPECT_EQ(cost.status, 0);
    EXPECT_TRUE(folder.has("page.html"));
    if (isSanitized) return;
    EXPECT_LE(cost.seconds, 2);
    EXPECT_LE(cost.megabytes, 100);
}

// A text must end with its line ends, a packed one with its size: neither is read on and on.
TEST(HostileFiles, OfNothingButZerosEndAtOnce) {
    const WorkFolder folder;
    const std::string zeros(8 << 20, '\0');
    for (const char* name : {"zeros.csv", "zeros.vek", "zeros.json", "zeros.edl", "zeros"}) {
        folder.write(name, zeros);
        const Cost cost = costOf(folder, {"info", name});
        EXPECT_EQ(WEXITSTATUS(cost.status), 3) << name;
        if (isSanitized) continue;
        EXPECT_LT(cost.seconds, 1) << name;
        EXPECT_LT(cost.megabytes, 60) << name;
    }
    Start start;
    start.words = {"vek", "info", "zeros.csv"};
    EXPECT_EQ(run(folder, start).errors,
              "vek: zeros.csv:1: a zero byte, expected text; "
              "if this is text, say its encoding with --encoding, such as utf-16\n");
}
