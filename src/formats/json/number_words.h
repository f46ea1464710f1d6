#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vek::formats {

/// The text with NaN, Infinity and -Infinity in quotes, which some programs write where JSON has no
/// number; nothing where none stands in it.
std::optional<std::string> withNumberWordsQuoted(std::string_view json);

}  // namespace vek::formats
