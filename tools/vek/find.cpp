#include <algorithm>
#include <atomic>
#include <filesystem>
#include <map>
#include <mutex>

#include "formats/changing/file_names.h"
#include "formats/choosing/ranges.h"
#include "formats/formats.h"
#include "formats/reading/open_log.h"
#include "formats/reading/table_builder.h"
#include "formats/text/text_lines.h"
#include "formats/text/width.h"
#include "formats/text/written_names.h"
#include "formats/writing/writers.h"
#include "tools/vek/cli/choosing.h"
#include "tools/vek/cli/grid.h"
#include "tools/vek/cli/log_files.h"
#include "tools/vek/cli/outputs.h"
#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/reading_options.h"
#include "tools/vek/cli/say.h"
#include "tools/vek/cli/side_by_side.h"
#include "tools/vek/cli/writing.h"
#include "tools/vek/commands.h"
#include "tools/vek/find/found_sheet.h"
#include "tools/vek/find/result.h"

namespace vek {

namespace {

using find::Answer;
using find::Missing;
using find::Question;
using find::Result;
using Answers = std::vector<Answer>;

bool wantsTable(const Args& args) {
    if (args.has("format")) return args.text("format") == "table";
    return !hasTargetEnding(args.text("output"));
}

bool isForEyes(const Args& args) {
    const std::string output = args.text("output");
    return wantsTable(args) && (output.empty() || output == "-");
}

Format wantedTarget(const Args& args) {
    if (args.has("format")) return targetNamed(args.text("format"));
    return targetOfPath(args.text("output"), programTerms());
}

bool isSummed(const Args& args) {
    return args.has("count") || args.has("files-with-matches");
}

// What is looked for, and where.
struct Wish {
    Question question;
    std::vector<std::string> paths;
};

bool isThere(const std::string& path) {
    std::error_code ignored;
    return std::filesystem::exists(std::filesystem::symlink_status(path, ignored));
}

// The first argument is the condition; where an option says what to look for, only if it can be
// nothing else.
bool beginsWithCondition(const std::vector<std::string>& words, const Question& question,
                         bool isEvery) {
    if (words.empty()) return false;
    if (question.conditionCount() == 0 && !question.tagged && !isEvery) return true;
    return words.front() != "-" && isCondition(words.front()) && !isThere(words.front());
}

void requireWords(const Args& args) {
    if (args.has("count") && args.has("files-with-matches")) {
        throw Failure{wrongUsage, "find: --count and --files-with-matches are two different lists"};
    }
    if (args.has("limit") && isSummed(args)) {
        throw Failure{wrongUsage, "find: --limit is for rows, not for a list of files"};
    }
    if (isSummed(args) && (args.has("columns") || args.has("all"))) {
        throw Failure{wrongUsage, "find: a list of files has no columns of the logs"};
    }
    if (args.has("null") && (!args.has("files-with-matches") || args.has("format"))) {
        throw Failure{wrongUsage, "find: --null is for --files-with-matches without --format"};
    }
    if (args.has("guard-formulas") && wantsTable(args)) {
        throw Failure{wrongUsage, "find: --guard-formulas is for --format csv and tsv"};
    }
}

void requireQuestion(const Question& question) {
    for (const std::string& condition : question.where) requireCondition(condition);
    if (!question.at.empty()) requireCode(question.at, programTerms());
}

Question::Columns columnsFrom(const Args& args) {
    if (isSummed(args)) return Question::Columns::none;
    if (args.has("columns")) return Question::Columns::named;
    const bool isWhole = args.has("all") || !isForEyes(args);
    return isWhole ? Question::Columns::all : Question::Columns::mapped;
}

Wish wishFrom(const Args& args) {
    requireWords(args);
    const Selection selection = selectionFrom(args);
    Wish wish;
    wish.question.where = selection.where;
    wish.question.any = selection.any;
    wish.question.at = selection.at;
    wish.question.tagged = selection.tagged;
    wish.question.columns = columnsFrom(args);
    if (args.has("columns")) {
        const std::string names = args.text("columns");
        for (std::string_view name : splitNames(names)) {
            wish.question.names.emplace_back(trimmed(name));
        }
    }
    std::vector<std::string> words = args.all("COND");
    words.insert(words.end(), args.all("PATH").begin(), args.all("PATH").end());
    if (beginsWithCondition(words, wish.question, args.has("every"))) {
        wish.question.where.insert(wish.question.where.begin(), words.front());
        words.erase(words.begin());
    }
    requireQuestion(wish.question);
    if (words.empty() && !args.has("files-from")) {
        throw Failure{wrongUsage,
                      "find: where? expected files or folders behind the condition, as in vek find "
                      "Scene=12 archive/"};
    }
    wish.paths = std::move(words);
    return wish;
}

// What was found before has a column of files and one of rows, or of their number.
bool isEarlierAnswer(const std::string& path) {
    std::error_code error;
    if (std::filesystem::file_size(path, error) == 0) return true;
    try {
        const Log log = openLog(path, {});
        const bool hasRows =
            log.findColumn("Row") != noColumn || log.findColumn("Rows") != noColumn;
        return hasRows && log.findColumn("File") != noColumn;
    } catch (const Failure&) {
        return false;
    }
}

// What an earlier search wrote into a folder is none of its logs. Any other one that stands there
// is, and would be lost.
void leaveOut(const std::string& output, std::vector<std::string>& paths) {
    if (output.empty() || output == "-") return;
    const std::string name = std::filesystem::path(output).filename().native();
    const auto left = std::erase_if(paths, [&](const std::string& path) {
        return path.ends_with(name) && isSameFile(path, output);
    });
    if (left == 0 || isEarlierAnswer(output)) return;
    requireNoInput("find", {output}, output, "what is found");
}

// Whether so many rows were found in the first logs that those behind need not be asked.
class Enough {
public:
    Enough(std::size_t limit, std::size_t logs)
        : limit_(limit), counts_(limit == 0 ? 0 : logs, unknown) {}

