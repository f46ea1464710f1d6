#pragma once

#include "formats/text/text_lines.h"
#include "formats/writing/writers.h"

namespace vek::formats {

/// Tells the second line of a transition that is written without its first one.
inline void tellHalfTransition(const std::string& log, std::size_t line, Losses& losses) {
    losses.add("transitions without the event that they go over from",
               concat(log, ":", std::to_string(line)));
}

/// Tells the first line of one that is written without the second.
inline void tellLostTransition(const std::string& log, std::size_t line, Losses& losses) {
    losses.add("events without the transition that goes over from them",
               concat(log, ":", std::to_string(line)));
}

}  // namespace vek::formats
