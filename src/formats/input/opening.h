#pragma once

#include <optional>
#include <string>
#include <vector>

#include <vekdb/formats/format.h>
#include "formats/input/limits.h"
#include "formats/input/text_form.h"

namespace vek::formats {

class Watcher;

/// Conditions that all must hold, as parseCondition reads them. A reader may leave out rows of
/// which one does not hold; which, the log tells.
using Wanted = std::vector<std::string>;

/// How a log is opened. What it points to outlives the log.
struct Opening {
    std::optional<Format> format = {};  ///< found out by the ending and the content as a rule
    Wanted wanted = {};
    ReadingWishes wishes = {};
    Limits limits = {};
    const Terms* terms = &ownTerms;
    Watcher* watcher = nullptr;  ///< of reading, and of writing what was read
};

}  // namespace vek::formats
