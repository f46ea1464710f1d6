#include "formats/writing/writers.h"
#include "tools/vek/cli/choosing.h"
#include "tools/vek/cli/edits.h"
#include "tools/vek/cli/grid.h"
#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/say.h"
#include "tools/vek/cli/writing.h"
#include "tools/vek/commands.h"

namespace vek {

namespace {

struct Change {
    unsigned short column = 0;
    std::string value;
};

Change parseChange(const Log& log, const std::string& text) {
    std::size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0) {
        throw Failure{wrongUsage,
                      "set: " + inQuotes(text) + " is no change, expected COLUMN=VALUE"};
    }
    unsigned column = log.requireColumn(text.substr(0, equals));
    return {static_cast<unsigned short>(column), text.substr(equals + 1)};
}

std::vector<Edit> editsOf(const VDBView& view, const std::vector<Change>& changes) {
    std::vector<Edit> edits;
    for (unsigned i = 0; i < view->get_num_records(); ++i) {
        for (const Change& change : changes) {
            std::string before(view->get_record(i)->fieldView(change.column));
            if (before == change.value) continue;
            edits.push_back({view->baseIndex(i), change.column, before, change.value});
        }
    }
    return edits;
}

int run(const Args& args) {
    Selection selection = selectionFrom(args);
    requireChoice("set", selection, args);
    Log log = args.has("dry-run") ? readLog(args) : readLogToChange(args);
    std::vector<Change> changes;
    for (const std::string& text : args.all("COLUMN=VALUE")) {
        changes.push_back(parseChange(log, text));
    }
    VDBView view = selectRows(log, selection).view;
    std::vector<Edit> edits = editsOf(view, changes);
    std::string summary = log.name + ": " + counted(view->get_num_records(), "row") + " matched, " +
                          counted(edits.size(), "cell");
    if (args.has("dry-run")) {
        printEdits(log, edits, args);
        say(summary + " would change");
        return view->get_num_records() == 0 ? found : done;
    }
    if (view->get_num_records() == 0) {
        say(log.name + ": no row matches, nothing changed");
        return found;
    }
    makeEdits(log, edits);
    saveInPlace(log, args.has("backup"));
    say(summary + " changed");
    return done;
}

}  // namespace

Command setCommand() {
    return {
        "set",
        "edit cells of the rows that match",
        "Stores the values in all matching rows. Changing all rows has to be asked for by name. "
        "The "
        "file is replaced whole or not at all. Ends with 1 when nothing matched.",
        {{"vek set log.vek 'Notes=no good' --where Take==1", "a note on first takes"},
         {"vek set log.vek Reel=A002 Scene= --where Reel=A001 --dry-run",
          "show before and after of two columns, change nothing"},
         {"vek set log.vek Notes= --every", "empty a column"}},
        {{"FILE", "the log, changed in place; - reads standard input and prints"},
         {"COLUMN=VALUE", "a column and its new value", false, true}},
        join(join(choosingOptions(), {everyOption(), dryRunOption(), backupOption(), fromOption()}),
             screenOptions()),
        run,
    };
}

}  // namespace vek
