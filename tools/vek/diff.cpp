#include "formats/comparing/compare.h"
#include "formats/json/json.h"
#include "formats/text/shown.h"
#include "formats/text/width.h"
#include "formats/writing/sheet_facts.h"
#include "tools/vek/cli/grid.h"
#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/reading_options.h"
#include "tools/vek/cli/say.h"
#include "tools/vek/cli/telling.h"
#include "tools/vek/commands.h"

namespace vek {

namespace {

std::string joinedNames(const Log& log, const std::vector<unsigned>& columns) {
    std::string out;
    for (unsigned column : columns) out += (out.empty() ? "" : ", ") + log.columnName(column);
    return out;
}

// Prints differences as a person reads them: what went, what came, and cells that changed.
class DifferencePrinter {
public:
    DifferencePrinter(const LogComparison& found, Printout& out, const Screen& screen)
        : found_(found), out_(out), screen_(screen), a_(found.a), b_(found.b) {}

    void print() {
        printColumns("columns only in ", found_.a, found_.onlyInA, Ink::red, '-');
        printColumns("columns only in ", found_.b, found_.onlyInB, Ink::green, '+');
        for (const DifferingRow& difference : found_.rows) printRow(difference);
    }

private:
    void printColumns(const char* what, const Log& log, const std::vector<unsigned>& columns,
                      Ink ink, char sign) {
        if (columns.empty()) return;
        out_.inkedLine(inked(ink,
                             sign + std::string(" ") + what + escaped(log.name) + ": " +
                                 escaped(joinedNames(log, columns)),
                             screen_));
    }

    // A log whose rows are shown, and what stands in front of each of its cells.
    struct Side {
        explicit Side(const Log& log) : log(log), cells(log.columnCount()) {
            for (const std::string& name : log.columnNames())
                before.push_back(concat(" ", name, "="));
        }

        const Log& log;
        std::vector<std::string> before;
        std::vector<std::string_view> cells;  // of the row that is being shown
    };

    void printRow(const DifferingRow& difference) {
        switch (difference.kind) {
            case DifferingRow::removed:
                return printWhole(a_, difference.a, Ink::red, '-');
            case DifferingRow::added:
                return printWhole(b_, difference.b, Ink::green, '+');
            case DifferingRow::changed:
                return printChanged(difference);
        }
    }

    void printWhole(Side& side, unsigned row, Ink ink, char sign) {
        line_ = sign;
        addPlace(side.log, row);
        line_ += ':';
        side.log.cells(row, side.cells);
        for (std::size_t i = 0; i < side.cells.size(); ++i) {
            if (side.cells[i].empty()) continue;
            line_ += side.before[i];
            addInQuotes(line_, side.cells[i]);
        }
        escape(line_);
        printLine(ink);
    }

    void printChanged(const DifferingRow& difference) {
        line_ = '~';
        addPlace(found_.a, difference.a);
        line_ += " ->";
        addPlace(found_.b, difference.b);
        if (const std::string key = found_.keyOf(difference); !key.empty()) {
            line_ += " (";
            addInQuotes(line_, key);
            line_ += ')';
        }
        escape(line_);
        printLine(Ink::plain);
        found_.forEachCell(difference, [&](const DifferingCell& cell) { printCell(cell); });
    }

    void printCell(const DifferingCell& cell) {
        line_ = "    ";
        line_ += escaped(found_.a.columnName(cell.columns.a));
        line_ += ": ";
        line_ += inked(Ink::red, escaped(inQuotes(cell.before)), screen_);
        line_ += " -> ";
        line_ += inked(Ink::green, escaped(inQuotes(cell.after)), screen_);
        printLine(Ink::plain);
    }

    void addPlace(const Log& log, unsigned row) {
        line_ += ' ';
        line_ += log.name;
        line_ += ':';
        line_ += std::to_string(log.lineOf(row));
    }

    void printLine(Ink ink) {
        const bool isPlain = ink == Ink::plain || !screen_.hasColor;
        isPlain ? out_.inkedLine(line_) : out_.inkedLine(inked(ink, line_, screen_));
    }

    const LogComparison& found_;
    Printout& out_;
    const Screen& screen_;
    Side a_;
    Side b_;
    std::string line_;  // that is being made
};

// The names of a log's columns as JSON has them, each once: an object has a name but once.
std::vector<std::string> jsonNames(const Log& log) {
    Losses ignored;
    std::vector<std::string> names = distinctNames(wholeSheet(log), ignored);
    for (std::string& name : names) name = jsonString(name);
    return names;
}

// Prints one document for programs, a line for each row that differs.
class DifferenceJson {
public:
    DifferenceJson(const LogComparison& found, Printout& out)
        : found_(found), out_(out), namesA_(jsonNames(found.a)), namesB_(jsonNames(found.b)) {}

