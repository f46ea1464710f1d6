#pragma once

#include <vector>

#include "formats/log/log.h"

namespace vek::formats {

/// The columns that the file's field map shows; all of them in a file without one.
std::vector<unsigned> mappedColumns(const Log& log);

}  // namespace vek::formats
