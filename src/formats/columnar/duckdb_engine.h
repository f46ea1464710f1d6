#pragma once

#include <string>
#include <string_view>

#include <vekdb/host/foreign_program.h>

namespace vek::formats {

/// Files for an engine to read and to write.
struct EngineFiles {
    ScratchFile rows;      ///< what it reads: as "/dev/fd/0"
    ScratchFile messages;  ///< what it says
    ScratchFile order;     ///< what it is to do, in SQL
    ScratchFile made;      ///< what it writes: as "/dev/fd/4"
};

/// Has DuckDB carry out the statement: the program or the library that VEK_DUCKDB names; else the
/// program "duckdb", else Python's module or the library that Python finds. A Failure with
/// `unwritable` that says what to install where there is none, or what it said where it failed.
void runDuckDb(std::string_view statement, EngineFiles& files, const std::string& output);

/// A name as SQL writes it.
std::string sqlName(std::string_view name);

}  // namespace vek::formats
