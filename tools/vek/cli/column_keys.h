#pragma once

#include <string>

#include "formats/log/log.h"

namespace vek {

/// What columns of several logs have in common that are one: their names are the same, whatever
/// the case, and the second of a name in one log is the second of it in another.
std::string keyOf(const formats::Log& log, unsigned column);

}  // namespace vek
