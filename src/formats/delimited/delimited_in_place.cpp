#include <algorithm>

#include <vekdb/host/split.h>
#include "formats/delimited/delimited_lines.h"
#include "formats/delimited/log_quotes.h"
#include "formats/delimited/quoted_lines.h"
#include "formats/delimited/raw_cells.h"
#include "formats/delimited/separated_in_place.h"
#include "formats/input/input.h"
#include "formats/reading/delimiters.h"
#include "formats/reading/table_builder.h"
#include "formats/text/utf8.h"
#include "formats/writing/plain_lines.h"
#include "formats/writing/sheet_facts.h"

namespace vek::formats {

namespace {

class DelimitedInPlace : public SeparatedInPlace {
public:
    DelimitedInPlace(const Saving& saving, char separator)
        : DelimitedInPlace(saving, separator, cameWithTextQuotes(saving.log)) {}

    // Where blank lines would be no rows any more, each row is written.
    bool writesAll(const std::vector<unsigned>& all) override {
        losesBlankRows_ = cameWithBlankRows() && !willHaveBlankRows(all);
        return losesBlankRows_ || (cameWithBlankRows() && beginsWithOtherBlank(all));
    }

    void add(std::string& text, unsigned row, std::string_view piece) override {
        const std::vector<std::string_view>& came = raw_.take(piece);
        const std::size_t count = lengthOf(row, piece.empty() ? 0 : came.size());
        const bool hasQuotes = !hasTextQuotes_ && piece.find('"') != piece.npos;
        const std::string_view plain =
            hasQuotes ? quotedLine(row, count, came) : plainLine(row, count);
        if (!plain.empty())
            text += plain;
        else if (hasQuotes || hasTextQuotes_)
            addByCells(text, row, count, came);
        else
            addDelimitedRow(text, rows(), row, count, separator(), saving().losses);
    }

    std::string heading(std::string_view came) override {
        const TextForm& form = saving().log.form;
        const bool hasNames = saving().hasNamesAsTheyCame();
        if (hasNames && !form.hasNoHeading) return std::string(came);
        if (!hasNames && form.hasNoHeading) tellNames();
        const std::string front = concat(came.starts_with(byteOrderMark) ? byteOrderMark : "",
                                         linesInFront(form, saving().log.opening, firstCells()));
        if (form.hasNoHeading) return front;
        return concat(front, delimitedNames(names(), separator(), saving().output, saving().losses),
                      endOfLine(came));
    }

    // Blank lines, which would be rows of a single column.
    bool saysBetween() const override {
        return !cameWithBlankRows() && (willHaveBlankRows(all()) || beginsWithOther(all()));
    }
    std::string between(std::string_view, std::optional<unsigned>) override { return {}; }

private:
    DelimitedInPlace(const Saving& saving, char separator, bool hasTextQuotes)
        : SeparatedInPlace(saving, separator,
                           hasTextQuotes ? DelimitedScanner::Quotes::ordinary
                                         : DelimitedScanner::Quotes::respected),
          hasTextQuotes_(hasTextQuotes),
          raw_(separator, hasTextQuotes) {}

    // A lone empty cell gets one beside it where its line would be none.
    std::size_t lengthOf(unsigned row, std::size_t came) const {
        const bool isAny = !rows().columns.empty();
        const std::size_t count = std::max<std::size_t>(length(row, came), isAny ? 1 : 0);
        const bool isBlank = losesBlankRows_ && count == 1 && rows().cell(row, 0).empty();
        return isBlank ? 2 : count;
    }

    bool cameWithBlankRows() const { return saving().log.source->named == 1; }

    // Without a heading the first row says how many columns there are.
    bool willHaveBlankRows(const std::vector<unsigned>& all) const {
        const bool isAsFirstRow = saving().log.form.hasNoHeading && saving().hasColumnsAsTheyCame();
        if (!isAsFirstRow || all.empty()) return names().size() == 1;
        return std::max(filledCells(all.front()), cellsAsRead(all.front())) == 1;
    }

    // Of the heading, or else of the first row: one, or several.
    std::size_t firstCells() const {
        if (!saving().log.form.hasNoHeading) return names().size();
        return willHaveBlankRows(all()) ? 1 : 2;
    }

    std::size_t filledCells(unsigned row) const {
        std::size_t count = saving().columns.size();
        while (count > 1 && saving().log.cell(row, saving().columns[count - 1]).empty()) --count;
        return count;
    }

    // At least one, also of a row that is new.
    std::size_t cellsAsRead(unsigned row) const {
        if (row >= saving().log.source->places.count()) return names().size();
        const std::string line = lineAsRead(row);
        return RawCells(separator(), hasTextQuotes_).take(line).size();
    }

