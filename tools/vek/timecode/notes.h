#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "formats/log/log.h"
#include "tools/vek/cli/command.h"

namespace vek::timecode {

/// The columns of an edit list's notes that are there: Comments, Comments 2, ...
std::vector<unsigned> noteColumns(const Log& log, std::string (*name)(std::size_t));

/// The line with another text in the place of one that lies in it.
std::string withPart(std::string_view line, std::string_view part, std::string_view now);

}  // namespace vek::timecode
