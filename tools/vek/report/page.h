#pragma once

#include <memory>
#include <vector>

#include "formats/writing/output.h"
#include "tools/vek/report/log_on_page.h"

namespace vek::page {

using LogsOnPage = std::vector<std::unique_ptr<LogOnPage>>;

/// Writes one page about the logs, at least one. It asks nothing of any other place.
void writePage(const LogsOnPage& logs, Output& out);

}  // namespace vek::page
