#pragma once

#include "formats/log/log.h"
#include "tools/vek/cli/command.h"

namespace vek {

/// What is said of the form of a log holds for each that a command joins or compares. Says so of
/// one behind the first, where the options are for both: its heading may be what was passed over.
void tellSharedOptions(const Log& first, const Log& log, const Args& args);

}  // namespace vek
