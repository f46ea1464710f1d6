#pragma once

#include <string>

namespace vek::formats {

/// A Failure for a file that the system does not let be read, by the error's number, with what to
/// do about it.
[[noreturn]] void refuseReading(const std::string& name, int error);

}  // namespace vek::formats
