#include <algorithm>
#include <utility>

#include "formats/delimited/delimited_lines.h"
#include "formats/formats.h"
#include "formats/json/json_rows.h"
#include "formats/log/mapped_columns.h"
#include "formats/text/text_lines.h"
#include "formats/text/width.h"
#include "formats/writing/sheet_facts.h"
#include "formats/writing/writers.h"
#include "tools/vek/cli/choosing.h"
#include "tools/vek/cli/each_log.h"
#include "tools/vek/cli/grid.h"
#include "tools/vek/cli/outputs.h"
#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/say.h"
#include "tools/vek/cli/terminal.h"
#include "tools/vek/cli/watching.h"
#include "tools/vek/cli/writing.h"
#include "tools/vek/commands.h"

namespace vek {

namespace {

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

// A terminal that is narrower than this has no room for columns.
constexpr std::size_t narrowest = 60;

bool wantsCards(const Args& args, const Screen& screen, const Printout& out) {
    return args.has("cards") || (out.isTerminal() && screen.width < narrowest);
}

// Row numbers are the file's, whatever the order; a star marks tagged rows.
class SheetTable {
public:
    explicit SheetTable(const Sheet& sheet, bool wraps) : sheet_(sheet) {
        grid_.columns.push_back({"#", true, true});
        for (unsigned i = 0; i < sheet.columns.size(); ++i)
            grid_.columns.push_back({sheet.name(i)});
        grid_.rowCount = sheet.rowCount();
        grid_.cell = [this](std::size_t row, std::size_t column) { return cell(row, column); };
        grid_.wraps = wraps;
    }
    SheetTable(const SheetTable&) = delete;
    SheetTable& operator=(const SheetTable&) = delete;

    /// Returns how many columns are in sight.
    std::size_t print(const Args& args, Printout& out, GridLayout& layout) const {
        const Screen screen = screenOf(out, args);
        if (!wantsCards(args, screen, out)) return printGrid(grid_, screen, out, layout) - 1;
        if (layout.hasHeading && grid_.rowCount > 0) out.line("");
        printCards(grid_, screen, out);
        layout.hasHeading = layout.hasHeading || grid_.rowCount > 0;
        return sheet_.columns.size();
    }

private:
    std::string_view cell(std::size_t row, std::size_t column) {
        const unsigned at = static_cast<unsigned>(row);
        if (column > 0) return sheet_.cell(at, static_cast<unsigned>(column - 1));
        number_ = std::to_string(sheet_.log.numberOf(sheet_.view->baseIndex(at)));
        number_ += sheet_.view->get_tag(at) != 0 ? '*' : ' ';
        return number_;
    }

    const Sheet& sheet_;
    Grid grid_;
    std::string number_;
};

void printTable(const Sheet& sheet, std::size_t matched, const Args& args, Printout& out) {
    GridLayout layout;
    const std::size_t printed = SheetTable(sheet, args.has("wrap")).print(args, out, layout);
    if (layout.hasHeading) out.line("");
    out.inkedLine(inked(Ink::faint, footer(sheet, matched, printed), screenOf(out, args)));
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
    requireFile(target, out);
    Losses losses;
    writeSheet(sheet, target, style, out, losses);
    out.close();
    tellLosses(losses, out.name());
}

// Prints a log that is followed: on a terminal what fits it, drawn anew each time, else the rows
// that were not there before.
class WatchedLog {
public:
    WatchedLog(const Args& args, const Selection& selection) : args_(args), selection_(selection) {}

    void show(const Log& log) {
        const Selected selected = selectRows(log, selection_);
        const Sheet sheet{log, selected.view, shownColumns(log, args_)};
        Printout out;
        wantsTable(args_) && out.isTerminal() ? draw(sheet, selected.matched, out)
                                              : append(sheet, out);
        out.close();
    }

    bool isOutdated() const { return hasDrawn_ && terminalSize() != drawn_; }

    // Nothing of a row is printed that is written by half.
    void tellHeld() const {
        if (held_.empty()) return;
        say(held_ +
            ": the last line has no end, expected one behind each row; the row is printed "
            "when it has one");
    }

private:
    // The last rows, with room for the line above, the heading, and the two lines below.
    std::size_t rowsInSight(const Sheet& sheet, const Printout& out) const {
        constexpr std::size_t otherLines = 5;
        const std::size_t lines = drawn_.rows > otherLines ? drawn_.rows - otherLines : 1;
        if (!wantsCards(args_, screenOf(out, args_), out)) return lines;
        return std::max<std::size_t>(1, lines / (sheet.columns.size() + 2));
    }

