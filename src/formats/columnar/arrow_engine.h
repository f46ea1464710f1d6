#pragma once

#include <string>
#include <string_view>

#include "formats/columnar/engine.h"

namespace vek::formats {

/// Has a library write a file of Arrow: Python's pyarrow, or apache-arrow of Node. What VEK_ARROW
/// names is taken alone, a Python with pyarrow or the folder of apache-arrow. A Failure with
/// `unwritable` that says what to install where there is none, or what it said where it failed.
///
/// The order is JSON: the "fields" with "name" and "metadata", the "metadata" of all, each as a
/// list of pairs, and the "batches", each a number of rows and the bytes of each column. The rows
/// are batch after batch, column after column: where each cell begins and the last one ends, in 32
/// bits of the machine's order, and then the cells' bytes.
void runArrow(std::string_view order, EngineFiles& files, const std::string& output);

}  // namespace vek::formats
