#include "formats/delimited/delimited_scanner.h"
#include "formats/reading/progress.h"
#include "formats/reading/readers.h"
#include "formats/reading/table_builder.h"

namespace vek::formats {

namespace {

bool isBlankLine(const std::vector<std::string_view>& cells) {
    return cells.size() == 1 && cells[0].empty();
}

}  // namespace

void readDelimited(Text text, char separator, Log& log) {
    TableBuilder builder(log, std::move(text.block));
    char* const begin = builder.text() + text.start;
    DelimitedScanner scanner(begin, builder.textEnd(), separator,
                             DelimitedScanner::Quotes::respected);
    if (scanner.atEnd()) {
        throw Failure{unreadable, log.name, {1, "", "nothing", "a line of column names", ""}};
    }
    builder.setColumns(asStrings(scanner.takeRecord()));
    builder.endHeading(scanner.place());
    Progress progress("reading " + log.name, builder.textSize());
    while (!scanner.atEnd()) {
        progress.reach(static_cast<std::size_t>(scanner.place() - begin));
        const std::size_t line = scanner.line();
        const std::vector<std::string_view>& cells = scanner.takeRecord();
        // An empty line is no row, but in a log of one column it is an empty cell.
        if (isBlankLine(cells) && builder.columnCount() > 1) continue;
        builder.addRow(line, cells, scanner.room());
    }
    if (scanner.openQuoteLine() != 0) {
        log.problems.push_back({scanner.openQuoteLine(), "", "a quote that is never closed",
                                "a closing quote", "everything behind it is in one cell"});
        if (log.source) log.source->endsOpen = true;
    }
    log.lineEnd = scanner.lineEnd();
    if (log.source) log.source->hasLoneReturns = scanner.sawLoneReturns();
    builder.finish();
}

}  // namespace vek::formats
