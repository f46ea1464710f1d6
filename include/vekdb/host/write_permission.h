#pragma once

#include <vekdb/host/visibility.h>

/// Why `FileReplacement` could write nothing to a path, in the system's bytes, as far as the rights
/// to the file and to its folder tell: errno, or 0 where they are granted. Nothing is made, opened
/// or changed for that.
[[nodiscard]] VEKDB_PUBLIC int errorOfWritePermission(const char* path);