    void draw(const Sheet& sheet, std::size_t matched, Printout& out) {
        constexpr const char* clear = "\x1b[H\x1b[2J";
        drawn_ = terminalSize();
        hasDrawn_ = true;
        std::vector<unsigned> rows = rowsOf(sheet.view);
        const std::size_t inSight = std::min(rows.size(), rowsInSight(sheet, out));
        rows.erase(rows.begin(), rows.end() - static_cast<std::ptrdiff_t>(inSight));
        out.inkedLine(clear + escaped(sheet.log.name) + ", followed until Ctrl-C");
        printTable({sheet.log, viewOf(sheet.log, rows), sheet.columns}, matched, args_, out);
    }

    void append(const Sheet& sheet, Printout& out) {
        const Log& log = sheet.log;
        const bool hasRows = log.rowCount() > 0;
        const std::size_t last = hasRows ? log.lineOf(log.rowCount() - 1) : 1;
        held_ = log.endsInLine ? concat(log.name, ":", std::to_string(last)) : std::string();
        // The names of the columns may not be whole either.
        if (log.endsInLine && !hasRows) return;
        new_.look(log);
        if (new_.hasOtherColumns()) layout_ = {};
        std::vector<unsigned> rows = rowsOf(sheet.view);
        std::erase_if(rows, [&](unsigned row) { return !new_.isNew(row); });
        const Sheet added{sheet.log, viewOf(sheet.log, rows), sheet.columns};
        if (wantsTable(args_)) {
            SheetTable(added, args_.has("wrap")).print(args_, out, layout_);
            return;
        }
        writeRows(added, wantedTarget(args_), out);
    }

    // One heading stands in front of all rows.
    void writeRows(const Sheet& sheet, Format target, Printout& out) const {
        if (target == Format::jsonl && sheet.rowCount() == 0) return;
        const WriteStyle style = styleFrom(args_, target);
        Losses losses;
        if (new_.hasOtherColumns() || target == Format::jsonl)
            writeSheet(sheet, target, style, out, losses);
        else
            addRows(sheet, target, style, out, losses);
        tellLosses(losses, out.name());
    }

    static void addRows(const Sheet& sheet, Format target, const WriteStyle& style, Printout& out,
                        Losses& losses) {
        std::string line;
        for (unsigned row = 0; row < sheet.rowCount(); ++row) {
            line.clear();
            addDelimitedRow(line, sheet, row, sheet.columns.size(),
                            target == Format::csv ? ',' : '\t', losses);
            out.write(line += bytesOf(style.lineEnd));
        }
    }

