#pragma once

#include "rows.h"

namespace vekpy {

/// What was said of a log that was written, as the module's Saved.
py::object savedOf(const vek::Saved& saved);
/// A format by its name; a UsageError for a name that is none.
vek::Format formatNamed(py::handle name);

/// Rows of a view, or all rows, written as the options say.
py::object saveAs(const Shared& log, const View& view, py::handle path, py::handle format,
                  const py::kwargs& options);
py::object writeTo(const Shared& log, const View& view, const py::object& file, py::handle format,
                   const py::kwargs& options);
py::bytes bytesIn(const Shared& log, const View& view, py::handle format,
                  const py::kwargs& options);
py::object wouldLose(const Shared& log, const View& view, py::handle format,
                     const py::kwargs& options);

}  // namespace vekpy
