#pragma once

#include <optional>
#include <string_view>

namespace vek::formats {

/// That which FIELD_DELIM names, by a word or itself: "TABS", "COMMAS", "CARET", ";", "^"; nothing
/// for other texts.
std::optional<char> aleDelimiter(std::string_view name);

}  // namespace vek::formats
