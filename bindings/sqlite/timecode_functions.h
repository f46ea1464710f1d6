#pragma once

#include "sqlite_api.h"

namespace vek::sql {

/// tc_frames, tc_text, tc_add and feet. Of NULL and of a cell with nothing in it they make NULL; of
/// what they do not understand an error that says what was found.
int addTimecodeFunctions(sqlite3* db);

}  // namespace vek::sql