    void print() {
        out_.line("{");
        out_.line("  \"columnsRemoved\": " + listed(namesA_, found_.onlyInA) + ",");
        out_.line("  \"columnsAdded\": " + listed(namesB_, found_.onlyInB) + ",");
        out_.line("  \"rows\": [");
        for (std::size_t i = 0; i < found_.rows.size(); ++i) {
            const bool isLast = i + 1 == found_.rows.size();
            out_.line("    " + difference(found_.rows[i]) + (isLast ? "" : ","));
        }
        out_.line("  ]\n}");
    }

private:
    static std::string listed(const std::vector<std::string>& names,
                              const std::vector<unsigned>& columns) {
        std::string out = "[";
        for (unsigned column : columns) out += (out.size() == 1 ? "" : ", ") + names[column];
        return out + "]";
    }

    static std::string row(const Log& log, unsigned row, const std::vector<std::string>& names) {
        std::string out = "{";
        for (unsigned i = 0; i < log.columnCount(); ++i) {
            out += concat(i == 0 ? "" : ", ", names[i], ": ", jsonString(log.cell(row, i)));
        }
        return out + "}";
    }

    std::string cells(const DifferingRow& difference) const {
        std::string out = "[";
        found_.forEachCell(difference, [&](const DifferingCell& cell) {
            out += concat(out.size() == 1 ? "" : ", ", "{\"column\": ", namesA_[cell.columns.a],
                          ", \"before\": ", jsonString(cell.before),
                          ", \"after\": ", jsonString(cell.after), "}");
        });
        return out + "]";
    }

    std::string whole(const char* kind, const Log& log, unsigned place,
                      const std::vector<std::string>& names) const {
        return concat("{\"kind\": \"", kind, "\", \"line\": ", std::to_string(log.lineOf(place)),
                      ", \"row\": ", row(log, place, names), "}");
    }

    std::string difference(const DifferingRow& one) const {
        switch (one.kind) {
            case DifferingRow::removed:
                return whole("removed", found_.a, one.a, namesA_);
            case DifferingRow::added:
                return whole("added", found_.b, one.b, namesB_);
            default:
                return concat(
                    "{\"kind\": \"changed\", \"line\": ", std::to_string(found_.a.lineOf(one.a)),
                    ", \"lineAfter\": ", std::to_string(found_.b.lineOf(one.b)),
                    ", \"key\": ", jsonString(found_.keyOf(one)), ", \"cells\": ", cells(one), "}");
        }
    }

    const LogComparison& found_;
    Printout& out_;
    std::vector<std::string> namesA_;
    std::vector<std::string> namesB_;
};

std::string summary(const LogComparison& found) {
    std::size_t counts[3] = {};
    for (const DifferingRow& difference : found.rows) ++counts[difference.kind];
    return counted(counts[DifferingRow::removed], "row") + " removed, " +
           std::to_string(counts[DifferingRow::added]) + " added, " +
           std::to_string(counts[DifferingRow::changed]) + " changed";
}

int run(const Args& args) {
    if (args.text("A") == "-" && args.text("B") == "-") {
        throw Failure{wrongUsage, "diff: standard input can be one of the two logs, not both"};
    }
    if (args.has("key") && args.text("key").empty()) {
        throw Failure{wrongUsage, "diff: --key needs the name of a column"};
    }
    Log a = readLog(args, "A");
    Log b = readLog(args, "B");
    tellSharedOptions(a, b, args);
    LogComparison found = compareLogs(a, b, args.text("key"));
    for (const std::string& note : found.notes) say(note);
    if (found.moreNotes > 0) say(std::to_string(found.moreNotes) + " more like these");
    Printout out;
    if (tellsJson(args)) {
        DifferenceJson(found, out).print();
    } else {
        Screen screen = screenOf(out, args);
        DifferencePrinter(found, out, screen).print();
        if (!found.isEmpty()) out.inkedLine(inked(Ink::faint, summary(found), screen));
    }
    out.close();
    return found.isEmpty() ? done : vek::found;
}

}  // namespace

Command diffCommand() {
    return {
        "diff",
        "tell how two logs differ, cell by cell",
        "Tells which rows are only in A (-), only in B (+), and which cells of the others changed "
        "(~). With --key, rows belong together whose key is the same, wherever they stand; "
        "without, rows are matched in their order. Columns go by their names; parameters are not "
        "compared. Ends with 1 when the logs differ.",
        {{"vek diff old.vek new.vek", "rows in their order"},
         {"vek diff old.vek new.csv --key Name", "rows by their name, in any order and format"},
         {"vek diff old.vek new.vek --key Reel,'Start time'", "by two columns together"},
         {"vek diff old.vek new.vek --format json", "for a program"}},
        {{"A", "a log, or - for standard input"}, {"B", "another"}},
        join({{"-k,--key", "A,B", "rows with the same values here belong together"},
              tellingOption(),
              fromOption()},
             screenOptions()),
        run,
    };
}

}  // namespace vek
