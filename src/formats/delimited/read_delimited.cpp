#include <algorithm>

#include "formats/delimited/delimited_scanner.h"
#include "formats/delimited/text_quotes.h"
#include "formats/input/progress.h"
#include "formats/reading/delimiters.h"
#include "formats/reading/lines_in_front.h"
#include "formats/reading/readers.h"
#include "formats/reading/table_builder.h"
#include "formats/text/text_lines.h"

namespace vek::formats {

namespace {

bool isBlankLine(const std::vector<std::string_view>& cells) {
    return cells.size() == 1 && cells[0].empty();
}

std::size_t skipLines(std::string_view text, std::size_t wanted, Log& log) {
    const std::size_t size = text.size() - behindLines(text, wanted).size();
    log.form.skipped = text.substr(0, size);
    return size;
}

char delimiterOf(std::string_view text, std::optional<char> named, char usual, Log& log) {
    const char delimiter = delimiterFor(text, named, usual, log);
    if (delimiter != usual) log.form.delimiter = delimiter;
    return delimiter;
}

// A single name over rows of several cells is hardly a heading. Answers how many cells those have,
// 0 where nothing was told.
std::size_t reportLineInFront(std::string_view text, char delimiter, std::size_t line, Log& log) {
    if (hasSeveralCells(text, delimiter) || log.opening.wishes.hasNoHeading) return 0;
    const std::size_t cells = cellsBehindFirstLine(text);
    if (cells == 0) return 0;
    log.report([&]() -> Problem {
        return {line, "", concat("a heading of one name over rows of ", std::to_string(cells)),
                "a name for each column",
                "it is read as the heading; lines in front of one can be passed over"};
    });
    return cells;
}

// How many columns it has. Without a heading they are numbered as far as the first row reaches.
std::size_t readHeading(DelimitedScanner& scanner, TableBuilder& builder, Log& log) {
    const std::size_t line = scanner.line();
    const char* const begin = scanner.place();
    const std::vector<std::string_view>& cells = scanner.takeRecord();
    builder.requireColumns(cells.size());
    log.form.hasNoHeading = log.opening.wishes.hasNoHeading;
    builder.endHeading(log.form.hasNoHeading ? begin : scanner.place());
    const std::size_t count = cells.size();
    if (!log.form.hasNoHeading) {
        builder.setColumns(asStrings(cells));
        return count;
    }
    std::vector<std::string> names;
    for (std::size_t i = 0; i < count; ++i) names.push_back(numberedColumnName(i));
    builder.setColumns(std::move(names));
    builder.addRow(line, cells, scanner.room());
    return count;
}

// In a file that was written without quotes being doubled, a cell can end where nobody meant it to.
void reportStrayText(DelimitedScanner& scanner, char delimiter, const TableBuilder& builder,
                     Log& log) {
    if (!scanner.hasStrayText()) return;
    const DelimitedScanner::StrayText stray = scanner.takeStrayText();
    log.report([&]() -> Problem {
        const bool isLater = stray.closedOn != stray.openedOn;
        return {stray.openedOn, builder.declaredName(stray.cell),
                concat("text behind a closing quote",
                       isLater ? concat(" on line ", std::to_string(stray.closedOn)) : ""),
                concat("a ", delimiterName(delimiter), " or the end of the line"),
                "the cell is read without these quotes; quotes that belong to a cell in quotes "
                "are written twice"};
    });
}

// A line whose cells all stand between quotes that hide nothing.
bool addQuotedRow(DelimitedScanner& scanner, TableBuilder& builder) {
    if (*scanner.place() != '"') return false;
    const std::size_t line = scanner.line();
    const TextRows::QuotedLine row = builder.addQuotedRow(scanner.place());
    if (row.end == nullptr) return false;
    scanner.passTo(row.end);
    builder.noteQuotedRow(line, row.count, scanner.room());
    return true;
}

}  // namespace

void readDelimited(Text text, char separator, Log& log) {
    const std::optional<char> named = delimiterInFront(text.view());
    const std::size_t inFront = LinesInFront::of(text.view(), separator, log).count();
    text.start += skipLines(text.view(), inFront, log);
    const char delimiter = delimiterOf(text.view(), named, separator, log);
    const bool areQuotesText = hasTextQuotes(text.view(), delimiter);
    const std::size_t toldOf = reportLineInFront(text.view(), delimiter, 1 + inFront, log);
    TableBuilder builder(log, std::move(text.block));
    char* const begin = builder.text() + text.start;
    DelimitedScanner scanner(
        begin, builder.textEnd(), delimiter,
        areQuotesText ? DelimitedScanner::Quotes::ordinary : DelimitedScanner::Quotes::respected,
        1 + inFront);
    if (scanner.atEnd()) {
        throw Failure{
            unreadable, log.name, {scanner.line(), "", "nothing", "a line of column names", ""}};
    }
    const std::size_t columns = readHeading(scanner, builder, log);
    reportStrayText(scanner, delimiter, builder, log);
    Progress progress(log.opening.watcher, "reading " + log.name, builder.textSize());
    while (!scanner.atEnd()) {
        progress.reach(static_cast<std::size_t>(scanner.place() - begin));
        if (delimiter == ',' && toldOf == 0 && addQuotedRow(scanner, builder)) continue;
        const std::size_t line = scanner.line();
        const std::vector<std::string_view>& cells = scanner.takeRecord();
        reportStrayText(scanner, delimiter, builder, log);
        // An empty line is no row, but under a heading of one name it is an empty cell.
        if (isBlankLine(cells) && columns > 1) continue;
        if (cells.size() == toldOf)
            builder.addWholeRow(line, cells.data(), cells.size(), scanner.room());
        else
            builder.addRow(line, cells, scanner.room());
    }
    if (scanner.openQuoteLine() != 0) {
        log.report([&]() -> Problem {
            return {scanner.openQuoteLine(), "", "a quote that is never closed", "a closing quote",
                    "everything behind it is in one cell"};
        });
        log.endsInLine = true;
        if (log.source) log.source->endsOpen = true;
    }
    log.lineEnd = scanner.lineEnd();
    if (log.source) log.source->hasLoneReturns = scanner.sawLoneReturns();
    builder.finish();
}

}  // namespace vek::formats
