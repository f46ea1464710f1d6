#pragma once

#include "formats/writing/writers.h"

namespace vek::formats {

/// Where a sheet has the kinds of events, C, D, W001 and keys; noColumn where it has none, as a
/// column Kind of other logs may hold any words.
unsigned placeOfEdlKinds(const Sheet& sheet);

}  // namespace vek::formats