    bool isReached() const { return isReached_; }

    void add(std::size_t log, std::size_t count) {
        if (limit_ == 0) return;
        const std::lock_guard<std::mutex> lock(mutex_);
        counts_[log] = count;
        for (; next_ < counts_.size() && counts_[next_] != unknown; ++next_) sum_ += counts_[next_];
        if (sum_ >= limit_) isReached_ = true;
    }

private:
    static constexpr std::size_t unknown = SIZE_MAX;

    std::size_t limit_;
    std::mutex mutex_;
    std::vector<std::size_t> counts_;
    std::size_t next_ = 0;
    std::size_t sum_ = 0;
    std::atomic<bool> isReached_ = false;
};

std::size_t wantedThreads(const Args& args) {
    const std::size_t threads = args.number("jobs", usualThreads());
    if (threads == 0) throw Failure{wrongUsage, "--jobs takes a number of 1 or more"};
    return threads;
}

// Of logs behind the last row that is wanted some were asked and some were not, as it came.
void forgetBehind(std::size_t limit, Answers& answers) {
    std::size_t count = 0;
    for (Answer& answer : answers) {
        if (count >= limit) answer = Answer();
        count += answer.count;
    }
}

Answers ask(const Question& question, const std::vector<std::string>& paths, const Args& args) {
    Answers answers(paths.size());
    const Opening opening = openingFrom(args);
    Enough enough(args.number("limit", 0), paths.size());
    doSideBySide(paths.size(), wantedThreads(args), [&]() -> Worker {
        auto search = std::make_shared<find::Search>(question, opening);
        return [&, search](std::size_t job) {
            if (enough.isReached()) return;
            answers[job] = search->ask(paths[job]);
            enough.add(job, answers[job].count);
        };
    });
    if (args.has("limit")) forgetBehind(args.number("limit", 0), answers);
    return answers;
}

std::size_t askedCount(const Answers& answers) {
    return static_cast<std::size_t>(std::count_if(answers.begin(), answers.end(),
                                                  [](const Answer& one) { return one.isAsked; }));
}

std::size_t readCount(const Answers& answers) {
    return static_cast<std::size_t>(std::count_if(answers.begin(), answers.end(),
                                                  [](const Answer& one) { return one.isRead(); }));
}

// What some logs have no use or no column for, once for all that have none.
class MissingTold {
public:
    void add(const Answer& answer, const std::vector<Missing>& missing) {
        for (const Missing& one : missing) {
            auto [known, isNew] =
                kinds_[one.place].try_emplace(one.what, Kind{std::string(answer.name()), one});
            ++known->second.count;
        }
    }

