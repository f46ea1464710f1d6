#pragma once

#include <string>
#include <string_view>

#include "formats/log/bare_values.h"

namespace vek::formats {

/// How a value of JSON stands, by its first character.
Bare bareOf(char first);

/// Writes a cell as a value of JSON: bare as it stood where its text still is such a value, and
/// else between quotes. `wasChanged` as `addJsonString` has it.
void addJsonValue(std::string& out, std::string_view cell, Bare bare, bool& wasChanged);

}  // namespace vek::formats
