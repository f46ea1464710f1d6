#pragma once

#include <string>

#include "tools/vek/report/page.h"

/// What stands in front of the pictures, as markup.
namespace vek::page {

/// Clips, scenes, takes, running time, footage and tagged rows.
std::string numbersOf(const LogOnPage& log);

/// The log's own parameters, and what its file is.
std::string parametersOf(const LogOnPage& log);

/// What `vek check` finds, with links to the rows.
std::string findingsOf(const LogOnPage& log);

/// The numbers of each log, and of all together.
std::string totalsOf(const LogsOnPage& logs);

}  // namespace vek::page
