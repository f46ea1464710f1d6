#pragma once

#include <pybind11/pybind11.h>

namespace vekpy {

/// What the classes of times are made of: functions of texts and whole numbers.
void bindTimes(pybind11::module_& module);

}  // namespace vekpy
