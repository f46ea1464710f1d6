#pragma once

#include <string>
#include <string_view>

/// Lines for a terminal that are put together in one text, many of them one after the other.
namespace vek::formats {

/// Adds what `inQuotes` makes of a text.
void addInQuotes(std::string& out, std::string_view text);

/// Makes of a text what `escaped` makes of it.
void escape(std::string& text);

}  // namespace vek::formats
