#pragma once

#include "formats/saving/patched_text.h"
#include "formats/saving/rows_in_place.h"

namespace vek::formats {

/// A JSON text with these rows, in their order, and no others. Of an object only the values that
/// were changed are replaced: numbers that were not stay numbers.
PatchedText jsonInPlace(const Saving& saving, const std::vector<unsigned>& rows);

}  // namespace vek::formats
