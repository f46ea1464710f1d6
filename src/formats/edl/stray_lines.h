#pragma once

#include <functional>

#include "formats/log/log.h"

namespace vek::formats {

/// Tells lines in front of all events that are neither a heading nor comments, and so belong to no
/// event.
void tellStrayLines(const Log& log, const std::function<void(const Problem&)>& tell);

}  // namespace vek::formats
