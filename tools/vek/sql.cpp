#include <algorithm>
#include <filesystem>
#include <set>

#include "formats/changing/file_names.h"
#include "formats/formats.h"
#include "formats/text/text_lines.h"
#include "formats/writing/writers.h"
#include "tools/vek/cli/grid.h"
#include "tools/vek/cli/outputs.h"
#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/reading_options.h"
#include "tools/vek/cli/saving.h"
#include "tools/vek/cli/say.h"
#include "tools/vek/cli/writing.h"
#include "tools/vek/commands.h"
#include "tools/vek/sql/engine.h"

namespace vek {

namespace {

constexpr const char* firstName = "log";

bool isInIdentifier(char c) {
    const char lower = asciiLower(c);
    return isAsciiDigit(c) || (lower >= 'a' && lower <= 'z') || (c & 0x80) != 0;
}

// A name that can be written without quotes.
std::string identifier(std::string_view text) {
    std::string name;
    for (char c : text) name += isInIdentifier(c) ? c : '_';
    if (name.empty() || isAsciiDigit(name[0])) name.insert(0, 1, '_');
    return name;
}

std::string stemOf(const std::string& path) {
    std::string name = std::filesystem::path(path).filename().string();
    return path == "-" ? "stdin" : name.substr(0, std::max<std::size_t>(1, name.find('.', 1)));
}

// Names that statements find logs by, each once whatever its case.
class TableNames {
public:
    bool take(const std::string& name) {
        std::string folded = name;
        std::transform(folded.begin(), folded.end(), folded.begin(), asciiLower<char>);
        return !folded.starts_with("sqlite_") && taken_.insert(folded).second;
    }

