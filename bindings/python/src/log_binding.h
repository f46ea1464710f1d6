#pragma once

#include "rows.h"

namespace vekpy {

/// Adds a row with these cells; none where one of them cannot be stored.
Row appendRow(const Shared& log, const py::dict& cells, const py::kwargs& more = {});

void bindLog(py::module_& module);

}  // namespace vekpy
