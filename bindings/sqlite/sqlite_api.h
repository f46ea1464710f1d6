#pragma once

#include <sqlite3ext.h>

/// The same sources make the extension, which reaches SQLite through the table of functions that it
/// is loaded with, and the library that is linked together with SQLite, where SQLITE_CORE is
/// defined.
#ifndef SQLITE_CORE
SQLITE_EXTENSION_INIT3
#endif
