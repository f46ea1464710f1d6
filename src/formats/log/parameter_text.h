#pragma once

#include <string>

namespace vek::formats {

/// A parameter of a log, or an entry of the heading that it comes from.
struct ParameterText {
    std::string name;
    std::string value;
};

}  // namespace vek::formats
