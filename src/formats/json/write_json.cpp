#include "formats/input/progress.h"
#include "formats/json/json.h"
#include "formats/writing/plain_lines.h"
#include "formats/writing/sheet_facts.h"
#include "formats/writing/write_formats.h"

namespace vek::formats {

namespace {

// `before` stands in front of each cell: its name and what separates it.
void addJsonRow(std::string& line, const Sheet& sheet, unsigned row,
                const std::vector<std::string>& before, Losses& losses) {
    for (unsigned i = 0; i < before.size(); ++i) {
        bool wasChanged = false;
        line += before[i];
        addJsonString(line, sheet.cell(row, i), wasChanged);
        if (wasChanged) losses.add("cells that are no UTF-8", place(sheet, row, i));
    }
}

}  // namespace

void writeJson(const Sheet& sheet, bool asLines, Output& out, Losses& losses) {
    loseParameters(sheet.log, losses);
    std::vector<std::string> names;
    for (const std::string& name : distinctNames(sheet, losses)) {
        bool wasChanged = false;
        names.push_back((names.empty() ? "" : ", ") + jsonName(name, wasChanged) + ": ");
        if (wasChanged) losses.add("column names that are no UTF-8", inQuotes(name));
    }
    if (sheet.rowCount() == 0) loseNames(sheet.log, sheet.columns, losses);
    if (!asLines) out.line("[");
    PlainJsonLines plain(sheet, names);
    Progress progress(sheet.log.opening.watcher, "writing", sheet.rowCount());
    const std::string_view begin = asLines ? "{" : "  {";
    std::string line;
    for (unsigned row = 0; row < sheet.rowCount(); ++row) {
        progress.reach(row);
        const bool isLast = row + 1 == sheet.rowCount();
        const std::string_view end = asLines || isLast ? "}\n" : "},\n";
        const std::string_view plainLine = plain.line(row, begin, end);
        if (!plainLine.empty()) {
            out.write(plainLine);
            continue;
        }
        line = begin;
        addJsonRow(line, sheet, row, names, losses);
        out.write(line += end);
    }
    if (!asLines) out.line("]");
}

}  // namespace vek::formats
