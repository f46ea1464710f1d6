#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "formats/log/parameter_text.h"
#include "formats/writing/writers.h"

/// What the writers of several formats ask of a sheet, and tell of it.
namespace vek::formats {

/// "FILE:12:Scene", the place of a cell.
std::string place(const Sheet& sheet, unsigned row, unsigned column);

/// Where a column of the log stands on the sheet, and one of that name; noColumn where none does.
unsigned placeOnSheet(const Sheet& sheet, unsigned column);
unsigned placeNamed(const Sheet& sheet, std::string_view name);

/// Names of the columns that differ, as JSON objects need them.
std::vector<std::string> distinctNames(const Sheet& sheet, Losses& losses);

/// The file's own parameters: all but the revision, the field map and vek's notes.
std::vector<ParameterText> ownParameters(const Log& log);
/// Adds the parameters as lost, for formats that hold none.
void loseParameters(const Log& log, Losses& losses);

/// What a log without a title is called in formats that have one: as its file, and else "Untitled",
/// which is told.
std::string titleOfFile(const Sheet& sheet, const std::string& output, Losses& losses);

/// Adds the names of columns as lost, for formats in which they stand in the rows, where there are
/// none.
void loseNames(const Log& log, const std::vector<unsigned>& columns, Losses& losses);

/// Tells of the cells with a zero byte in a line that was made of them: text with one in it is
/// taken for something else by whoever reads it.
template <class Cell, class Place>
void tellZeros(std::string_view line, std::size_t count, Cell cell, Place place, Losses& losses) {
    if (line.find('\0') == std::string_view::npos) return;
    for (unsigned i = 0; i < count; ++i) {
        if (std::string_view(cell(i)).find('\0') == std::string_view::npos) continue;
        losses.add("texts with a zero byte, for which readers refuse the file", place(i));
    }
}
/// The same for the line of a row.
void tellZerosOf(std::string_view line, const Sheet& sheet, unsigned row, Losses& losses);

}  // namespace vek::formats
