#pragma once

#include <optional>
#include <string>

#include "formats/workbook/format_tokens.h"

namespace vek::formats {

/// A moment by the parts of a format of dates; nothing where the number is no moment.
std::optional<std::string> shownDate(double value, bool from1904,
                                     const std::vector<FormatToken>& tokens);

}  // namespace vek::formats
