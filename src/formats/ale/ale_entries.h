#pragma once

#include <string_view>
#include <vector>

#include "formats/text/text_lines.h"

namespace vek::formats {

/// An entry of an ALE's heading.
struct AleEntry {
    std::string_view name;
    std::string_view value;
};

/// Those of a line: one as a rule; some programs put all on one line.
std::vector<AleEntry> aleEntries(std::string_view line);

/// Whether a line ends the heading's entries; the columns' names follow.
inline bool beginsAleColumns(std::string_view line) {
    return sameText(trimmed(line), "Column");
}

}  // namespace vek::formats
