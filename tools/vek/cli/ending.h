#pragma once

#include <functional>

namespace vek {

/// Runs what the program is to do, and returns its exit code. Whatever is thrown ends here, with a
/// message: what a command had begun to write is given up by then, and nothing is left beside a
/// file.
int endOf(const std::function<int()>& program);

}  // namespace vek
