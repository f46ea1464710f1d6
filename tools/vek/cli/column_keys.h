#pragma once

#include <string>
#include <vector>

#include "formats/log/log.h"

namespace vek {

/// What columns of several logs have in common that are one: their names are the same, whatever
/// the case, and the second of a name in one log is the second of it in another.
std::string keyOf(const formats::Log& log, unsigned column);

/// A Failure where a column stands among these twice, as `what` named them.
void requireEachOnce(const formats::Log& log, std::vector<unsigned> columns, const char* what);

}  // namespace vek
