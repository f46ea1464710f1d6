#include "formats/input/progress.h"
#include "formats/json/json.h"
#include "formats/json/json_rows.h"
#include "formats/writing/plain_lines.h"
#include "formats/writing/sheet_facts.h"
#include "formats/writing/write_formats.h"

namespace vek::formats {

void writeJson(const Sheet& sheet, bool asLines, Output& out, Losses& losses) {
    loseParameters(sheet.log, losses);
    JsonRows rows(sheet, losses);
    if (sheet.rowCount() == 0) loseNames(sheet.log, sheet.columns, losses);
    if (!asLines) out.line("[");
    const bool mayBePlain = !sheet.log.bare.areAny();
    PlainJsonLines plain(sheet, rows.fronts());
    Progress progress(sheet.log.opening.watcher, "writing", sheet.rowCount());
    const std::string_view begin = asLines ? "{" : "  {";
    std::string line;
    for (unsigned row = 0; row < sheet.rowCount(); ++row) {
        progress.reach(row);
        const bool isLast = row + 1 == sheet.rowCount();
        const std::string_view end = asLines || isLast ? "}\n" : "},\n";
        const std::string_view plainLine =
            mayBePlain ? plain.line(row, begin, end) : std::string_view();
        if (!plainLine.empty()) {
            out.write(plainLine);
            continue;
        }
        line = begin;
        rows.add(line, row);
        out.write(line += end);
    }
    if (!asLines) out.line("]");
}

}  // namespace vek::formats
