#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "formats/log/log.h"

/// A table file drops blanks at the ends of a value and carriage returns, and turns a backslash
/// before n into a line end. So that logs of other formats come back from a table file as they
/// were, vek notes such cells in parameters of the file, "vek exact cells" and on: row, column
/// and the value, "3:12=%20%20;". A note counts only where the cell is still what the file makes
/// of the noted value; a cell that somebody changed since stays as it is.
namespace vek::formats {

struct ExactCell {
    unsigned row = 0;
    unsigned column = 0;
    std::string value;
};

/// Notes the cells in the table's parameters, in place of earlier notes. Returns how many had
/// room, from the first on.
std::size_t noteExactCells(vekdb& table, const std::vector<ExactCell>& cells);

/// Whether the log's parameters hold any.
bool hasExactNotes(const Log& log);

/// Puts noted values back into the cells.
void restoreExactCells(Log& log);

}  // namespace vek::formats
