#pragma once

#include "formats/conditions.h"

/// Where a log keeps what every clip has, whatever the program that made it calls it.
namespace vek {

/// The first of these columns that the log has, or noColumn.
unsigned firstColumn(const Log& log, std::initializer_list<const char*> names);

/// The columns of the source's start and end, of the record's, and of the keycodes; noColumn twice
/// where the log has none.
RangeColumns sourceColumns(const Log& log);
RangeColumns recordColumns(const Log& log);
RangeColumns keycodeColumns(const Log& log);

}  // namespace vek