    const Args& args_;
    const Selection& selection_;
    TerminalSize drawn_;
    bool hasDrawn_ = false;
    NewRows new_;
    std::string held_;  // the place of a line that has no end
    GridLayout layout_;
};

int watch(const Args& args, const Selection& selection) {
    if (args.has("output") || args.has("guard-formulas")) {
        throw Failure{wrongUsage, "show: --watch takes no --output and no --guard-formulas"};
    }
    const std::string format = args.text("format", "table");
    if (format != "table" && format != "csv" && format != "tsv" && format != "jsonl") {
        throw Failure{wrongUsage,
                      "show: --watch prints table, csv, tsv or jsonl, which go on with "
                      "every row, not " +
                          format};
    }
    WatchedLog watched(args, selection);
    return follow(args.text("FILE"),
                  {[&] { return readGrowingLog(args); }, [&](const Log& log) { watched.show(log); },
                   [&] { return watched.isOutdated(); }, [&] { watched.tellHeld(); }});
}

void requireFitting(const Args& args) {
    requireStyleOf(args, wantsTable(args) ? "table" : formatName(wantedTarget(args)));
    if ((args.has("cards") || args.has("wrap")) && !wantsTable(args)) {
        throw Failure{wrongUsage, "show: --cards and --wrap are for --format table"};
    }
}

bool isPrintedJson(const Args& args) {
    return !args.has("output") && args.text("format") == "json";
}

// Of several logs each has its name above its rows. One document of another kind has room for one.
void requireTable(const Args& args) {
    if (args.has("watch")) throw Failure{wrongUsage, "show: --watch follows one log"};
    if (isForEyes(args) || isPrintedJson(args)) return;
    throw Failure{wrongUsage,
                  "show: several logs are shown as tables or --format json; vek find --every "
                  "prints their rows in one, in any format"};
}

void addRows(const Sheet& sheet, JsonWriter& json, const Output& out) {
    Losses losses;
    loseParameters(sheet.log, losses);
    JsonRows rows(sheet, losses);
    json.beginObject();
    json.text("file", sheet.log.name);
    json.beginArray("rows");
    std::string line;
    for (unsigned row = 0; row < sheet.rowCount(); ++row) {
        line = "{";
        rows.add(line, row);
        json.readyElement(line += '}');
    }
    json.end();
    json.end();
    tellLosses(losses, concat(sheet.log.name, " in ", out.name()));
}

int showEachAsJson(const Args& args, const Selection& selection) {
    bool hasMatches = false;
    const int result =
        tellEach(args, [&](const Log& log, const Args& one, Printout& out, JsonWriter* json) {
            const Selected selected = selectRows(log, selection);
            hasMatches = hasMatches || selected.matched > 0;
            addRows({log, selected.view, shownColumns(log, one)}, *json, out);
            return readingResult(log);
        });
    return narrows(selection) && !hasMatches ? std::max<int>(result, found) : result;
}

int showEach(const Args& args, const Selection& selection) {
    requireTable(args);
    if (isPrintedJson(args)) return showEachAsJson(args, selection);
    Printout out;
    bool hasMatches = false;
    bool isFirst = true;
    const int result = forEachLog(
        args,
        [&](const Args& one) {
            const Log log = readLog(one, "FILE", wantedRows(selection));
            out.renewLimit();
            const Selected selected = selectRows(log, selection);
            const Sheet sheet{log, selected.view, shownColumns(log, one)};
            if (!std::exchange(isFirst, false)) out.line("");
            out.inkedLine(inked(Ink::bold, escaped(log.name), screenOf(out, args)));
            printTable(sheet, selected.matched, one, out);
            hasMatches = hasMatches || selected.matched > 0;
            return readingResult(log);
        },
        [](const std::string&, const std::string&) {});
    out.close();
    return narrows(selection) && !hasMatches ? std::max<int>(result, found) : result;
}

// Whether anything of the log is not in what is written: rows, columns, or what its format keeps.
bool isLess(const Sheet& sheet, const Args& args) {
    return wantsTable(args) || wantedTarget(args) != sheet.log.format ||
           sheet.rowCount() < sheet.log.rowsInSource() ||
           sheet.columns.size() < sheet.log.columnCount();
}

int run(const Args& args) {
    Selection selection = selectionFrom(args);
    requireFitting(args);
    if (hasSeveral(args)) return showEach(args, selection);
    if (args.has("watch")) return watch(args, selection);
    // A table file says how long the values of all its rows are.
    bool isTableFile = !wantsTable(args) && wantedTarget(args) == Format::table;
    Wanted wanted = isTableFile ? Wanted() : wantedRows(selection);
    // The process ends with the command, and its memory with it, faster than row by row.
    Held held = holdInput({args.text("FILE")}, args.text("output"));
    static const Log& log = *new Log(readLog(args, "FILE", wanted));
    Selected selected = selectRows(log, selection);
    Sheet sheet{log, selected.view, shownColumns(log, args)};
    if (isLess(sheet, args)) {
        requireNoInput("show", {args.text("FILE")}, args.text("output"), "a part of it");
    }
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
        "map shows; files and other formats get all of them, unless --columns says which. Of "
        "several logs each is shown under its name, in its own order, or with --format json as one "
        "of the list files; vek find prints the rows of many in one table. Ends with 1 when "
        "nothing matched.",
        {{"vek show samples/docs.vek", "the whole log"},
         {"vek show samples/dailies.vek --where Scene=67 --sort Take --limit 5",
          "the first takes of a scene"},
         {"vek show samples/dailies.vek -w 'Take>=4' -w 'Notes~sound|boom' -c Name,Take,Notes",
          "both conditions, three columns"},
         {"vek show samples/dailies.vek --at 02:01:00:00", "the clips that hold a timecode"},
         {"vek show samples/docs.vek --cards --limit 1", "each value with its column's name"},
         {"vek show samples/docs.vek --tagged -o circled.csv", "the tagged rows, as a CSV file"}},
        {{"FILE", "a log, or - for standard input", false, true}},
        join(join(selectionOptions(),
                  {{"-c,--columns", "A,B", "these columns, in this order"},
                   {"--cards", "", "a card for each row, as on terminals of less than 60 columns"},
                   {"--wrap", "", "long cells take several lines instead of being cut"},
                   {"--watch", "",
                    "follow a file until Ctrl-C: a terminal shows the last rows that fit it anew, "
                    "a pipe gets the rows that were not there before"},
                   {"-a,--all", "", "all columns, whatever the field map says"},
                   {"-f,--format", "FORMAT", "what to print", false, printedFormats().c_str()},
                   {"-o,--output", "OUT", "write a file; its ending gives the format"},
                   fromOption()}),
             join(styleOptions(), screenOptions())),
        run,
    };
}

}  // namespace vek
