#pragma once

#include <optional>
#include <string_view>

namespace vek::formats {

/// What separates the cells of a text, as its first lines show it. The usual one, unless its
/// heading has but one name by that, or no row has as many cells as the heading, and another one
/// makes a table of the lines: comma, semicolon, tab or a stroke.
char foundDelimiter(std::string_view text, char usual);

/// Whether the first lines are cells between marks, two and more and in each as many.
bool isDelimited(std::string_view text);

/// That which FIELD_DELIM names: "TABS", "COMMAS", ";"; nothing for other texts.
std::optional<char> aleDelimiter(std::string_view name);

}  // namespace vek::formats
