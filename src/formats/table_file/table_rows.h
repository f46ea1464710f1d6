#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "formats/table_file/exact_cells.h"
#include "formats/writing/table_values.h"
#include "formats/writing/writers.h"

class TextFile;

/// What a table file is made of, and what its cells lose in it.
namespace vek::formats {

/// Appends the rows as lines of a table file, and returns the cells that a reader will find other
/// than they are, which are to be noted.
std::vector<ExactCell> writeTableRows(const Sheet& sheet, TextFile& lines);
/// The lines in front of the rows of a table file: parameters, the line VEKDB, and three more.
std::vector<std::string> tableHeading(const Log& log, Losses& losses);
/// Tells of a cell that a table file changes.
void tellExactCell(const ExactCell& cell, const std::string& place, bool isNoted, Losses& losses);

/// "cells that lose the blanks at their ends".
const char* lossOfCells(TableLoss loss);

}  // namespace vek::formats
