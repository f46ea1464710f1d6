#pragma once

#include <pybind11/pybind11.h>

namespace vekpy {

void bindContainers(pybind11::module_& module);

}  // namespace vekpy