    std::string unique(const std::string& wanted) {
        std::string name = wanted;
        for (unsigned number = 2; !take(name); ++number) {
            name = concat(wanted, "_", std::to_string(number));
        }
        return name;
    }

private:
    std::set<std::string> taken_;
};

struct NamedPath {
    std::string path;
    std::string name;  // "" where none was said
};

// NAME=FILE of --as.
NamedPath namedPath(const std::string& text) {
    const std::size_t sign = text.find('=');
    if (sign != text.npos && sign > 0 && sign + 1 < text.size() &&
        identifier(text.substr(0, sign)) == text.substr(0, sign)) {
        return {text.substr(sign + 1), text.substr(0, sign)};
    }
    throw Failure{wrongUsage, "sql: --as takes NAME=FILE, a name of letters, digits and _, not " +
                                  inQuotes(text)};
}

struct Words {
    std::vector<NamedPath> logs;
    std::string statements;
};

Words wordsOf(const Args& args) {
    std::vector<std::string> all = args.all("FILE");
    Words words;
    words.statements = all.back();
    all.pop_back();
    for (std::string& path : all) words.logs.push_back({std::move(path), {}});
    for (const std::string& text : args.all("as")) words.logs.push_back(namedPath(text));
    if (!words.logs.empty()) return words;
    throw Failure{wrongUsage,
                  "sql: found " + inQuotes(words.statements) +
                      " alone, expected a log and behind it what is asked: vek sql log.vek "
                      "'SELECT * FROM log'"};
}

// Each log that is read would be saved, and the last one with what others do not have.
void requireOneNameEach(const std::vector<std::string>& paths) {
    for (auto path = paths.begin(); path != paths.end(); ++path) {
        const auto other = std::find_if(
            paths.begin(), path, [&](const std::string& one) { return isSameFile(one, *path); });
        if (other == path) continue;
        throw Failure{wrongUsage, concat("sql: ", *other, " and ", *path,
                                         " are one log; to change it, name it once")};
    }
}

Log readForSql(const std::string& path, const Args& args) {
    const Opening opening = openingFrom(args);
    if (!args.has("write")) return readLog(path, opening);
    if (path == "-") {
        throw Failure{wrongUsage, "sql: the standard input is not written back; name a file"};
    }
    requireChangeable(path);
    return args.has("dry-run") ? readLogToCopy(path, opening) : readLogToChange(path, opening);
}

// The first log is called log, too.
std::vector<sql::NamedLog> readAll(const Words& words, const Args& args) {
    TableNames names;
    for (const NamedPath& log : words.logs) {
        if (log.name.empty() || names.take(log.name)) continue;
        throw Failure{wrongUsage, "sql: two logs are called " + log.name};
    }
    const std::string rate = wantedRate(args);
    std::vector<sql::NamedLog> logs;
    for (const NamedPath& log : words.logs) {
        std::vector<std::string> own;
        if (logs.empty() && names.take(firstName)) own.emplace_back(firstName);
        const std::string stem = identifier(stemOf(log.path));
        const bool isSame = own.size() == 1 && stem == firstName;
        if (!isSame) own.push_back(log.name.empty() ? names.unique(stem) : log.name);
        logs.push_back({readForSql(log.path, args), own});
        requireUse(logs.back().log, args, words.logs.size());
        tellOtherRate(logs.back().log, LogCounting(logs.back().log, rate));
        if (logs.size() > 1) tellSharedOptions(logs.front().log, logs.back().log, args);
    }
    return logs;
}

bool wantsTable(const Args& args) {
    if (args.has("format")) return args.text("format") == "table";
    return !hasTargetEnding(args.text("output"));
}

// A card has the number of its row as its title.
Grid gridOf(const Sheet& sheet, const Args& args, std::string& number) {
    const std::size_t numbers = args.has("cards") ? 1 : 0;
    Grid grid;
    if (numbers == 1) grid.columns.push_back({"#", true, true});
    for (unsigned i = 0; i < sheet.columns.size(); ++i) grid.columns.push_back({sheet.name(i)});
    grid.rowCount = sheet.rowCount();
    grid.cell = [&sheet, &number, numbers](std::size_t row, std::size_t column) {
        if (column < numbers) return std::string_view(number = std::to_string(row + 1));
        return sheet.cell(static_cast<unsigned>(row), static_cast<unsigned>(column - numbers));
    };
    grid.wraps = args.has("wrap");
    return grid;
}

void printTable(const Sheet& sheet, const Args& args, Printout& out) {
    std::string number;
    const Grid grid = gridOf(sheet, args, number);
    const Screen screen = screenOf(out, args);
    std::string footer = counted(grid.rowCount, "row");
    if (args.has("cards")) {
        printCards(grid, screen, out);
    } else {
        const std::size_t hidden = grid.columns.size() - printGrid(grid, screen, out);
        if (hidden != 0) footer += ", " + counted(hidden, "column") + " out of sight";
    }
    out.line("");
    out.inkedLine(inked(Ink::faint, footer, screen));
}

Format wantedTarget(const Args& args) {
    if (args.has("format")) return targetNamed(args.text("format"));
    return targetOfPath(args.text("output"), programTerms());
}

void print(const Log& answer, const Args& args) {
    Printout out(args.text("output"));
    const Sheet sheet = wholeSheet(answer);
    Losses losses;
    if (wantsTable(args)) {
        printTable(sheet, args, out);
    } else {
        const Format target = wantedTarget(args);
        requireFile(target, out);
        writeSheet(sheet, target, styleFrom(args, target), out, losses);
    }
    out.close();
    tellLosses(losses, out.name());
}

void tellChanges(const sql::Answer& answer, bool isTrial) {
    std::string text = counted(answer.changed, "row");
    if (isTrial) return say(text + " would change, nothing is saved");
    for (std::size_t i = 0; i < answer.changedLogs.size(); ++i) {
        text += (i == 0 ? " changed, saved " : ", ") + answer.changedLogs[i];
    }
    if (answer.changed > 0 && answer.changedLogs.empty()) {
        return say(text + " set to what it was, nothing to save");
    }
    say(answer.changedLogs.empty() ? "nothing changed" : text);
}

void requireFitting(const Args& args) {
    for (const char* name : {"dry-run", "backup"}) {
        if (!args.has(name) || args.has("write")) continue;
        throw Failure{wrongUsage,
                      concat("sql: --", name, " is for changes, expected --write, too")};
    }
    if ((args.has("cards") || args.has("wrap")) && !wantsTable(args)) {
        throw Failure{wrongUsage, "sql: --cards and --wrap are for --format table"};
    }
    requireStyleOf(args, wantsTable(args) ? "table" : formatName(wantedTarget(args)));
}

sql::Wishes wishesFrom(const Args& args, JointSaving& saving) {
    // Rows that go on to be counted or grouped no more are kept until they are printed.
    constexpr std::size_t mostAnswer = std::size_t{1} << 30;
    return {args.has("write"), wantedRate(args), args.number("max-output", mostAnswer),
            [&](const Log& log, const std::vector<unsigned>& rows) { saving.add(log, rows); },
            [&] { saving.commit(); }};
}

int run(const Args& args) {
    requireFitting(args);
    const Words words = wordsOf(args);
    std::vector<std::string> paths;
    for (const NamedPath& log : words.logs) paths.push_back(log.path);
    requireNoInput("sql", paths, args.text("output"), "the answer");
    if (args.has("write")) requireOneNameEach(paths);
    if (args.has("backup")) {
        for (const std::string& path : paths) requireNoBackupOver(paths, path);
    }
    JointSaving saving(args);
    const sql::Answer answer =
        sql::run(readAll(words, args), words.statements, wishesFrom(args, saving));
    const bool hasRows = answer.rows.table != nullptr;
    if (hasRows) print(answer.rows, args);
    if (args.has("write")) tellChanges(answer, args.has("dry-run"));
    const bool asksForAny = hasRows || args.has("write");
    const bool isNothing = (!hasRows || answer.rows.rowCount() == 0) && answer.changed == 0;
    return asksForAny && isNothing ? found : done;
}

const std::string& printedFormats() {
    static const std::string printed = "table|" + writableFormats();
    return printed;
}

}  // namespace

Command sqlCommand() {
    return {
        "sql",
        "ask logs in SQL, or change them",
        "Runs SQL, the last of the words, with the logs in front of it as tables. Each is called "
        "by its file's name without the ending, signs in it as _, and the first one log, too. All "
        "cells are texts; columns of one name are Reel and Reel#2, one without a name []. Beside "
        "them each row has _row, its number, _line, _tagged and _fps, which SELECT * leaves out. "
        "COLLATE TIMECODE orders by frames and as people do, COLLATE PEOPLE without timecodes. "
        "tc_frames(tc, rate), tc_text(frames, rate) and tc_add(tc, frames, rate) reckon at 24 "
        "frames a second where no rate is said; feet(frames or keycode, gauge) and feet(start, "
        "end, gauge) give footage. With --write, UPDATE, INSERT and DELETE change the logs: all "
        "statements or none, and of the files what was changed alone; several logs are all saved, "
        "or "
        "none where one of them cannot be. No other file is reached. "
        "Ends with 1 where no row came and no change reached one.",
        {{"vek sql samples/dailies.vek 'SELECT Scene, count(*) AS takes FROM log GROUP BY Scene "
          "ORDER BY takes DESC LIMIT 3'",
          "scenes with the most takes"},
         {"vek sql samples/docs.vek \"SELECT Reel, sum(tc_frames([End time], _fps) - "
          "tc_frames([Start time], _fps)) AS frames FROM log GROUP BY Reel\"",
          "frames of each reel"},
         {"vek sql day1.vek day2.vek 'SELECT a.Scene FROM day1 a JOIN day2 b USING (Scene, Take)' "
          "-f csv",
          "what both days have"},
         {"vek sql log.vek \"UPDATE log SET Notes = 'print' WHERE Scene = '12'\" --write --backup",
          "change a log, and keep log.vek.bak"}},
        {{"FILE", "the logs, and behind them the SQL; - reads standard input", false, true}},
        join(join({{"--as", "NAME=FILE", "another log, and what it is called", true},
                   {"--write", "", "save the logs that are changed"},
                   {"-n,--dry-run", "", "with --write: make the changes, and save none"},
                   backupOption(),
                   {"--cards", "", "a card for each row"},
                   {"--wrap", "", "long cells take several lines instead of being cut"},
                   {"-f,--format", "FORMAT", "what to print", false, printedFormats().c_str()},
                   {"-o,--output", "OUT", "write a file; its ending gives the format"},
                   fromOption()},
                  styleOptions()),
             screenOptions()),
        run,
    };
}

}  // namespace vek
