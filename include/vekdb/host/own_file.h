#pragma once

#include <cstdio>

#include <vekdb/host/open_file.h>
#include <vekdb/host/visibility.h>

/// Files that nobody but the user of this process has a part in, in folders that others may write
/// to.

/// Makes a file to be written, which nobody but its owner may read or write from the first moment
/// on. What stands there already is neither followed nor written to: null then, and errno says why.
[[nodiscard]] VEKDB_PUBLIC std::FILE* makeOwnFile(const char* path);

/// Opens a regular file that belongs to the user of this process. Nothing is open where it is
/// somebody else's, a link, or anything but a regular file.
[[nodiscard]] VEKDB_PUBLIC OpenFile openOwnFile(const char* path);
