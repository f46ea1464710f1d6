#pragma once

#include <string>
#include <vector>

#include "formats/writing/writers.h"

/// Lines of delimited text.
namespace vek::formats {

/// A row as a line without its end: so many of the sheet's values, and empty ones behind those.
void addDelimitedRow(std::string& text, const Sheet& sheet, unsigned row, std::size_t count,
                     char separator, Losses& losses);
/// The line of names, without its end.
std::string delimitedNames(const std::vector<std::string>& names, char separator,
                           const std::string& output, Losses& losses);

}  // namespace vek::formats
