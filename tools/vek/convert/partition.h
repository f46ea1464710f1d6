#pragma once

#include "tools/vek/cli/command.h"

namespace vek::convert {

/// Writes the rows of many logs into a folder for each value of some columns, as --partition says.
int partitionLogs(const std::vector<std::string>& paths, const Args& args);

/// Its options.
std::vector<Option> partitionOptions();

}  // namespace vek::convert
