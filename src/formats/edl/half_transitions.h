#pragma once

#include "formats/text/text_lines.h"
#include "formats/writing/writers.h"

namespace vek::formats {

/// Tells the second line of a transition that is written without its first one.
inline void tellHalfTransition(const Log& log, std::size_t line, Losses& losses) {
    losses.add("transitions without the event that they go over from",
               concat(log.name, ":", std::to_string(line)));
}

}  // namespace vek::formats
