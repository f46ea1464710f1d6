#pragma once

#include <vekdb/host/visibility.h>

/// The library's version: four numbers with dots between them.
inline constexpr char kVekdbVersion[] = "1.0.0.0";

/// The version of the library that is linked, which may be another than the header's. A
/// constant text, never to be freed.
VEKDB_PUBLIC const char* vekdbDllVersionStr();
