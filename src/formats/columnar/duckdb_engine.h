#pragma once

#include <string>
#include <string_view>

#include "formats/columnar/engine.h"

namespace vek::formats {

/// Has DuckDB carry out the statement, which reads "/dev/fd/0" and writes "/dev/fd/4": the program
/// or the library that VEK_DUCKDB names; else the program "duckdb", else Python's module or the
/// library that Python finds. A Failure with `unwritable` that says what to install where there is
/// none, or what it said where it failed.
void runDuckDb(std::string_view statement, EngineFiles& files, const std::string& output);

/// A name as SQL writes it.
std::string sqlName(std::string_view name);

}  // namespace vek::formats
