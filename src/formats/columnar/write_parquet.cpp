#include <algorithm>

#include "formats/columnar/duckdb_engine.h"
#include "formats/columnar/engine_names.h"
#include "formats/failure.h"
#include "formats/input/progress.h"
#include "formats/json/json.h"
#include "formats/writing/plain_lines.h"
#include "formats/writing/sheet_facts.h"
#include "formats/writing/write_formats.h"

// Every cell goes to the engine as a string of JSON under a name that needs no care, and it is told
// that all of them are texts: nothing is guessed, and no cell becomes a number, a day or a null.

namespace vek::formats {

namespace {

constexpr std::size_t piece = std::size_t{1} << 20;

std::string keyOf(std::size_t column) {
    return std::string("c").append(std::to_string(column));
}

std::vector<std::string> keysWithColons(std::size_t columns) {
    std::vector<std::string> keys;
    for (std::size_t i = 0; i < columns; ++i) {
        keys.push_back(concat(i == 0 ? "\"" : ",\"", keyOf(i), "\":"));
    }
    return keys;
}

// Collects lines for the engine, and knows the longest.
class EngineRows {
public:
    explicit EngineRows(ScratchFile& file) : file_(file) {}

    void add(std::string_view line) {
        longest_ = std::max(longest_, line.size());
        pending_ += line;
        if (pending_.size() >= piece) flush();
    }
    void end() { flush(); }
    std::size_t longest() const { return longest_; }

private:
    void flush() {
        file_.append(pending_);
        pending_.clear();
    }

    ScratchFile& file_;
    std::string pending_;
    std::size_t longest_ = 0;
};

void addRow(std::string& line, const Sheet& sheet, unsigned row,
            const std::vector<std::string>& keys, Losses& losses) {
    for (unsigned i = 0; i < keys.size(); ++i) {
        bool wasChanged = false;
        line += keys[i];
        addJsonString(line, sheet.cell(row, i), wasChanged);
        if (wasChanged) losses.add("cells that are no UTF-8", place(sheet, row, i));
    }
}

std::size_t writeRows(const Sheet& sheet, ScratchFile& file, Losses& losses) {
    const std::vector<std::string> keys = keysWithColons(sheet.columns.size());
    PlainJsonLines plain(sheet, keys);
    EngineRows rows(file);
    Progress progress(sheet.log.opening.watcher, "writing", sheet.rowCount());
    std::string line;
    for (unsigned row = 0; row < sheet.rowCount(); ++row) {
        progress.reach(row);
        const std::string_view plainLine = plain.line(row, "{", "}\n");
        if (plainLine.empty()) {
            line = "{";
            addRow(line, sheet, row, keys, losses);
            line += "}\n";
        }
        rows.add(plainLine.empty() ? line : plainLine);
    }
    rows.end();
    return rows.longest();
}

std::string statementFor(const std::vector<std::string>& names, std::size_t longestRow) {
    std::string chosen;
    std::string types;
    for (std::size_t i = 0; i < names.size(); ++i) {
        const std::string_view comma = i == 0 ? "" : ", ";
        chosen += concat(comma, keyOf(i), " AS ", sqlName(names[i]));
        types += concat(comma, keyOf(i), ": 'VARCHAR'");
    }
    return concat("COPY (SELECT ", chosen, " FROM read_json('/dev/fd/0', ",
                  "format = 'newline_delimited', compression = 'uncompressed', ",
                  "maximum_object_size = ", std::to_string(std::max(longestRow + 1, piece)),
                  ", columns = {", types, "})) TO '/dev/fd/4' ",
                  "(FORMAT parquet, USE_TMP_FILE false);\n");
}

}  // namespace

void writeParquet(const Sheet& sheet, Output& out, Losses& losses) {
    requireColumns(sheet, out.name());
    loseParameters(sheet.log, losses);
    EngineFiles files;
    files.require(out.name());
    const std::vector<std::string> names = namesForEngines(sheet, losses);
    const std::size_t longest = writeRows(sheet, files.rows, losses);
    files.require(out.name());
    runDuckDb(statementFor(names, longest), files, out.name());
    handOn(files.made, "PAR1", "DuckDB", out);
}

}  // namespace vek::formats
