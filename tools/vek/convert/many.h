#pragma once

#include <string>
#include <vector>

#include "tools/vek/cli/command.h"

namespace vek::convert {

/// Writes a file in the format of --to for each of these logs, and for each in these folders:
/// beside it, or below the folder `output`, "" for none.
int convertEach(const std::vector<std::string>& paths, const std::string& output, const Args& args);

}  // namespace vek::convert
