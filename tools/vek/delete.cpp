#include "formats/writing/writers.h"
#include "tools/vek/cli/choosing.h"
#include "tools/vek/cli/grid.h"
#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/saving.h"
#include "tools/vek/cli/say.h"
#include "tools/vek/cli/writing.h"
#include "tools/vek/commands.h"

namespace vek {

namespace {

// The rows that stay.
std::vector<unsigned> others(const Log& log, const std::vector<unsigned>& chosen) {
    std::vector<char> goes(log.rowCount());
    for (unsigned row : chosen) goes[row] = 1;
    std::vector<unsigned> rows;
    for (unsigned row = 0; row < goes.size(); ++row) {
        if (!goes[row]) rows.push_back(row);
    }
    return rows;
}

int run(const Args& args) {
    Selection selection = selectionFrom(args);
    requireChoice("delete", selection, args);
    Log log = readLogToSave(args);
    const std::vector<unsigned> chosen = selectedRows(log, selection);
    const char* const outcome = "nothing deleted";  // where none matches
    const std::string summary =
        counted(chosen.size(), "row") + " of " + std::to_string(log.rowCount());
    if (args.has("dry-run")) {
        printRows(log, chosen);
        if (chosen.empty()) return tellUnmatched(log, outcome);
        saveInPlace(log, others(log, chosen), args);
        say(log.name + ": " + summary + " would be deleted");
        return done;
    }
    if (chosen.empty()) return finishUnmatched(log, outcome, args);
    saveInPlace(log, others(log, chosen), args);
    say(log.name + ": " + summary + " deleted");
    return done;
}

}  // namespace

Command deleteCommand() {
    return {
        "delete",
        "delete the rows that match",
        "Deletes the matching rows and says how many. Deleting all rows has to be asked for by "
        "name. Ends with 1 when nothing matched.",
        {{"vek delete log.vek --where 'Notes~^NG' --dry-run", "print the rows, delete nothing"},
         {"vek delete log.vek --where 'Notes~^NG' --backup", "delete, and keep log.vek.bak"}},
        {{"FILE", "the log, changed in place; - reads standard input and prints"}},
        join(choosingOptions(), {everyOption(),
                                 {"-n,--dry-run", "", "print the rows as CSV, delete nothing"},
                                 backupOption(),
                                 fromOption()}),
        run,
    };
}

}  // namespace vek
