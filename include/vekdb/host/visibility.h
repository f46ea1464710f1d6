#pragma once

/// Stands before every class and function that applications may use. The library is compiled
/// with all other names hidden, so a shared one exports these and no others. It is the same
/// for whoever builds the library and whoever uses it, shared or not: no setting changes it.
#if defined(__GNUC__)
#define VEKDB_PUBLIC __attribute__((visibility("default")))
#else
#define VEKDB_PUBLIC
#endif
