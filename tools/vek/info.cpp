#include <array>

#include "formats/formats.h"
#include "formats/reading/delimiters.h"
#include "formats/text/text_lines.h"
#include "formats/text/width.h"
#include "formats/writing/sheet_facts.h"
#include "tools/vek/cli/each_log.h"
#include "tools/vek/cli/grid.h"
#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/telling.h"
#include "tools/vek/commands.h"

namespace vek {

namespace {

// What a column holds.
struct ColumnFacts {
    std::size_t filled = 0;
    std::size_t widest = 0;
    std::string example;
};

std::vector<ColumnFacts> factsOf(const Log& log) {
    std::vector<ColumnFacts> facts(log.columnCount());
    std::vector<std::string_view> cells(facts.size());
    for (unsigned row = 0; row < log.rowCount(); ++row) {
        log.cells(row, cells);
        for (std::size_t i = 0; i < cells.size(); ++i) {
            if (cells[i].empty()) continue;
            if (facts[i].filled++ == 0) facts[i].example = cells[i];
            facts[i].widest = std::max(facts[i].widest, cells[i].size());
        }
    }
    return facts;
}

std::string typeName(DBFieldTypes::eType type) {
    const char* name = vekdb_fieldtype_to_string(type);
    if (name != nullptr) return name;
    return std::string(1, static_cast<char>(type));
}

using Row = std::array<std::string, 6>;

Row describe(const Log& log, unsigned column, const ColumnFacts& facts) {
    return {std::to_string(column + 1),
            log.columnName(column),
            typeName(log.table->get_field_type(column)),
            std::to_string(facts.filled),
            std::to_string(facts.widest),
            facts.example};
}

void printFact(const std::string& name, const std::string& value, Printout& out) {
    out.line(name + std::string(12 - std::min<std::size_t>(11, name.size()), ' ') + escaped(value));
}

std::size_t linesInFront(const TextForm& form) {
    LineWalk walk(form.skipped);
    for (std::string_view line; walk.next(line);) {
    }
    return walk.number();
}

const char* lineEndName(LineEnd end) {
    return end == LineEnd::crlf ? "CR and LF" : "CR";
}

// How the bytes are written, where that is not the usual way.
void printForm(const Log& log, Printout& out) {
    const TextForm& form = log.form;
    if (!log.sheet.empty()) printFact("Sheet", log.sheet, out);
    if (form.isPacked) printFact("Packed", "gzip", out);
    if (!form.encoding.empty()) printFact("Encoding", form.encoding, out);
    if (log.beganWithMark) printFact("Mark", "in front", out);
    if (form.delimiter != '\0') printFact("Delimiter", delimiterName(form.delimiter), out);
    if (!form.skipped.empty()) printFact("Skipped", counted(linesInFront(form), "line"), out);
    if (form.hasNoHeading) printFact("Heading", "none", out);
    if (log.lineEnd != LineEnd::lf) printFact("Line ends", lineEndName(log.lineEnd), out);
}

std::size_t problemsOf(const Log& log) {
    return log.problems.size() + log.moreProblems + (log.notRead.empty() ? 0 : 1);
}

void printFacts(const Log& log, Printout& out) {
    VDBView view(log.table.get());
    view->setupViewTagsFromVekdbTagField();
    printFact("File", log.name, out);
    std::string format = formatName(log.format);
    if (log.format == Format::table) {
        format += ", revision " + std::to_string(log.table->get_revision());
    }
    printFact("Format", format, out);
    printForm(log, out);
    printFact("Rows", std::to_string(log.rowCount()), out);
    printFact("Tagged", std::to_string(view->get_num_tags()), out);
    printFact("Columns", std::to_string(log.columnCount()), out);
    for (const ParameterText& parameter : ownParameters(log)) {
        printFact("Parameter", parameter.name + ": " + parameter.value, out);
    }
    std::string map = log.parameter("V5_FIELD_MAP");
    if (!map.empty()) printFact("Field map", map, out);
    printFact("Problems", std::to_string(problemsOf(log)), out);
    out.line("");
}

void addColumns(const Log& log, JsonWriter& json) {
    const std::vector<ColumnFacts> all = factsOf(log);
    json.beginArray("columns");
    for (unsigned column = 0; column < log.columnCount(); ++column) {
        const ColumnFacts& facts = all[column];
        json.beginRow();
        json.text("name", log.columnName(column));
        json.text("type", typeName(log.table->get_field_type(column)));
        json.number("filled", facts.filled);
        json.number("widest", facts.widest);
        json.text("example", facts.example);
        json.end();
    }
    json.end();
}

void addParameters(const Log& log, JsonWriter& json) {
    json.beginArray("parameters");
    for (const ParameterText& parameter : ownParameters(log)) {
        json.beginRow();
        json.text("name", parameter.name);
        json.text("value", parameter.value);
        json.end();
    }
    json.end();
}

// What is the usual is nothing to tell.
void addForm(const Log& log, JsonWriter& json) {
    const TextForm& form = log.form;
    json.textOrNothing("packed", form.isPacked ? "gzip" : "");
    json.textOrNothing("encoding", form.encoding);
    json.textOrNothing("delimiter", std::string(form.delimiter != '\0', form.delimiter));
    const bool hasBoth = log.lineEnd == LineEnd::crlf;
    json.textOrNothing("lineEnds", hasBoth ? "crlf" : log.lineEnd == LineEnd::cr ? "cr" : "");
    json.flag("mark", log.beganWithMark);
    json.number("linesInFront", linesInFront(form));
    json.flag("heading", !form.hasNoHeading);
}

void addJson(const Log& log, JsonWriter& json) {
    VDBView view(log.table.get());
    view->setupViewTagsFromVekdbTagField();
    json.beginObject();
    json.text("file", log.name);
    json.text("format", formatName(log.format));
    json.numberOrNothing("revision", log.format == Format::table
                                         ? static_cast<std::size_t>(log.table->get_revision())
                                         : 0);
    json.textOrNothing("sheet", log.sheet);
    addForm(log, json);
    json.number("rows", log.rowCount());
    json.number("tagged", view->get_num_tags());
    addParameters(log, json);
    json.textOrNothing("fieldMap", log.parameter("V5_FIELD_MAP"));
    json.number("problems", problemsOf(log));
    addColumns(log, json);
    json.end();
}

void printText(const Log& log, const Args& args, Printout& out) {
    printFacts(log, out);
    std::vector<Row> rows;
    const std::vector<ColumnFacts> facts = factsOf(log);
    for (unsigned i = 0; i < log.columnCount(); ++i) rows.push_back(describe(log, i, facts[i]));
    Grid grid;
    grid.columns = {{"#", true, true}, {"Column"},       {"Type"},
                    {"Filled", true},  {"Widest", true}, {"Example"}};
    grid.rowCount = rows.size();
    grid.cell = [&](std::size_t row, std::size_t column) -> std::string_view {
        return rows[row][column];
    };
    printGrid(grid, screenOf(out, args), out);
}

int tellInfo(const Log& log, const Args& args, Printout& out, JsonWriter* json) {
    if (json != nullptr)
        addJson(log, *json);
    else
        printText(log, args, out);
    return readingResult(log);
}

int infoOfOne(const Args& args) {
    const Log log = readLog(args);
    Printout out;
    JsonWriter json(out);
    const int result = tellInfo(log, args, out, tellsJson(args) ? &json : nullptr);
    out.close();
    return result;
}

int run(const Args& args) {
    return hasSeveral(args) ? tellEach(args, tellInfo) : infoOfOne(args);
}

}  // namespace

Command infoCommand() {
    return {
        "info",
        "tell what a log holds: parameters, columns, rows, problems",
        "Tells the format and revision, parameters, rows and tagged rows, the field map, and for "
        "each column its type, how many cells are filled, the widest value in bytes and an "
        "example. Problems that reading found are told on standard error; ends with 1 when the "
        "file was damaged, with 3 when one could not be read. Of several logs the others are told "
        "of all the same; as json they stand in the list files of one object.",
        {{"vek info samples/docs.vek", "about a table file"},
         {"vek convert samples/docs.vek - --to csv | vek info -", "about a pipe"},
         {"vek info samples/docs.vek --format json", "for a program"},
         {"vek info samples/*.vek", "about several"}},
        {{"FILE", "a log, or - for standard input", false, true}},
        join({tellingOption(), fromOption()}, screenOptions()),
        run,
    };
}

}  // namespace vek
