#pragma once

#include <string>
#include <string_view>

#include <vekdb/formats/keycode.h>
#include "formats/log/log.h"
#include "tools/vek/cli/command.h"

namespace vek {

/// The log named by an argument, "FILE" as a rule, with the --from of the command line.
Log readLog(const Args& args, std::string_view argument = "FILE", const Wanted& wanted = {});

/// The same for a command that changes the file: from before it is read until it has been
/// replaced no other one changes it.
Log readLogToChange(const Args& args, std::string_view argument = "FILE");

/// The --from option.
Option fromOption();

/// The option --fps.
Option fpsOption();

/// The rate of --fps, "" when it was not given; a Failure when it is none.
std::string wantedRate(const Args& args);

/// The option --gauge.
Option gaugeOption();
/// The gauge that it names, 35 mm film with 4 perforations when it was not given.
const Gauge& wantedGauge(const Args& args);

/// --max-bytes and --max-cells.
std::vector<Option> limitOptions();
/// What the options say holds for all logs that are read from then on.
void setLimits(const Args& args);

}  // namespace vek
