#pragma once

#include "shared_log.h"

namespace vekpy {

/// Joins further logs to a log; the module's Merged.
py::object merge(const Shared& into, const py::args& others, py::handle key,
                 const std::string& prefer, bool joinsUnlike, std::size_t mostConflicts);
/// How two logs differ; the module's Differences.
py::object diff(const Shared& first, const Shared& second, py::handle key);

}  // namespace vekpy