    // A Failure where something is missing in every log.
    void requireSome(std::size_t logs) const {
        for (const auto& [place, kinds] : kinds_) requireSome(kinds, logs);
    }

    void tell() const {
        for (const auto& [place, kinds] : kinds_) {
            for (const auto& [what, kind] : kinds) say(told(kind));
        }
    }

private:
    struct Kind {
        std::string file;
        Missing first;
        std::size_t count = 0;
    };
    using Kinds = std::map<std::string, Kind>;

    static void requireSome(const Kinds& kinds, std::size_t logs) {
        std::size_t count = 0;
        for (const auto& [what, kind] : kinds) count += kind.count;
        if (count < logs) return;
        const Missing& first = kinds.begin()->second.first;
        throw Failure{wrongUsage,
                      logs == 1 ? first.text
                                : concat(first.text, "; so it is with all ", counted(logs, "log"))};
    }

    static std::string told(const Kind& kind) {
        const std::string text = concat(kind.file, ": ", kind.first.what);
        if (kind.count == 1) return text;
        return concat(text, "; ", counted(kind.count - 1, "more log"), " like it");
    }

    std::map<std::size_t, Kinds> kinds_;
};

void tellMissingConditions(const Answers& answers) {
    MissingTold told;
    for (const Answer& answer : answers) {
        if (answer.isRead()) told.add(answer, answer.remarks().conditions);
    }
    told.requireSome(readCount(answers));
    told.tell();
}

// A column may be one of logs in which nothing was found; those without it are none to tell.
void tellMissingColumns(const Answers& answers) {
    MissingTold all;
    MissingTold told;
    for (const Answer& answer : answers) {
        if (!answer.isRead()) continue;
        all.add(answer, answer.remarks().columns);
        if (answer.foundCount() > 0) told.add(answer, answer.remarks().columns);
    }
    all.requireSome(readCount(answers));
    told.tell();
}

// One that could not be read may be of the format that an option is for.
void tellUnusedOptions(const Answers& answers, const Args& args) {
    const std::vector<ReadingOption> options = readingOptionsOf(args);
    MissingTold told;
    for (const Answer& answer : answers) {
        if (!answer.isRead()) continue;
        std::vector<Missing> unused;
        for (std::size_t i = 0; i < options.size(); ++i) {
            if (options[i].isFor(answer.format)) continue;
            const std::string what = options[i].notFor(answer.format);
            unused.push_back({i, what, concat(answer.name(), ": ", what)});
        }
        told.add(answer, unused);
    }
    told.requireSome(askedCount(answers));
    told.tell();
}

void tellEach(const Answers& answers) {
    for (const Answer& answer : answers) {
        noteRead(answer.bytes);
        for (const std::string& text : answer.remarks().told) say(text);
        const std::string& failure = answer.remarks().failure;
        if (!failure.empty()) sayFailure(failure);
    }
}

std::size_t matchedRows(const Answers& answers) {
    std::size_t count = 0;
    for (const Answer& answer : answers) count += answer.count;
    return count;
}

std::size_t matchedLogs(const Answers& answers) {
    return static_cast<std::size_t>(std::count_if(
        answers.begin(), answers.end(), [](const Answer& answer) { return answer.count > 0; }));
}

std::string footer(const Answers& answers, std::size_t shown, std::size_t hidden) {
    std::size_t rows = 0;
    for (const Answer& answer : answers) rows += answer.rows;
    const std::size_t logs = readCount(answers);
    std::string text = concat(std::to_string(shown), " of ", counted(rows, "row"), " in ",
                              std::to_string(matchedLogs(answers)), " of ", counted(logs, "log"));
    const std::size_t asked = askedCount(answers);
    if (logs < asked) text += concat(", ", std::to_string(asked - logs), " not read");
    if (asked < answers.size()) {
        text += concat(", ", std::to_string(answers.size() - asked), " not looked into");
    }
    if (hidden > 0) text += concat(", ", counted(hidden, "column"), " out of sight");
    return text;
}

// The rows with their places, FILE:ROW, as show has them with their numbers.
void printTable(const Result& result, const Answers& answers, const Args& args, Printout& out) {
    std::string place;
    Grid grid;
    grid.columns.push_back({"File:Row", false, true});
    for (std::size_t i = 0; i < result.columnCount(); ++i)
        grid.columns.push_back({result.title(i)});
    grid.rowCount = result.rowCount();
    grid.cell = [&](std::size_t row, std::size_t column) -> std::string_view {
        if (column > 0) return result.cell(row, column - 1);
        const find::FoundRow found = result.row(row);
        return place = concat(result.fileOf(row), ":", std::to_string(found.number),
                              found.isTagged ? "*" : "");
    };
    const Screen screen = screenOf(out, args);
    std::size_t hidden = 0;
    if (grid.rowCount > 0) {
        hidden = grid.columns.size() - printGrid(grid, screen, out);
        out.line("");
    }
    out.inkedLine(inked(Ink::faint, footer(answers, result.rowCount(), hidden), screen));
}

// A log of what was found. Each answer goes as soon as it stands there, so that memory does not
// hold all of them twice.
Log logOf(const Result& result, Answers& answers) {
    Log log;
    log.path = log.name = "what was found";
    find::ResultCells cells(result);
    TableBuilder builder(log, cells.names());
    for (std::size_t row = 0; row < result.rowCount(); ++row) {
        builder.addRow(row + 1, cells.of(row));
        const bool isLast =
            row + 1 == result.rowCount() || result.answerOf(row + 1) != result.answerOf(row);
        if (isLast) answers[result.answerOf(row)].drop();
    }
    builder.finish();
    return log;
}

// The logs that have rows, and how many.
Log logOfFiles(const Answers& answers, bool hasCounts) {
    Log log;
    log.path = log.name = "what was found";
    std::vector<std::string> columns = {"File"};
    if (hasCounts) columns.push_back("Rows");
    TableBuilder builder(log, columns);
    std::size_t row = 0;
    for (const Answer& answer : answers) {
        if (answer.count == 0) continue;
        const std::string count = std::to_string(answer.count);
        std::vector<std::string_view> cells = {answer.name()};
        if (hasCounts) cells.push_back(count);
        builder.addRow(++row, cells);
    }
    builder.finish();
    return log;
}

void printAs(Format target, const Sheet& sheet, const Args& args, Printout& out) {
    const WriteStyle style = styleFrom(args, target);
    requireFile(target, out);
    Losses losses;
    writeSheet(sheet, target, style, out, losses);
    out.close();
    tellLosses(losses, out.name());
}

void printCounts(const Answers& answers, const Args& args, Printout& out) {
    std::vector<const Answer*> logs;
    for (const Answer& answer : answers) {
        if (answer.count > 0) logs.push_back(&answer);
    }
    std::string count;
    const Grid grid{{{"File"}, {"Rows", true}},
                    logs.size(),
                    [&](std::size_t row, std::size_t column) -> std::string_view {
                        if (column == 0) return logs[row]->name();
                        return count = std::to_string(logs[row]->count);
                    }};
    const Screen screen = screenOf(out, args);
    if (!logs.empty()) {
        printGrid(grid, screen, out);
        out.line("");
    }
    out.inkedLine(inked(Ink::faint, footer(answers, matchedRows(answers), 0), screen));
}

// Names for programs: with a zero byte behind each they are as they are.
void printFiles(const Answers& answers, const Args& args, Printout& out) {
    const bool hasZeros = args.has("null");
    for (const Answer& answer : answers) {
        if (answer.count == 0) continue;
        if (hasZeros)
            out.write(concat(answer.name(), std::string_view("\0", 1)));
        else
            out.line(answer.name());
    }
}

void printSums(const Answers& answers, const Args& args, Printout& out) {
    if (!wantsTable(args)) {
        const Log log = logOfFiles(answers, args.has("count"));
        return printAs(wantedTarget(args), wholeSheet(log), args, out);
    }
    if (args.has("count"))
        printCounts(answers, args, out);
    else
        printFiles(answers, args, out);
    out.close();
}

// Whether a writer goes through the rows from the first to the last, and keeps none.
bool isWrittenRowByRow(Format format) {
    return format == Format::csv || format == Format::tsv || format == Format::json ||
           format == Format::jsonl;
}

void printRows(Answers& answers, const Question& question, const Args& args, Printout& out) {
    const Result result(answers, question.names, args.number("limit", 0));
    if (!wantsTable(args)) {
        const Format target = wantedTarget(args);
        if (isWrittenRowByRow(target)) {
            return printAs(target, find::FoundSheet(result).sheet(), args, out);
        }
        const Log log = logOf(result, answers);
        return printAs(target, wholeSheet(log), args, out);
    }
    printTable(result, answers, args, out);
    out.close();
}

int resultOf(const Answers& answers, const LogFiles& files) {
    const bool isAllRead =
        files.areAll && std::all_of(answers.begin(), answers.end(), [](const Answer& answer) {
            return answer.remarks().failure.empty() && answer.isWhole;
        });
    if (!isAllRead) return exitCodeOf(unreadable);
    return matchedRows(answers) == 0 ? found : done;
}

int run(const Args& args) {
    const Wish wish = wishFrom(args);
    requireStyleOf(args, wantsTable(args) ? "table" : formatName(wantedTarget(args)));
    requireNoInput("find", wish.paths, args.text("output"), "what is found");
    LogFiles files = logFilesFrom(wish.paths, args);
    leaveOut(args.text("output"), files.paths);
    if (files.paths.empty() && files.areAll) {
        throw Failure{unreadable,
                      "find: no log is there, expected files that vek reads by their ending; name "
                      "others one by one, or say what they are with --from"};
    }
    // The process ends with the command, and its memory with it.
    static Answers& answers = *new Answers(ask(wish.question, files.paths, args));
    tellEach(answers);
    tellUnusedOptions(answers, args);
    tellMissingConditions(answers);
    tellMissingColumns(answers);
    Printout out(args.text("output"));
    if (isSummed(args))
        printSums(answers, args, out);
    else
        printRows(answers, wish.question, args, out);
    return resultOf(answers, files);
}

const std::string& printedFormats() {
    static const std::string printed = "table|" + writableFormats();
    return printed;
}

std::vector<Option> conditionOptions() {
    std::vector<Option> options = choosingOptions();
    std::erase_if(options, [](const Option& option) {
        const std::string name = longName(option);
        return name == "--unique" || name == "--duplicates";
    });
    options.push_back(everyOption());
    return options;
}

}  // namespace

Command findCommand() {
    return {
        "find",
        "search many logs and folders of logs for rows",
        "Looks for rows in files and folders, several at a time, and prints where each stands, "
        "FILE:ROW, and the columns wanted; rows come in the order of the files, which in a folder "
        "is that of their names. Of a folder and all folders in it those files are read that have "
        "the ending of a format (of --from, where that is given); hidden files, and those that "
        "programs keep while they work, are left out, and no folder is looked into twice, "
        "whatever links lead to it. The first argument is the condition, unless --where, --at, "
        "--tagged or --every says what to look for and it is the name of a file. A log that has no "
        "such "
        "column has no rows that match, which is told once for all of them; where none has it, "
        "that is an error. A file that cannot be read is told, and the others are searched. In "
        "other formats than table the place stands in columns File and Row. Ends with 0 when a "
        "row matched, with 1 when none did, and with 3 when a file or a part of one could not be "
        "read, whatever was found.",
        {{"vek find Description=dolly samples/ --columns Reel,Take,Description",
          "rows of every log in a folder"},
         {"vek find 'Take>=4' samples/ -w Scene=67 --format csv", "two conditions, for a program"},
         {"vek find --at 03:05:00:00 samples/*.vek", "the clips that hold a timecode"},
         {"vek find Scene=12 samples/ --files-with-matches", "the names of the files alone"},
         {"ls samples/*.vek | vek find Notes~sound --files-from - --count",
          "files from a list, how many rows of each"}},
        {{"COND", "what to look for, as --where has it", true},
         {"PATH", "files and folders; - for standard input", true, true}},
        join(join(join(conditionOptions(),
                       {{"-c,--columns", "A,B", "these columns, in this order"},
                        {"-a,--all", "", "all columns, whatever the field maps say"},
                        {"--limit", "N", "the first N rows"},
                        {"--count", "", "how many rows match in each file that has some"},
                        {"-l,--files-with-matches", "", "the names of files that have such rows"},
                        {"-0,--null", "", "a zero byte behind each of these names"},
                        filesFromOption(),
                        {"-j,--jobs", "N", "files at a time; as many as there are processors"},
                        {"-f,--format", "FORMAT", "what to print", false, printedFormats().c_str()},
                        {"-o,--output", "OUT", "write a file; its ending gives the format"},
                        fromOption()}),
                  styleOptions()),
             screenOptions()),
        run,
    };
}

}  // namespace vek
