#pragma once

#include <string>

#include "sqlite_api.h"

namespace vek::sql {

/// What a connection needs that works with logs but opens none: collations and functions.
int addWords(sqlite3* db);
/// All: the module `vek`, vek_file, vek_cells and the words.
int addAll(sqlite3* db);

}  // namespace vek::sql

/// What SQLite calls that loads `vek.so`; for programs that are linked with it, also to be given to
/// sqlite3_auto_extension.
extern "C" __attribute__((visibility("default"))) int sqlite3_vek_init(
    sqlite3* db, char** message, const sqlite3_api_routines* api);
