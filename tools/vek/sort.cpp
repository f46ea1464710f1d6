#include "tools/vek/cli/choosing.h"
#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/saving.h"
#include "tools/vek/cli/say.h"
#include "tools/vek/cli/writing.h"
#include "tools/vek/commands.h"

namespace vek {

namespace {

std::size_t countMoved(const std::vector<unsigned>& rows) {
    std::size_t moved = 0;
    for (unsigned i = 0; i < rows.size(); ++i) moved += rows[i] != i ? 1 : 0;
    return moved;
}

int run(const Args& args) {
    if (args.text("by").empty()) {
        throw Failure{wrongUsage, "sort: by which columns? expected --by A,B"};
    }
    Selection selection;
    selection.sort = args.text("by");
    selection.reverse = args.has("reverse");
    Log log = readLogToSave(args);
    const std::vector<unsigned> rows = selectedRows(log, selection);
    const std::size_t moved = countMoved(rows);
    const std::string summary =
        concat(log.name, ": ", std::to_string(moved), " of ", counted(log.rowCount(), "row"));
    const bool isTrial = args.has("dry-run");
    if (isTrial) printRows(log, rows);
    const bool isToBeWritten = moved > 0 || args.has("output") || args.text("FILE") == "-";
    if (isToBeWritten) saveResult(log, rows, args);
    say(moved == 0 ? log.name + ": in this order already"
                   : summary + (isTrial ? " would move" : " moved"));
    return done;
}

}  // namespace

Command sortCommand() {
    return {
        "sort",
        "put the rows of a log in order",
        "Sorts the rows by one column or several, as vek show --sort does: digits by their value, "
        "timecodes by frame, case ignored, empty cells last. 01 comes in front of 1, a point and a "
        "sign count as characters; rows that are the same there keep their order. "
        "No cell changes, and tags stay with their rows.",
        {{"vek sort log.vek --by Scene,Take", "in place"},
         {"vek sort log.vek --by 'Start time' -o by_time.csv", "into another file"},
         {"vek sort log.vek --by Reel --reverse --dry-run", "print the order, change nothing"}},
        {{"FILE", "the log, changed in place; - reads standard input and prints"}},
        {{"-b,--by", "A,B", "the columns, the most important one first"},
         {"-r,--reverse", "", "the exact reverse of the order"},
         {"-n,--dry-run", "", "print the rows as CSV, change nothing"},
         savingOption(),
         backupOption(),
         fromOption()},
        run,
    };
}

}  // namespace vek
