#include <algorithm>

#include "formats/changing/merger.h"
#include "tools/vek/cli/outputs.h"
#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/reading_options.h"
#include "tools/vek/cli/saving.h"
#include "tools/vek/cli/say.h"
#include "tools/vek/cli/writing.h"
#include "tools/vek/commands.h"

namespace vek {

namespace {

void tellConflict(const Merger::Conflict& conflict) {
    say(worded(conflict));
}

std::vector<unsigned> rowsFrom(const Log& log, unsigned first) {
    std::vector<unsigned> rows;
    for (unsigned row = first; row < log.rowCount(); ++row) rows.push_back(row);
    return rows;
}

void requireOneStandardInput(const Args& args) {
    const std::vector<std::string>& others = args.all("OTHER");
    const auto count = std::count(others.begin(), others.end(), "-");
    if (count + (args.text("FILE") == "-" ? 1 : 0) < 2) return;
    throw Failure{wrongUsage, "append: standard input can be one of the logs, not several"};
}

// What takes the place of another one of the logs must be what it held, too.
Held heldOther(const Args& args) {
    const std::string output = args.text("output");
    return isInput({args.text("FILE")}, output) ? nullptr : holdInput(args.all("OTHER"), output);
}

int run(const Args& args) {
    requireOneStandardInput(args);
    Held held = args.has("dry-run") ? nullptr : heldOther(args);
    Log log = readLogToSave(args);
    if (!log.held) log.held = held;
    int result = readingResult(log);
    const unsigned before = log.rowCount();
    const unsigned columnsBefore = log.columnCount();
    Merger merger(log, Merger::Prefer::report, tellConflict, say);
    for (const std::string& path : args.all("OTHER")) {
        Log other = readLog(path, args);
        tellSharedOptions(log, other, args);
        requireWhole(other);
        if (!args.has("yes")) requireSameCounting(log, other);
        result = std::max(result, readingResult(other));
        merger.add(other);
    }
    const std::string summary =
        concat(log.name, ": ", counted(log.rowCount() - before, "row"), ", ",
               counted(log.columnCount() - columnsBefore, "new column"));
    if (args.has("dry-run")) {
        printRows(log, rowsFrom(log, before));
        saveResult(log, args);
        say(summary + " would be appended");
        return result;
    }
    saveResult(log, args);
    say(summary + " appended");
    return result;
}

}  // namespace

Command appendCommand() {
    return {
        "append",
        "put the rows of other logs behind those of a log",
        "Appends the rows of other logs, of any format, to those of the first, which keeps its "
        "format. Columns go by their names, case ignored, the second of a name to the second; new "
        "ones are added at the end, none of them twice, and timecodes are stored in the form of "
        "the log's column. "
        "Parameters that the log does not have are added. Logs of two frame rates (FPS), or of "
        "drop-frame and non-drop counting, are appended with --yes only. Rows that are there "
        "already come a second time: vek dedupe deletes those, vek merge --key joins them.",
        {{"vek append log.vek day2.vek", "in place"},
         {"vek append day1.vek day2.vek docs.csv -o all.vek", "into another file"},
         {"vek append log.vek docs.csv --dry-run", "print the rows that would come"}},
        {{"FILE", "the log, changed in place; - reads standard input and prints"},
         {"OTHER", "logs of any format, at least one", false, true}},
        {{"-y,--yes", "", "append logs of other frame rates all the same"},
         {"-n,--dry-run", "", "print the rows that would come as CSV, change nothing"},
         savingOption(),
         backupOption(),
         fromOption()},
        run,
    };
}

}  // namespace vek
