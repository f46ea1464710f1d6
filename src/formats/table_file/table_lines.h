#pragma once

#include <functional>
#include <string_view>
#include <vector>

#include "formats/log/log.h"

namespace vek::formats {

/// Tells what is wrong with the text of a table file that its loaded table does not show any more:
/// column types that are not known, and values with blanks at their ends, which reading drops.
/// The file is read again, piece by piece.
void tellTableText(Input& input, const Log& log, const std::function<void(const Problem&)>& tell);

/// Takes the values of a line that is read as it stands: each of them between quotes and nothing in
/// them that means something. False for any other line.
bool takePlainValues(std::string_view line, std::vector<std::string_view>& values);

/// The values of a line as they stand between their quotes, blanks kept.
std::vector<std::string_view> rawValues(std::string_view line);

/// Whether the library takes the line for the one that ends the parameters: it reads quotes that
/// are not closed, and escapes, which `rawValues` leaves as they stand.
bool isMagicLine(std::string_view line);

}  // namespace vek::formats
