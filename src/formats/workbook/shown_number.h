#pragma once

#include <string>

#include "formats/workbook/format_tokens.h"

namespace vek::formats {

/// A number of up to 15 digits, which are those that a sheet keeps.
std::string generalNumber(double value);

/// A number that is not negative by the parts of a format that is none of dates.
std::string shownNumber(double value, const std::vector<FormatToken>& tokens);

}  // namespace vek::formats
