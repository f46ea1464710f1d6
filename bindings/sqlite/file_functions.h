#pragma once

#include "sqlite_api.h"

namespace vek::sql {

/// vek_file(path), a row for each of a log with its cells as a JSON object, and vek_cells(path), a
/// row for each cell: for logs of which nobody knows the columns beforehand.
int addFileFunctions(sqlite3* db);

}  // namespace vek::sql
