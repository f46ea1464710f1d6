#include <algorithm>
#include <cstring>
#include <set>

#include <vekdb/host/text_util.h>
#include "formats/columnar/duckdb_engine.h"
#include "formats/failure.h"
#include "formats/json/json.h"
#include "formats/reading/progress.h"
#include "formats/text/letters.h"
#include "formats/text/width.h"
#include "formats/writing/plain_lines.h"
#include "formats/writing/sheet_facts.h"
#include "formats/writing/write_formats.h"

// Every cell goes to the engine as a string of JSON under a name that needs no care, and it is told
// that all of them are texts: nothing is guessed, and no cell becomes a number, a day or a null.

namespace vek::formats {

namespace {

constexpr std::size_t piece = std::size_t{1} << 20;
constexpr std::string_view mark = "PAR1";  // in front of a Parquet file and at its end

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

std::string lowerOf(std::string_view name) {
    std::string lower;
    addLower(lower, name);
    return lower;
}

// A name that is some text, and UTF-8.
std::string textualName(const std::string& name, std::size_t place, Losses& losses) {
    if (name.empty()) {
        const std::string made = concat("Column ", std::to_string(place + 1));
        losses.add("columns without a name, given one", made);
        return made;
    }
    if (isUtf8(name)) return name;
    losses.add("column names that are no UTF-8", inQuotes(name));
    return std::string(toUTF8(fromUTF8(LightweightString<char>(name.c_str()))).view());
}

// Engines do not tell capitals from other letters in names.
std::vector<std::string> namesForEngines(const Sheet& sheet, Losses& losses) {
    std::vector<std::string> names;
    std::set<std::string> used;
    for (const std::string& distinct : distinctNames(sheet, losses)) {
        const std::string name = textualName(distinct, names.size(), losses);
        std::string tried = name;
        for (unsigned n = 2; !used.insert(lowerOf(tried)).second; ++n) {
            tried = concat(name, " ", std::to_string(n));
        }
        if (tried != name) {
            losses.add("columns whose names differ in capitals alone, given a number",
                       inQuotes(name));
        }
        names.push_back(tried);
    }
    return names;
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

void requireFiles(EngineFiles& files, const std::string& output) {
    for (const ScratchFile* file : {&files.rows, &files.messages, &files.order, &files.made}) {
        if (file->error() == 0) continue;
        throw Failure{unwritable,
                      output,
                      {0, "", concat("no temporary file: ", std::strerror(file->error())), "",
                       "make room in the folder for temporary files"}};
    }
}

// What the engine made, whole as far as its marks say.
void handOn(ScratchFile& made, Output& out) {
    std::string bytes(piece, '\0');
    std::string last;
    std::uint64_t at = 0;
    while (const std::size_t size = made.read(at, bytes.data(), bytes.size())) {
        const std::string_view read(bytes.data(), size);
        if (at == 0 && !read.starts_with(mark)) break;
        out.write(read);
        last = concat(last, read.substr(size - std::min(size, mark.size())));
        last.erase(0, last.size() - std::min(last.size(), mark.size()));
        at += size;
    }
    if (made.error() == 0 && last == mark) return;
    throw Failure{unwritable, out.name(), {0, "", "DuckDB made no whole file", "", ""}};
}

}  // namespace

void writeParquet(const Sheet& sheet, Output& out, Losses& losses) {
    if (sheet.columns.empty()) {
        throw Failure{unwritable, out.name(), {0, "", "no columns", "a column at least", ""}};
    }
    loseParameters(sheet.log, losses);
    EngineFiles files;
    requireFiles(files, out.name());
    const std::vector<std::string> names = namesForEngines(sheet, losses);
    const std::size_t longest = writeRows(sheet, files.rows, losses);
    requireFiles(files, out.name());
    runDuckDb(statementFor(names, longest), files, out.name());
    handOn(files.made, out);
}

}  // namespace vek::formats
