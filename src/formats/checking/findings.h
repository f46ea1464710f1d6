#pragma once

#include <string>
#include <vector>

#include <vekdb/formats/keycode.h>
#include "formats/checking/problem_list.h"
#include "formats/log/log.h"

/// Everything that is wrong with a log, or odd and yet right.
namespace vek::formats {

class Input;

/// What was found in one log.
struct Findings {
    std::string file;
    std::string failure = {};  ///< why it could not be read
    ProblemList problems = {};
    std::size_t remarks = 0;  ///< how many of them are about what is odd and yet right
    std::size_t more = 0;     ///< of reading, that are only counted
    std::string notRead = {};

    std::size_t problemCount() const {
        return problems.size() + more - remarks + (notRead.empty() ? 0 : 1);
    }
};

/// Goes through a log that was read from this input.
Findings findingsOf(const Log& log, Input& input, const Gauge& gauge);

/// Whether a problem is such a remark.
bool isRemark(const Problem& problem);

}  // namespace vek::formats
