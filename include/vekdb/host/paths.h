#pragma once

#include <vekdb/host/lightweight_string.h>
#include <vekdb/host/visibility.h>

/// True when there is a file (of any kind but a folder) at the path; symbolic
/// links are followed.
VEKDB_PUBLIC bool fileExists(const LightweightString<wchar_t>& path);

/// The file's name without its folders ('/' and '\' part them) and without its
/// extension, which begins at the last dot unless that is the name's first
/// character.
VEKDB_PUBLIC LightweightString<wchar_t> stripPathAndExt(const LightweightString<wchar_t>& path);
