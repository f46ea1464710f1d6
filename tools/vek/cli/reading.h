#pragma once

#include <string>
#include <string_view>

#include <vekdb/formats/keycode.h>
#include "formats/log/log.h"
#include "formats/timecode/counting.h"
#include "tools/vek/cli/command.h"

namespace vek {

/// What the command line says of how logs are read; a Failure where it cannot be.
Opening openingFrom(const Args& args);
/// What messages of the library call the options of the program.
const Terms& programTerms();

/// Reads a log, and says what is wrong with it.
Log readLog(const std::string& path, const Opening& opening);
/// The same as the command line says it, of which an option that is not for the log's format is
/// refused; where there are several logs, it is told.
Log readLog(const std::string& path, const Args& args);
/// The log named by an argument, "FILE" as a rule.
Log readLog(const Args& args, std::string_view argument = "FILE", const Wanted& wanted = {});

/// The same for a file that is being written: of a last line that has no end nothing is told.
Log readGrowingLog(const Args& args);

/// A Failure where a path is that of a pipe or a device, whose bytes cannot be replaced: writing
/// there would wait for a reader, or go to somebody else.
void requireChangeable(const std::string& path);

/// The same for a command that changes the file: from before it is read until it has been
/// replaced no other one changes it.
Log readLogToChange(const std::string& path, const Opening& opening);
Log readLogToChange(const Args& args, std::string_view argument = "FILE");
/// The same for a copy with other rows or cells: the file itself stays as it is.
Log readLogToCopy(const Args& args, std::string_view argument = "FILE");
Log readLogToCopy(const std::string& path, const Args& args);
Log readLogToCopy(const std::string& path, const Opening& opening);

/// done, or found when the file was damaged.
int readingResult(const Log& log);

/// The --from option.
Option fromOption();

/// The option --fps.
Option fpsOption();

/// The rate of --fps, "" when it was not given; a Failure when it is none.
std::string wantedRate(const Args& args);
/// Says where --fps goes before another rate, or another counting, that the log names itself.
void tellOtherRate(const Log& log, const LogCounting& counting);

/// The option --gauge.
Option gaugeOption();
/// The gauge that it names, 35 mm film with 4 perforations when it was not given.
const Gauge& wantedGauge(const Args& args);

/// What can be said of every log that is read: its bytes and how much it may be; and how much may
/// be written.
std::vector<Option> limitOptions();

}  // namespace vek
