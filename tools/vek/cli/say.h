#pragma once

#include <string>

namespace vek {

/// One message on the standard error stream, "vek: " before it and a line end behind. Control
/// characters are shown escaped, so that a file's content never reaches the terminal raw.
void say(const std::string& text);

}  // namespace vek
