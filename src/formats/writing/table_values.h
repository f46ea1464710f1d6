#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// What a table file, which every log can be kept in, holds of a value.
namespace vek::formats {

/// The longest value that a table file's line can hold.
constexpr std::size_t longestTableValue = 4094;

/// What a value becomes on its way through a table file.
std::string afterTableFile(std::string_view value);

/// What a value loses on its way through a table file.
enum class TableLoss { none, blanks, carriageReturns, backslash, other };
TableLoss tableFileLoss(std::string_view value);
/// Whether a row of values is certain to lose nothing; found out with less work.
bool areSurelyKept(const std::string_view* values, std::size_t count);

}  // namespace vek::formats
