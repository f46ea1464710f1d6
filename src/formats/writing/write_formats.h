#pragma once

#include "formats/table_file/exact_cells.h"
#include "formats/writing/writers.h"

class TextFile;

/// One writer a format; see writeSheet.
namespace vek::formats {

void writeTable(const Sheet& sheet, Output& out, Losses& losses);
void writeDelimited(const Sheet& sheet, char separator, const WriteStyle& style, Output& out,
                    Losses& losses);
void writeJson(const Sheet& sheet, bool asLines, Output& out, Losses& losses);
void writeAle(const Sheet& sheet, const WriteStyle& style, Output& out, Losses& losses);
void writeEdl(const Sheet& sheet, const WriteStyle& style, Output& out, Losses& losses);
void writeOtio(const Sheet& sheet, const WriteStyle& style, Output& out, Losses& losses);
void writeMarkdown(const Sheet& sheet, Output& out, Losses& losses);
void writeHtml(const Sheet& sheet, Output& out, Losses& losses);

struct AleForm;

/// A row as a line without its end: so many of the sheet's values, and empty ones behind those.
void addDelimitedRow(std::string& text, const Sheet& sheet, unsigned row, std::size_t count,
                     char separator, Losses& losses);
void addAleRow(std::string& text, const Sheet& sheet, unsigned row, std::size_t count,
               Losses& losses);
/// The lines of names and one of a heading, without their ends.
std::string delimitedNames(const std::vector<std::string>& names, char separator,
                           const std::string& output, Losses& losses);
std::string aleNames(const AleForm& form, Losses& losses);
std::string aleEntry(const std::string& name, const std::string& value, Losses& losses);

/// Appends the rows as lines of a table file, and returns the cells that a reader will find other
/// than they are, which are to be noted.
std::vector<ExactCell> writeTableRows(const Sheet& sheet, TextFile& lines);
/// The lines in front of the rows of a table file: parameters, the line VEKDB, and three more.
std::vector<std::string> tableHeading(const Log& log, Losses& losses);
/// Tells of a cell that a table file changes.
void tellExactCell(const ExactCell& cell, const std::string& place, bool isNoted, Losses& losses);

/// What a value loses on its way through a table file.
enum class TableLoss { none, blanks, carriageReturns, backslash, other };
TableLoss tableFileLoss(std::string_view value);
/// Whether a row of values is certain to lose nothing; found out with less work.
bool areSurelyKept(const std::string_view* values, std::size_t count);
/// "cells that lose the blanks at their ends".
const char* lossOfCells(TableLoss loss);
/// The longest value that a table file's line can hold.
constexpr std::size_t longestTableValue = 4094;

/// Names of the columns that differ, as JSON objects need them.
std::vector<std::string> distinctNames(const Sheet& sheet, Losses& losses);

/// Adds the parameters as lost, for formats that hold none.
void loseParameters(const Log& log, Losses& losses);
/// The file's own parameters: all but the revision, the field map and vek's notes.
struct Parameter {
    std::string name;
    std::string value;
};
std::vector<Parameter> ownParameters(const Log& log);

/// "FILE:12:Scene", the place of a cell.
std::string place(const Sheet& sheet, unsigned row, unsigned column);

}  // namespace vek::formats