    // Without a heading blank lines in front of the first row are passed over, or are the first.
    bool beginsWithOther(const std::vector<unsigned>& all) const {
        return saving().log.form.hasNoHeading && (all.empty() || all.front() != 0);
    }

    bool beginsWithOtherBlank(const std::vector<unsigned>& all) const {
        if (!beginsWithOther(all) || all.empty()) return false;
        if (all.front() >= saving().log.source->places.count()) return false;
        return lineAsRead(all.front()).find_first_not_of("\r\n") == std::string::npos;
    }

    std::string lineAsRead(unsigned row) const {
        const Source& source = *saving().log.source;
        std::string line(source.places.row(row).size(), '\0');
        source.input->readAgain(source.places.row(row).begin, line.data(), line.size());
        return line;
    }

    // Cells that read as they did are written as they stood, others with quotes where they had
    // some.
    void addByCells(std::string& text, unsigned row, std::size_t count,
                    const std::vector<std::string_view>& came) {
        const std::size_t begin = text.size();
        for (std::size_t i = 0; i < count; ++i) {
            if (i > 0) text += separator();
            addCell(text, row, i, count, rawCell(came, i));
        }
        tellZerosOf(std::string_view(text).substr(begin), rows(), row, saving().losses);
    }

    // That which was in the column before; those behind all columns stay behind them.
    std::string_view rawCell(const std::vector<std::string_view>& came, std::size_t i) const {
        const std::vector<unsigned>& columns = saving().columns;
        const std::size_t known = saving().log.source->columns.size();
        std::size_t at = i < columns.size() ? saving().log.source->whereFrom(columns[i])
                                            : i - columns.size() + known;
        if (i < columns.size() && at == known) return {};
        return at < came.size() ? came[at] : std::string_view();
    }

    void addCell(std::string& text, unsigned row, std::size_t i, std::size_t count,
                 std::string_view came) {
        const std::string_view cell =
            i < rows().columns.size() ? rows().cell(row, static_cast<unsigned>(i)) : came;
        const bool isLone = count == 1 && cell.empty();
        if (!isLone && (i >= rows().columns.size() || raw_.reads(came, cell))) {
            addAsItCame(text, row, i + 1 == count, came);
            return;
        }
        if (!hasTextQuotes_) {
            addDelimitedCell(text, cell, separator(), isLone || raw_.isQuoted(came));
            return;
        }
        requireTextOfOneCell(cell, row, static_cast<unsigned>(i));
        text += cell;
    }

    // A quote that is never closed takes in the end of the last line, which is put behind the row.
    // It is closed where other cells or rows come to stand behind it.
    void addAsItCame(std::string& text, unsigned row, bool isLastCell, std::string_view came) {
        const bool isOpen = saving().log.source->endsOpen && raw_.isOpen(came);
        const bool isAtEnd = isLastCell && all().back() == rows().view->baseIndex(row);
        if (isOpen && isAtEnd) came.remove_suffix(endOfLine(came).size());
        text += came;
        if (isOpen && !isAtEnd) text += '"';
    }

    void requireTextOfOneCell(std::string_view cell, unsigned row, unsigned column) const {
        if (cell.find_first_of("\n\r") == cell.npos && cell.find(separator()) == cell.npos) return;
        throw Failure{
            unwritable,
            concat(place(rows(), row, column), ": ", inQuotes(cell.substr(0, 60)),
                   ", expected a text without line ends and without a ", delimiterName(separator()),
                   ", as quotes are part of the cells of this file; write a copy with ",
                   saving().log.opening.terms->saving)};
    }

    // Empty where a cell needs more than to be copied, or some are left out.
    std::string_view plainLine(unsigned row, std::size_t count) {
        if (count < 2 || count != rows().columns.size()) return {};
        if (!plain_) plain_.emplace(rows(), separator(), hasTextQuotes_ ? "\n\r" : "\"\n\r");
        return plain_->line(row, {});
    }

    // Empty also where the cells are not of the columns that came.
    std::string_view quotedLine(unsigned row, std::size_t count,
                                const std::vector<std::string_view>& came) {
        const bool areSame = count == came.size() && count == rows().columns.size();
        if (count < 2 || !areSame || !hasColumnsAsTheyCame_) return {};
        if (!quoted_) quoted_.emplace(rows(), separator());
        return quoted_->line(row, came);
    }

    // Without a heading columns are called by where they stand.
    void tellNames() const {
        const Log& log = saving().log;
        const std::vector<std::string> now = names();
        for (std::size_t i = 0; i < now.size(); ++i) {
            if (now[i] == numberedColumnName(i)) continue;
            const unsigned from = log.source->whereFrom(saving().columns[i]);
            const bool isRenamed =
                from < log.source->columns.size() && log.source->columns[from].name != now[i];
            if (isRenamed) {
                throw Failure{wrongUsage,
                              concat(log.name, ": has no heading that could say ", inQuotes(now[i]),
                                     "; write one into its first line, and read it "
                                     "as a file with a heading")};
            }
            saving().losses.add("column names have no place in a file without a heading",
                                inQuotes(now[i]));
        }
    }

