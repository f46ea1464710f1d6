#pragma once

#include <functional>
#include <string>

#include "formats/json/json_writer.h"
#include "formats/log/log.h"
#include "tools/vek/cli/command.h"
#include "tools/vek/cli/printout.h"

/// A command that tells something of one log, for several.
namespace vek {

/// Whether the words name several logs.
bool hasSeveral(const Args& args);

/// Whether a failure leaves other logs to be told of: one that could not be read, or that has no
/// such column as was asked for.
bool isOfOneLog(const Failure& failure);

/// Does something with each of FILE, with the words that name it alone; what is wrong with one is
/// said, and told to `failed`, where it is of that one alone. Answers the greatest exit code.
int forEachLog(const Args& args, const std::function<int(const Args& one)>& tell,
               const std::function<void(const std::string& path, const std::string& why)>& failed);

/// What is printed of one log; as JSON where there is a writer. Answers an exit code.
using TellLog =
    std::function<int(const Log& log, const Args& one, Printout& out, JsonWriter* json)>;

/// Tells of each log, with a blank line between two, or as the words may ask, as one JSON object,
/// {"files": [...]}, in which a log that could not be read has its name and the failure.
int tellEach(const Args& args, const TellLog& tell);

}  // namespace vek
