#pragma once

#include "formats/writing/output.h"
#include "tools/vek/report/log_on_page.h"

namespace vek::page {

/// So many rows stand in the page as a table, for whoever reads it without its script.
constexpr unsigned mostPlainRows = 1000;

/// Writes the table of a log with the columns that it shows.
void writeTable(const LogOnPage& log, Output& out);

}  // namespace vek::page
