#pragma once

#include <string>
#include <string_view>

#include "formats/input/input.h"
#include "formats/log/log.h"
#include "formats/reading/open_log.h"

namespace testing_support {

// A log read from a text, as if it were a file of that name.
inline vek::formats::Log logOf(std::string_view text, const std::string& name = "log.csv",
                               const vek::formats::Opening& opening = {}) {
    vek::formats::Input input(name, text, opening);
    return vek::formats::openLog(input, name, opening);
}

}  // namespace testing_support
