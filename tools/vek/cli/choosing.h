#pragma once

#include <string>
#include <vector>

#include "formats/choosing/select.h"
#include "tools/vek/cli/command.h"

namespace vek {

/// The options of a Selection: those that choose rows, and those that order them.
std::vector<Option> choosingOptions();
std::vector<Option> orderingOptions();
/// The two together.
std::vector<Option> selectionOptions();

/// What the command line says; options that the command does not have count as not given.
Selection selectionFrom(const Args& args);

/// The --every option, and a Failure for a command that would change all rows without it.
Option everyOption();
void requireChoice(const std::string& command, const Selection& selection, const Args& args);

}  // namespace vek
