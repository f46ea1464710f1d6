#pragma once

#include <string>
#include <vector>

#include "formats/writing/writers.h"

/// Lines of delimited text.
namespace vek::formats {

/// A row as a line without its end: so many of the sheet's values, and empty ones behind those.
void addDelimitedRow(std::string& text, const Sheet& sheet, unsigned row, std::size_t count,
                     char separator, Losses& losses);
/// A cell as it stands in a line; where that is wished, in quotes that it has no need of.
void addDelimitedCell(std::string& text, std::string_view cell, char separator, bool isQuoted);
/// The lines in front of a heading of so many names. Blank ones that nobody said to pass over stand
/// in front of several names only: a single one may be blank itself.
std::string linesInFront(const TextForm& form, const Opening& opening, std::size_t names);
/// The line of names, without its end.
std::string delimitedNames(const std::vector<std::string>& names, char separator,
                           const std::string& output, Losses& losses);

}  // namespace vek::formats
