#pragma once

#include <string>

#include "tools/vek/report/log_on_page.h"

/// The pictures of a log, each a figure with its heading; "" where the log has nothing for it.
namespace vek::page {

/// A lane for each reel, clips at their start timecodes.
std::string timelineOf(const LogOnPage& log);

/// Scenes against takes.
std::string coverageOf(const LogOnPage& log);

/// A bar for each reel and each scene.
std::string runningTimeOf(const LogOnPage& log);

}  // namespace vek::page
