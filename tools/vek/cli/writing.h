#pragma once

#include <string_view>
#include <vector>

#include "formats/writing/writers.h"
#include "tools/vek/cli/command.h"
#include "tools/vek/cli/printout.h"

namespace vek {

/// A Failure where an option of style is not for what is printed, which is a format or "table".
void requireStyleOf(const Args& args, std::string_view target);
/// The style that the command line asks for; a Failure where it does not go with the target.
WriteStyle styleFrom(const Args& args, Format target);
/// A Failure for a workbook that would go to a terminal.
void requireFile(Format target, const Printout& out);
/// Its options, and whether one of them is given.
std::vector<Option> styleOptions();
bool asksForStyle(const Args& args);

/// The --backup option.
Option backupOption();

}  // namespace vek
