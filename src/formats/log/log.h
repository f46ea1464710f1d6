#pragma once

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <vekdb/formats/format.h>
#include <vekdb/formats/problem.h>
#include <vekdb/host/text_util.h>
#include <vekdb/table.h>
#include "formats/failure.h"
#include "formats/input/held.h"
#include "formats/input/opening.h"
#include "formats/log/bare_values.h"
#include "formats/log/line_numbers.h"
#include "formats/log/source.h"
#include "formats/text/line_end.h"

namespace vek::formats {

/// Columns that have one name, case ignored, in their order.
struct RepeatedName {
    std::vector<unsigned> columns;
};

/// "file:line: found, expected ...; outcome".
std::string worded(const std::string& file, const Problem& problem);

/// A log in memory, whatever format it came from: a table of the library, for every row the line
/// of the source it began on, and what was found wrong on the way. The table belongs to the Log;
/// rows and lines go together as long as the table's rows are not moved.
struct Log {
    std::string path;  ///< as the person wrote it; "-" for standard input
    std::string name;  ///< for messages
    Format format = Format::table;
    std::unique_ptr<vekdb> table;
    LineNumbers lines;
    std::vector<std::uint32_t> numbers;       ///< of the rows, from 1 on, where some were left out
    std::size_t leftOut = 0;                  ///< rows that were not wanted
    std::vector<Problem> problems;            ///< told on reading; nothing was lost by them
    std::size_t moreProblems = 0;             ///< that were found behind those
    std::vector<RepeatedName> repeatedNames;  ///< as the columns are named now
    std::unordered_map<unsigned, std::size_t> repeatedAt;  ///< of their columns, where there
    std::set<std::string> unnamed;   ///< columns that its heading has no name for
    BareValues bare;                 ///< cells that stood without quotes in JSON
    std::string notRead;             ///< why rows are missing; empty when all are there
    LineEnd lineEnd = LineEnd::lf;   ///< text formats are written back as they came
    bool beganWithMark = false;      ///< a UTF-8 byte order mark stood in front
    bool endsInLine = false;         ///< the last line of the text has no end
    TextForm form = {};              ///< so are those
    Opening opening = {};            ///< as it was asked for
    std::size_t bytesRead = 0;       ///< of the file
    std::string sheet;               ///< the one that was read of a workbook
    Held held;                       ///< of a log that is to be changed in place
    std::shared_ptr<Source> source;  ///< of the same

    unsigned rowCount() const { return table->get_num_records(); }
    /// Those that were left out included.
    std::size_t rowsInSource() const { return rowCount() + leftOut; }
    /// The number of a row in the source, from 1 on.
    std::size_t numberOf(unsigned row) const { return numbers.empty() ? row + 1 : numbers[row]; }
    unsigned columnCount() const { return table->get_num_fields(); }
    std::string_view cell(unsigned row, unsigned column) const {
        return table->get_record(row)->fieldView(column);
    }
    /// The first cells of a row, as many as there is room for.
    void cells(unsigned row, std::vector<std::string_view>& to) const {
        table->get_record(row)->fieldViews(to.data(), static_cast<unsigned>(to.size()));
    }
    std::string columnName(unsigned column) const;
    std::vector<std::string> columnNames() const;
    /// Without regard to case; "Name#2" is the second of several of the name, and "[c<d]" the
    /// column c<d, where none is called so with the brackets. A Failure with a suggestion when
    /// there is none, and with the choices when there are several.
    unsigned requireColumn(std::string_view name) const;
    /// The same without a Failure: noColumn where there is none, or several.
    unsigned columnNamed(std::string_view name) const;
    /// The position of the first that has the name now, or noColumn. Needs no memory where there is
    /// none.
    unsigned findColumn(std::string_view name) const noexcept;
    /// The line a row began on, 0 when it is not known.
    std::size_t lineOf(unsigned row) const { return row < lines.size() ? lines[row] : 0; }
    /// The value of a parameter, "" when there is none.
    std::string parameter(const char* name) const;
    /// Notes a problem; behind the first thousand they are counted. `make` makes it.
    template <class Make>
    void report(Make make) {
        if (problems.size() < mostProblems)
            problems.push_back(make());
        else
            ++moreProblems;
    }
    static constexpr std::size_t mostProblems = 1000;
    /// Adds or replaces; false when the library has no room or refuses the name.
    bool setParameter(const std::string& name, const std::string& value);
};

/// A Failure for the name of a column that finds none, or several.
[[noreturn]] void refuseName(const Log& log, std::string_view name, const Problem& why);

/// Whether files can hold a parameter: no quotes, tabs, line ends or blanks at the ends, and no
/// colon in the name, which is not that of the revision.
bool canBeParameter(std::string_view name, std::string_view value);

constexpr unsigned noColumn = 0xFFFFFFFF;

inline const dbrecord& recordOf(const Log& log, unsigned row) {
    return *log.table->get_record(row);
}

/// Whether a cell of the column "Tag" tags its row: a number other than 0 does.
inline bool isTag(std::string_view cell) {
    return parseInt(cell) != 0;
}

/// A string of the library from any text.
inline LightweightString<char> cellText(std::string_view text) {
    return LightweightString<char>(text.data(), text.size());
}

/// A Failure when rows of the file could not be read, so that writing it would lose them.
void requireWhole(const Log& log);

/// Whether something is wrong with the file itself.
bool isDamaged(const Log& log);

}  // namespace vek::formats
