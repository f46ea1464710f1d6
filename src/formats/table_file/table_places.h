#pragma once

#include <cstdint>

#include "formats/log/log.h"

/// Where the rows of a table file stand in it.
namespace vek::formats {

/// Whether a table file of so many bytes is its heading, which ends at `heading`, and what writing
/// the rows of the log makes, which was just read from it.
bool isAsWritten(const Log& log, std::uint64_t heading, std::uint64_t size);

/// Notes where the rows stand and which lines are odd, as the log is read: what the rows know of
/// their lines shows it, without reading the file again. Where it does not, nothing is noted.
void notePlaces(Log& log);

}  // namespace vek::formats
