#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <vekdb/text_rows.h>
#include "formats/log/log.h"

namespace vek::formats {

/// Puts a table together row by row. A row that is longer than the columns makes columns of its
/// own for what would else be lost, a shorter one gets empty cells; both are reported.
class TableBuilder {
public:
    /// Rows of cells that stand in the text; the columns are told before `finish`.
    TableBuilder(Log& log, Quor::Ptr<TextBlock> text);
    /// Rows of cells from anywhere, which are copied.
    TableBuilder(Log& log, const std::vector<std::string>& columns);

    char* text() const { return rows_->text(); }
    char* textEnd() const { return text() + rows_->size(); }
    std::size_t textSize() const { return rows_->size(); }

    void setColumns(std::vector<std::string> columns);
    /// A Failure for more columns than a table holds; asked before so many names are copied.
    void requireColumns(std::size_t count) const;
    /// Where the heading of the text ends, and so the first row may begin.
    void endHeading(const char* at);
    /// Those of the heading, and as many more as the rows so far have values for.
    std::size_t columnCount() const;
    std::size_t declaredCount() const { return columns_.size(); }
    /// The name of a declared column, "" for others.
    std::string declaredName(std::size_t column) const {
        return column < columns_.size() ? columns_[column] : std::string();
    }

    /// The cells of a row of the text may use its room; of others there is none. The last cells
    /// can be left out.
    void addRow(std::size_t line, const std::vector<std::string_view>& cells,
                TextRows::Room room = {}, std::size_t leftOut = 0);
    /// A row that is as long as it is meant to be, however many columns there are.
    void addWholeRow(std::size_t line, const std::string_view* cells, std::size_t count,
                     TextRows::Room room);
    /// A row of a line of cells between quotes, as `TextRows::appendQuoted` takes it; once it has
    /// been taken the row is to be noted.
    TextRows::QuotedLine addQuotedRow(char* at) { return rows_->appendQuoted(at); }
    void noteQuotedRow(std::size_t line, std::size_t count, TextRows::Room room);
    /// A heading entry. The library holds 40, the first its own; more are reported.
    void addParameter(std::size_t line, std::string_view name, std::string_view value);
    /// Gives columns of timecodes their type, so that they sort and match as such.
    void finish();

private:
    void notePlace(TextRows::Room room);
    template <class CellAt>
    void lookForTimecodes(std::size_t count, CellAt cellAt);
    void noteRow(std::size_t line);

    // A column in which there was nothing but timecodes so far.
    struct TimecodeColumn {
        unsigned column;
        bool isFilled = false;
    };

    Log& log_;
    std::vector<std::string> columns_;
    std::optional<TextRows> rows_;
    std::vector<TimecodeColumn> timecodes_;
    std::size_t seen_ = 0;  // columns that a row had a cell for
};

/// Names for columns of values behind the last one that was declared: "Extra 1" and on, but none
/// that a declared column has.
std::vector<std::string> extraColumnNames(const std::vector<std::string>& declared,
                                          std::size_t count);
/// "Column 1" and on, of a log without a heading; `at` counts from 0.
std::string numberedColumnName(std::size_t at);
/// Notes a row that has another number of values than there are columns.
void reportLength(Log& log, std::size_t line, std::size_t found, std::size_t expected);

std::vector<std::string> asStrings(const std::vector<std::string_view>& texts);

}  // namespace vek::formats
