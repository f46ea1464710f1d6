#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "formats/log/log.h"
#include "tools/vek/cli/command.h"

namespace vek {

/// A cell before and after a change that is still to be made.
struct Edit {
    unsigned row = 0;
    unsigned short column = 0;
    std::string_view before;  ///< in the table, until it is made
    std::string after;
};

/// Shows them to a person.
void printEdits(const Log& log, const std::vector<Edit>& edits, const Args& args);

/// Makes them, in the table alone.
void makeEdits(Log& log, const std::vector<Edit>& edits);

/// The --dry-run option.
Option dryRunOption();

}  // namespace vek
