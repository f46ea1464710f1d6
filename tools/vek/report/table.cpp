#include "tools/vek/report/table.h"

#include <algorithm>

#include "formats/failure.h"
#include "formats/text/width.h"
#include "tools/vek/cli/fitting.h"
#include "tools/vek/report/markup.h"

namespace vek::page {

namespace {

constexpr std::size_t longestPlainCell = 400;
constexpr std::size_t roomOfTable = 150;  // in characters, of a large window

std::size_t pixelsOf(std::size_t characters) {
    constexpr double ofCharacter = 7.6;
    constexpr double padding = 24;
    return static_cast<std::size_t>(static_cast<double>(characters) * ofCharacter + padding);
}

std::vector<std::size_t> naturalWidths(const LogOnPage& log, unsigned rows) {
    std::vector<std::size_t> widths;
    for (unsigned column : log.shown()) {
        std::size_t width = displayWidth(escaped(log.log().columnName(column)));
        for (unsigned row = 0; row < rows; ++row) {
            const std::string_view cell = log.log().cell(row, column);
            if (cell.size() > width) width = std::max(width, displayWidth(escaped(cell)));
        }
        widths.push_back(width);
    }
    return widths;
}

// How wide the columns are where no script runs, as `vek show` fits them; a hint to the browser,
// which cuts nothing. A table that is wider than paper is printed in several lines a row.
void writeBegin(const LogOnPage& log, unsigned rows, Output& out) {
    std::vector<std::size_t> widths = fittedWidths(naturalWidths(log, rows), roomOfTable);
    const bool isWide = widths.size() < log.shown().size();
    widths.resize(log.shown().size(), narrowestColumn);
    std::string line = isWide ? "<table class=\"wide\">\n" : "<table>\n";
    line += "<colgroup><col>";
    for (std::size_t width : widths) {
        line += concat("<col width=\"", std::to_string(pixelsOf(width)), "\">");
    }
    out.write(line + "</colgroup>\n");
}

// The end tags that HTML does without are left out: there is one for each cell.
void writeHeading(const LogOnPage& log, Output& out) {
    out.write("<thead><tr><th scope=\"col\">#");
    for (unsigned column : log.shown()) {
        out.write("<th scope=\"col\">" + asText(log.log().columnName(column)));
    }
    out.write("</thead>\n<tbody>\n");
}

void addRow(std::string& line, const LogOnPage& log, unsigned row) {
    const bool isTagged = log.isTagged(row);
    line += concat("<tr id=", log.anchorOfRow(row), isTagged ? " class=tagged>" : ">",
                   "<th scope=row>", std::to_string(log.log().numberOf(row)),
                   isTagged ? " <abbr title=tagged>\xE2\x98\x85</abbr>" : "");
    for (unsigned column : log.shown()) {
        line += "<td>";
        addShortText(line, log.log().cell(row, column), longestPlainCell);
    }
    line += "</tr>\n";
}

std::string partOf(std::size_t some, std::size_t all, const char* what) {
    return concat(std::to_string(some), " of ", counted(all, what));
}

std::string noteOf(const LogOnPage& log, unsigned rows) {
    std::string parts;
    if (rows < log.rowCount()) parts = partOf(rows, log.rowCount(), "row");
    if (log.isCut()) {
        parts += parts.empty() ? "" : " and ";
        parts += partOf(log.shown().size(), log.log().columnCount(), "column");
    }
    if (parts.empty()) return {};
    return concat("<p class=\"note rows-note\">The first ", parts,
                  " stand here; where scripts may run, all do.</p>\n");
}

}  // namespace

void writeTable(const LogOnPage& log, Output& out) {
    const std::string id = "table-" + std::to_string(log.number());
    const unsigned rows = std::min(log.rowCount(), mostPlainRows);
    out.write(concat(
        "<section class=\"table\">\n<h3 id=\"", id, "\">Rows</h3>\n", noteOf(log, rows),
        "<div class=\"rows\" tabindex=\"0\" role=\"region\" aria-labelledby=\"", id, "\">\n"));
    writeBegin(log, rows, out);
    writeHeading(log, out);
    std::string line;
    for (unsigned row = 0; row < rows; ++row) {
        line.clear();
        addRow(line, log, row);
        out.write(line);
    }
    out.write("</table></div>\n</section>\n");
}

}  // namespace vek::page
