#pragma once

#include "formats/json/json_writer.h"
#include "tools/vek/cli/command.h"

namespace vek {

/// The --format of commands that tell something: text for people, or json for programs.
Option tellingOption();
bool tellsJson(const Args& args);

}  // namespace vek
