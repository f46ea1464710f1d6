#pragma once

#include <vector>

#include "formats/log/log.h"

namespace vek::formats {

/// All of them, in their order.
std::vector<unsigned> allColumns(const Log& log);

/// The columns that the file's field map shows; all of them in a file without one.
std::vector<unsigned> mappedColumns(const Log& log);

}  // namespace vek::formats
