#pragma once

#include "tools/vek/cli/input.h"
#include "tools/vek/cli/log.h"

/// One reader a format. Each fills `log` (table, lines, problems) and keeps every cell as it
/// stands: nothing is trimmed, rounded or given another type.
namespace vek {

/// Leaves out rows of an undamaged file that do not hold the wanted "contains" conditions.
void readTable(Input& input, const Wanted& wanted, Log& log);
void readPlainCsv(Input& input, Log& log);
void readDelimited(std::string_view text, char separator, Log& log);
void readAle(std::string_view text, Log& log);
void readEdl(std::string_view text, Log& log);
void readJson(std::string_view text, Log& log);

/// Puts a table together row by row. A row that is longer than the columns makes columns of its
/// own for what would else be lost, a shorter one gets empty cells; both are reported.
class TableBuilder {
public:
    TableBuilder(Log& log, const std::vector<std::string>& columns);

    void addRow(std::size_t line, const std::vector<std::string_view>& cells);
    /// A heading entry. The library holds 40, the first its own; more are reported.
    void addParameter(std::size_t line, std::string_view name, std::string_view value);
    /// Gives columns of timecodes their type, so that they sort and match as such.
    void finish();

private:
    void addRowCells(const std::vector<std::string_view>& cells);

    Log& log_;
    std::size_t declared_;
};

/// Adds a column for values behind the last one that was declared.
void addExtraColumn(Log& log, std::size_t declared);
/// Notes a row that has another number of values than there are columns.
void reportLength(Log& log, std::size_t line, std::size_t found, std::size_t expected);

/// Walks the lines of a text: takes the next one off, without its end ("\n" or "\r\n").
class LineWalk {
public:
    explicit LineWalk(std::string_view text) : rest_(text) {}
    bool next(std::string_view& line);
    std::size_t number() const { return number_; }
    bool sawCr() const { return sawCr_; }

private:
    std::string_view rest_;
    std::size_t number_ = 0;
    bool sawCr_ = false;
};

/// The pieces of a text between separators; "" is one empty piece.
std::vector<std::string_view> split(std::string_view text, char separator);
/// Without blanks of the 7-bit range at both ends.
std::string_view trimmed(std::string_view text);
/// Equal without regard to the case of A to Z.
bool sameText(std::string_view a, std::string_view b);

}  // namespace vek
