#pragma once

#include <string>
#include <string_view>

namespace vek::convert {

/// The folder of the rows that have a value in a column, as engines read it from a path:
/// "COLUMN=value". Bytes that mean something in a path, or that some system has no names with, are
/// written as %2F and the like, also those that are no UTF-8; no value stands as
/// __HIVE_DEFAULT_PARTITION__, which they read as none. It is one folder, whatever the value.
std::string partitionFolder(std::string_view column, std::string_view value);

/// What a folder's name may be long at most.
constexpr std::size_t longestFolder = 255;

}  // namespace vek::convert
