#pragma once

#include <string>
#include <vector>

#include "tools/vek/timecode/work.h"

namespace vek::timecode {

/// Makes the times of these columns later, or earlier where `by` begins with a minus: frames or a
/// timecode. Markers of an edit list go along with its record. A Failure where `by` is no length.
void shift(Work& work, const std::vector<unsigned>& columns, const std::string& by);

}  // namespace vek::timecode
