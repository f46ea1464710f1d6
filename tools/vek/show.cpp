#include <vekdb/views/field_map.h>
#include "formats/log/column_names.h"
#include "formats/writing/writers.h"
#include "tools/vek/cli/choosing.h"
#include "tools/vek/cli/grid.h"
#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/writing.h"
#include "tools/vek/commands.h"

namespace vek {

namespace {

// The columns that the file's field map shows; all of them in a file without one.
std::vector<unsigned> mappedColumns(const Log& log) {
    if (log.parameter("V5_FIELD_MAP").empty()) return allColumns(log);
    DistinctNames distinct(log);
    FieldMap map(*log.table);
    std::vector<unsigned> columns;
    for (unsigned n = 0; n < map.numVisible(); ++n) {
        int column = map.getVisibleFieldIndex(static_cast<int>(n));
        if (column >= 0) columns.push_back(static_cast<unsigned>(column));
    }
    return columns.empty() ? allColumns(log) : columns;
}

std::string footer(const Sheet& sheet, std::size_t matched, std::size_t columnsPrinted) {
    std::size_t shown = sheet.rowCount();
    std::size_t there = sheet.log.rowsInSource();
    std::string text = std::to_string(shown) + " of " + counted(there, "row");
    if (matched != shown && matched != there) text += ", " + std::to_string(matched) + " matched";
    std::size_t tagged = sheet.view->get_num_tags();
    if (tagged != 0) text += ", " + std::to_string(tagged) + " tagged (*)";
    std::size_t hidden = sheet.columns.size() - columnsPrinted;
    if (hidden != 0) text += ", " + counted(hidden, "column") + " out of sight";
    return text;
}

// Row numbers are the file's, whatever the order; a star marks tagged rows.
void printTable(const Sheet& sheet, std::size_t matched, const Args& args, Printout& out) {
    Grid grid;
    grid.columns.push_back({"#", true, true});
    for (unsigned i = 0; i < sheet.columns.size(); ++i) grid.columns.push_back({sheet.name(i)});
    grid.rowCount = sheet.rowCount();
    std::string number;
    grid.cell = [&](std::size_t row, std::size_t column) -> std::string_view {
        unsigned at = static_cast<unsigned>(row);
        if (column > 0) return sheet.cell(at, static_cast<unsigned>(column - 1));
        number = std::to_string(sheet.log.numberOf(sheet.view->baseIndex(at)));
        number += sheet.view->get_tag(at) != 0 ? '*' : ' ';
        return number;
    };
    Screen screen = screenOf(out, args);
    std::size_t printed = printGrid(grid, screen, out);
    out.line("");
    out.inkedLine(inked(Ink::faint, footer(sheet, matched, printed - 1), screen));
}

bool wantsTable(const Args& args) {
    if (args.has("format")) return args.text("format") == "table";
    return !hasTargetEnding(args.text("output"));
}

// The field map is for eyes; what is kept or read by a program has all columns.
bool isForEyes(const Args& args) {
    std::string output = args.text("output");
    return wantsTable(args) && (output.empty() || output == "-");
}

std::vector<unsigned> shownColumns(const Log& log, const Args& args) {
    if (args.has("columns")) return columnList(log, args.text("columns"));
    return args.has("all") || !isForEyes(args) ? allColumns(log) : mappedColumns(log);
}

Format wantedTarget(const Args& args) {
    if (args.has("format")) return targetNamed(args.text("format"));
    return targetOfPath(args.text("output"), programTerms());
}

void printAs(Format target, const Sheet& sheet, const Args& args, Printout& out) {
    WriteStyle style = styleFrom(args, target);
    Losses losses;
    writeSheet(sheet, target, style, out, losses);
    out.close();
    // Text for people and pipes tells nothing about parameters; a file kept does.
    if (args.has("output") || target == Format::ale) tellLosses(losses, out.name());
}

int run(const Args& args) {
    Selection selection = selectionFrom(args);
    if (args.has("guard-formulas") && wantsTable(args)) {
        throw Failure{wrongUsage, "show: --guard-formulas is for --format csv and tsv"};
    }
    // A table file says how long the values of all its rows are.
    bool isTableFile = !wantsTable(args) && wantedTarget(args) == Format::table;
    Wanted wanted = isTableFile ? Wanted() : wantedRows(selection);
    // The process ends with the command, and its memory with it, faster than row by row.
    Held held = holdInput({args.text("FILE")}, args.text("output"));
    static const Log& log = *new Log(readLog(args, "FILE", wanted));
    Selected selected = selectRows(log, selection);
    Sheet sheet{log, selected.view, shownColumns(log, args)};
    Printout out(args.text("output"), held);
    if (wantsTable(args)) {
        printTable(sheet, selected.matched, args, out);
        out.close();
    } else {
        printAs(wantedTarget(args), sheet, args, out);
    }
    return narrows(selection) && selected.matched == 0 ? found : readingResult(log);
}

const std::string& printedFormats() {
    static const std::string printed = "table|" + writableFormats();
    return printed;
}

}  // namespace

Command showCommand() {
    return {
        "show",
        "print a log: chosen rows, in order, fitted to the terminal",
        "Prints the rows of a log of any format. Rows are chosen, sorted and cut; row numbers are "
        "those of the file and tagged rows have a star. Columns are those that the log's own field "
        "map shows; files and other formats get all of them, unless --columns says which. Ends "
        "with 1 when nothing matched.",
        {{"vek show samples/docs.vek", "the whole log"},
         {"vek show samples/dailies.vek --where Scene=67 --sort Take --limit 5",
          "the first takes of a scene"},
         {"vek show samples/dailies.vek -w 'Take>=4' -w 'Notes~sound|boom' -c Name,Take,Notes",
          "both conditions, three columns"},
         {"vek show samples/dailies.vek --at 02:01:00:00", "the clips that hold a timecode"},
         {"vek show samples/docs.vek --tagged -o circled.csv", "the tagged rows, as a CSV file"}},
        {{"FILE", "the log, or - for standard input"}},
        join(join(selectionOptions(),
                  {{"-c,--columns", "A,B", "these columns, in this order"},
                   {"-a,--all", "", "all columns, whatever the field map says"},
                   {"-f,--format", "FORMAT", "what to print", false, printedFormats().c_str()},
                   {"-o,--output", "OUT", "write a file; its ending gives the format"},
                   fromOption()}),
             join(styleOptions(), screenOptions())),
        run,
    };
}

}  // namespace vek
