#pragma once

#include <string>
#include <vector>

#include "formats/writing/output.h"
#include "tools/vek/report/log_on_page.h"

namespace vek::page {

/// Writes a log as the page's script reads it: each column with its values, each once and in the
/// order of a sort, and for each row the place of its value among them.
void writeData(const LogOnPage& log, Output& out);

}  // namespace vek::page