    bool hasTextQuotes_;
    bool hasColumnsAsTheyCame_ = saving().hasColumnsAsTheyCame();
    std::optional<PlainLines> plain_;
    std::optional<QuotedLines> quoted_;
    RawCells raw_;
    bool losesBlankRows_ = false;  // those that came would be none in the file
};

// The library's own variant: in lines that a line feed ends, quotes are part of the values, and a
// comma at a line's very start or end makes no further value. A row that this form cannot hold is
// refused.
class PlainCsvInPlace : public RowsInPlace {
public:
    explicit PlainCsvInPlace(const Saving& saving) : saving_(saving) {}

    bool reads(std::string_view piece, unsigned row) override {
        const Values values = valuesOf(piece);
        for (unsigned i = 0; i < saving_.log.columnCount(); ++i) {
            if (valueAt(values, i) != saving_.log.cell(row, i)) return false;
        }
        return true;
    }

    void add(std::string& text, unsigned row, std::string_view piece) override {
        std::vector<std::string_view> cells;
        for (unsigned i = 0; i < rows().columns.size(); ++i) cells.push_back(rows().cell(row, i));
        const Values came = valuesOf(piece);
        if (saving_.hasColumnsAsTheyCame()) {
            for (std::size_t i = cells.size(); i < came.size(); ++i)
                cells.push_back(came[i].view());
        }
        addLine(text, cells, piece,
                concat(saving_.log.name, ":", std::to_string(rows().line(row))));
    }

    std::string heading(std::string_view came) override {
        if (saving_.hasNamesAsTheyCame()) return std::string(came);
        std::vector<std::string> names;
        for (unsigned column : saving_.columns) names.push_back(saving_.log.columnName(column));
        std::string line;
        addLine(line, {names.begin(), names.end()}, {}, saving_.log.name + ":1");
        return line.append(endOfLine(came));
    }

private:
    using Values = std::vector<LightweightString<char>>;

    static Values valuesOf(std::string_view piece) {
        Values values;
        piece.remove_suffix(endOfLine(piece).size());
        Quor::splitIf(cellText(piece), ',', values, Quor::splitKeepsQuotedWhole);
        return values;
    }

    static std::string_view valueAt(const Values& values, std::size_t i) {
        return i < values.size() ? values[i].view() : std::string_view();
    }

    // Empty values at the end need no commas; there are as many as there were.
    void addLine(std::string& text, std::vector<std::string_view> cells, std::string_view piece,
                 const std::string& place) const {
        while (cells.size() > 1 && cells.back().empty()) cells.pop_back();
        std::string line;
        for (std::size_t i = 0; i < cells.size(); ++i) line += concat(i == 0 ? "" : ",", cells[i]);
        const auto commas = std::count(piece.begin(), piece.end(), ',');
        const std::string filled =
            line + std::string(static_cast<std::size_t>(std::max<std::ptrdiff_t>(
                                   commas - std::count(line.begin(), line.end(), ','), 0)),
                               ',');
        if (holds(filled, cells)) line = filled;
        if (!holds(line, cells)) refuse(cells, place, *saving_.log.opening.terms);
        text += line;
    }

    static bool holds(const std::string& line, const std::vector<std::string_view>& cells) {
        const Values values = valuesOf(line);
        const std::size_t count = std::max(values.size(), cells.size());
        for (std::size_t i = 0; i < count; ++i) {
            const std::string_view cell = i < cells.size() ? cells[i] : std::string_view();
            if (valueAt(values, i) != cell) return false;
        }
        return line.find_first_of(std::string_view("\n\r\0", 3)) == std::string::npos;
    }

    [[noreturn]] static void refuse(const std::vector<std::string_view>& cells,
                                    const std::string& place, const Terms& terms) {
        std::string text;
        for (std::string_view cell : cells) text += concat(text.empty() ? "" : " | ", cell);
        throw Failure{unwritable,
                      concat(place, ": ", inQuotes(text.substr(0, 60)),
                             ", expected values that plain CSV can hold: no line ends, commas in "
                             "whole quotes alone, a first one that is not empty; write a table "
                             "file of it with ",
                             terms.saving)};
    }

    Saving saving_;
};

}  // namespace

std::unique_ptr<RowsInPlace> delimitedInPlace(const Saving& saving, char separator) {
    return std::make_unique<DelimitedInPlace>(saving, separator);
}

std::unique_ptr<RowsInPlace> plainCsvInPlace(const Saving& saving) {
    return std::make_unique<PlainCsvInPlace>(saving);
}

}  // namespace vek::formats
