#pragma once

#include <vector>

#include "tools/vek/cli/command.h"
#include "tools/vek/timecode/frame_counts.h"
#include "tools/vek/timecode/work.h"

namespace vek::timecode {

/// Brings the times and frames of these columns to the rate of BY, as --keep and --round say, and
/// with those of the record what an edit list counts in its notes. A Failure where BY is no rate,
/// and where a time is between two frames and nothing says what to do with it.
void conform(Work& work, const std::vector<unsigned>& columns, const FrameCounts& counts,
             const Args& args);

}  // namespace vek::timecode
