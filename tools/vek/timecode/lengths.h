#pragma once

#include "tools/vek/cli/command.h"
#include "tools/vek/timecode/work.h"

namespace vek::timecode {

/// Fills the column of --into with the lengths between start and end, the columns of --columns or
/// those that the log has for them. A Failure where it has none.
void durations(Work& work, const Args& args);
/// The same with the ends of what starts and lasts so long.
void ends(Work& work, const Args& args);

}  // namespace vek::timecode
