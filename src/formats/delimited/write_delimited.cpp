#include <algorithm>

#include "formats/delimited/delimited_lines.h"
#include "formats/delimited/text_quotes.h"
#include "formats/formats.h"
#include "formats/input/progress.h"
#include "formats/reading/delimiters.h"
#include "formats/saving/reading_back.h"
#include "formats/text/encoding.h"
#include "formats/text/text_lines.h"
#include "formats/text/utf8.h"
#include "formats/writing/plain_lines.h"
#include "formats/writing/sheet_facts.h"
#include "formats/writing/write_formats.h"

namespace vek::formats {

namespace {

// A lone empty cell needs quotes, as its line would read as no row.
void addDelimited(std::string& out, std::string_view cell, char separator, bool isAlone) {
    addDelimitedCell(out, cell, separator, isAlone && cell.empty());
}

// A file without columns is an empty one.
void loseRows(const Sheet& sheet, Losses& losses) {
    for (unsigned row = 0; row < sheet.rowCount(); ++row) {
        losses.add("rows have no place without a column",
                   concat(sheet.source(row), ":", std::to_string(sheet.line(row))));
    }
}

bool looksLikeFormula(std::string_view cell) {
    return !cell.empty() &&
           std::string_view("=+-@\t\r").find(cell.front()) != std::string_view::npos;
}

// Makes lines of delimited text, without their ends.
class DelimitedLines {
public:
    DelimitedLines(char separator, bool guardsFormulas, std::string output, Losses& losses)
        : separator_(separator),
          guardsFormulas_(guardsFormulas),
          output_(std::move(output)),
          losses_(losses) {}

    /// `place` is asked for where a cell is to be told of.
    template <class Cell, class Place>
    void add(std::string& text, std::size_t count, Cell cell, Place place) {
        const std::size_t begin = text.size();
        for (unsigned i = 0; i < count; ++i) {
            if (i > 0) text += separator_;
            addCell(text, cell(i), count == 1, [&] { return place(i); });
        }
        tellZeros(std::string_view(text).substr(begin), count, cell, place, losses_);
    }

    /// The line of names, by which readers tell formats apart: quotes keep it from being taken
    /// for the beginning of another one.
    template <class Cell>
    std::string names(std::size_t count, Cell cell) {
        if (count == 0) return {};
        std::string rest;
        for (unsigned i = 1; i < count; ++i) {
            rest += separator_;
            addCell(rest, cell(i), false, [&] { return inQuotes(cell(i)); });
        }
        std::string first;
        addCell(first, cell(0), count == 1, [&] { return inQuotes(cell(0)); });
        const std::string plain = first + rest;
        const bool maySeparate = (count == 1 && first.find_first_of(",;\t|") != first.npos) ||
                                 delimiterOfLine(plain).has_value();
        if (!first.starts_with('"') && (maySeparate || !standsAsFirstLine(plain, format()))) {
            first = concat("\"", first, "\"");
        }
        requireFormat(first + rest, plain);
        return first + rest;
    }

private:
    Format format() const { return separator_ == ',' ? Format::csv : Format::tsv; }

    void requireFormat(std::string_view line, std::string_view asNamed) const {
        if (recognised(std::string(".") + formatName(format()), line) == format()) return;
        throw Failure{unwritable,
                      concat(output_, ": ", inQuotes(trimmed(asNamed).substr(0, 40)),
                             ", expected another name of the first column: the file would be read "
                             "as a table file; rename the column, or put another first")};
    }

    template <class Place>
    void addCell(std::string& line, std::string_view cell, bool isAlone, Place place) {
        if (!guardsFormulas_ || !looksLikeFormula(cell)) {
            return addDelimited(line, cell, separator_, isAlone);
        }
        losses_.add("cells that begin like formulas, given an apostrophe", place());
        addDelimited(line, concat("'", cell), separator_, isAlone);
    }

