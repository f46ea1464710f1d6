#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tools/vek/browse/browser.h"

namespace vek::browse {

/// Shows a browser on the terminal until it is over, or until somebody ends the program: the
/// terminal is as it was then. `runCommand` runs a command of vek while the screen is away. A
/// Failure where there is no terminal that can do this.
void showOnScreen(Browser& browser, bool hasColor,
                  const std::function<void(const std::vector<std::string>&)>& runCommand);

}  // namespace vek::browse
