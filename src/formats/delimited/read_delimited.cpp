#include "formats/delimited/delimited_scanner.h"
#include "formats/delimited/delimiters.h"
#include "formats/reading/progress.h"
#include "formats/reading/readers.h"
#include "formats/reading/table_builder.h"
#include "formats/text/text_lines.h"

namespace vek::formats {

namespace {

bool isBlankLine(const std::vector<std::string_view>& cells) {
    return cells.size() == 1 && cells[0].empty();
}

// Passes over the lines that a person says stand in front of the heading.
std::size_t skipLines(std::string_view text, Log& log) {
    const std::size_t wanted = log.opening.wishes.skippedLines;
    LineWalk walk(text);
    std::string_view line;
    while (walk.number() < wanted && walk.next(line)) {
    }
    const std::size_t size = text.size() - walk.rest().size();
    if (wanted == 0) return 0;
    log.form.skipped = text.substr(0, size);
    return size;
}

char delimiterOf(std::string_view text, char usual, Log& log) {
    const char wish = log.opening.wishes.delimiter;
    const char delimiter = wish != '\0' ? wish : foundDelimiter(text, true, usual);
    if (delimiter != usual) log.form.delimiter = delimiter;
    return delimiter;
}

// Without a heading the columns are numbered as far as the first row reaches.
void readHeading(DelimitedScanner& scanner, TableBuilder& builder, Log& log) {
    const std::size_t line = scanner.line();
    const char* const begin = scanner.place();
    const std::vector<std::string_view>& cells = scanner.takeRecord();
    builder.requireColumns(cells.size());
    log.form.hasNoHeading = log.opening.wishes.hasNoHeading;
    builder.endHeading(log.form.hasNoHeading ? begin : scanner.place());
    if (!log.form.hasNoHeading) return builder.setColumns(asStrings(cells));
    std::vector<std::string> names;
    for (std::size_t i = 0; i < cells.size(); ++i) names.push_back(numberedColumnName(i));
    builder.setColumns(std::move(names));
    builder.addRow(line, cells, scanner.room());
}

}  // namespace

void readDelimited(Text text, char separator, Log& log) {
    text.start += skipLines(text.view(), log);
    const char delimiter = delimiterOf(text.view(), separator, log);
    TableBuilder builder(log, std::move(text.block));
    char* const begin = builder.text() + text.start;
    DelimitedScanner scanner(begin, builder.textEnd(), delimiter,
                             DelimitedScanner::Quotes::respected,
                             1 + log.opening.wishes.skippedLines);
    if (scanner.atEnd()) {
        throw Failure{
            unreadable, log.name, {scanner.line(), "", "nothing", "a line of column names", ""}};
    }
    readHeading(scanner, builder, log);
    Progress progress(log.opening.watcher, "reading " + log.name, builder.textSize());
    while (!scanner.atEnd()) {
        progress.reach(static_cast<std::size_t>(scanner.place() - begin));
        const std::size_t line = scanner.line();
        const std::vector<std::string_view>& cells = scanner.takeRecord();
        // An empty line is no row, but in a log of one column it is an empty cell.
        if (isBlankLine(cells) && builder.columnCount() > 1) continue;
        builder.addRow(line, cells, scanner.room());
    }
    if (scanner.openQuoteLine() != 0) {
        log.report([&]() -> Problem {
            return {scanner.openQuoteLine(), "", "a quote that is never closed", "a closing quote",
                    "everything behind it is in one cell"};
        });
        if (log.source) log.source->endsOpen = true;
    }
    log.lineEnd = scanner.lineEnd();
    if (log.source) log.source->hasLoneReturns = scanner.sawLoneReturns();
    builder.finish();
}

}  // namespace vek::formats