    char separator_;
    bool guardsFormulas_;
    std::string output_;
    Losses& losses_;
};

// Quotes around tabs and line ends are taken for text where each line has a cell for each column.
bool mayReadAsSeveral(const std::string& names, std::size_t count, const std::string& line,
                      char separator) {
    if (line.find_first_of("\n\r") == line.npos) return false;
    const auto separators = std::count(line.begin(), line.end(), separator);
    return static_cast<std::size_t>(separators) >= count &&
           hasTextQuotes(concat(names, "\n", line), separator);
}

}  // namespace

// A quote is needed where the reader would else see another text. A cell that begins with the bytes
// of a byte order mark would be taken for a file with one.
void addDelimitedCell(std::string& text, std::string_view cell, char separator, bool isQuoted) {
    const bool isPlain =
        !hasAnyOf(cell, {'"', '\n', '\r', separator}) && !cell.starts_with(byteOrderMark);
    if (isPlain && !isQuoted) {
        text += cell;
        return;
    }
    text += '"';
    for (char c : cell) {
        if (c == '"') text += '"';
        text += c;
    }
    text += '"';
}

std::string linesInFront(const TextForm& form, const Opening& opening, std::size_t names) {
    if (names > 1) return form.skipped;
    std::string_view line = form.skipped;
    line = line.substr(0, line.find_first_of("\r\n"));
    const std::size_t said = std::max<std::size_t>(opening.wishes.skippedLines,
                                                   delimiterOfLine(line).has_value() ? 1 : 0);
    LineWalk walk(form.skipped);
    while (walk.number() < said && walk.next(line)) {
    }
    return form.skipped.substr(0, form.skipped.size() - walk.rest().size());
}

std::string delimitedNames(const std::vector<std::string>& names, char separator,
                           const std::string& output, Losses& losses) {
    DelimitedLines lines(separator, false, output, losses);
    return lines.names(names.size(), [&](unsigned i) -> std::string_view { return names[i]; });
}

void addDelimitedRow(std::string& text, const Sheet& sheet, unsigned row, std::size_t count,
                     char separator, Losses& losses) {
    DelimitedLines(separator, false, {}, losses)
        .add(
            text, count,
            [&](unsigned i) {
                return i < sheet.columns.size() ? sheet.cell(row, i) : std::string_view();
            },
            [&](unsigned i) { return place(sheet, row, i); });
}

void writeDelimited(const Sheet& sheet, char separator, const WriteStyle& style, Output& out,
                    Losses& losses) {
    loseParameters(sheet.log, losses);
    if (sheet.columns.empty()) return loseRows(sheet, losses);
    Progress progress(sheet.log.opening.watcher, "writing", sheet.rowCount());
    const Format format = separator == ',' ? Format::csv : Format::tsv;
    if (style.form.delimiter != '\0') separator = style.form.delimiter;
    const bool isSaid = style.form.delimiter != '\0' && isDelimiterSaid(sheet.log);
    CheckedOutput text(out, format, isSaid ? '\0' : separator);
    if (style.byteOrderMark) text.write(byteOrderMark);
    text.pass(linesInFront(style.form, sheet.log.opening, sheet.columns.size()));
    DelimitedLines lines(separator, style.guardsFormulas, out.name(), losses);
    const char* const end = bytesOf(style.lineEnd);
    const std::size_t count = sheet.columns.size();
    const std::string names = lines.names(count, [&](unsigned i) { return sheet.name(i); });
    bool isUtf8 = isWellFormedUtf8(names);
    if (!style.form.hasNoHeading) text.write(names + end);
    PlainLines plain(sheet, separator, "\"\n\r");
    const bool mayBePlain = !style.guardsFormulas && count > 1;
    std::string line;
    for (unsigned row = 0; row < sheet.rowCount(); ++row) {
        progress.reach(row);
        const std::string_view plainLine = mayBePlain ? plain.line(row, end) : std::string_view();
        if (!plainLine.empty()) {
            text.write(plainLine);
            continue;
        }
        line.clear();
        lines.add(
            line, count, [&](unsigned i) { return sheet.cell(row, i); },
            [&](unsigned i) { return place(sheet, row, i); });
        isUtf8 = isUtf8 && isWellFormedUtf8(line);
        if (mayReadAsSeveral(names, count, line, separator)) {
            losses.add("rows that may be read as several, for the tabs and line ends of a cell",
                       place(sheet, row, 0));
        }
        text.write(line += end);
    }
    text.end();
    if (!isUtf8) tellNoUtf8(sheet, losses);
}

}  // namespace vek::formats
