#pragma once

#include <string>

#include "formats/input/opening.h"
#include "formats/log/log.h"

namespace vek::formats {

class Input;

/// Reads a log. A Failure when nothing could be read; what else is wrong the log says.
Log openLog(Input& input, const std::string& path, const Opening& opening);
Log openLog(const std::string& path, const Opening& opening);

/// The same for one that is to be changed in place: from before it is read until it has been
/// replaced no other one changes it.
Log openLogToChange(const std::string& path, const Opening& opening);
/// The same for a copy with other rows or cells: the file itself stays as it is.
Log openLogToCopy(const std::string& path, const Opening& opening);

}  // namespace vek::formats
