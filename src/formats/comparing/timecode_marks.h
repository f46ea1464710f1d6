#pragma once

#include <optional>

#include "formats/log/log.h"

namespace vek::formats {

/// Where the timecodes of one log's column are written otherwise than those of another's, as
/// 01:00:00;00 and 01:00:00:00: what is told of that, with the line of the first that is. No two of
/// them are the same text, and so none are taken for one.
std::optional<Problem> otherTimecodes(const Log& log, unsigned column, const Log& as,
                                      unsigned asColumn);

}  // namespace vek::formats
