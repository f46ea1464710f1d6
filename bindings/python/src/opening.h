#pragma once

#include "shared_log.h"

namespace vekpy {

/// Logs that are opened, of a path or of a file object, read from a text, or made.
Shared open(const py::object& file, bool isToChange, const py::kwargs& options);
Shared loads(py::handle text, py::handle name, const py::kwargs& options);
Shared create(const py::object& columns, const py::object& rows, py::handle name);

}  // namespace vekpy
