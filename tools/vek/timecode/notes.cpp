#include "tools/vek/timecode/notes.h"

#include "formats/text/text_lines.h"

namespace vek::timecode {

std::vector<unsigned> noteColumns(const Log& log, std::string (*name)(std::size_t)) {
    std::vector<unsigned> columns;
    for (std::size_t piece = 0;; ++piece) {
        const unsigned column = log.findColumn(name(piece));
        if (column == noColumn) return columns;
        columns.push_back(column);
    }
}

std::string withPart(std::string_view line, std::string_view part, std::string_view now) {
    const auto at = static_cast<std::size_t>(part.data() - line.data());
    return concat(line.substr(0, at), now, line.substr(at + part.size()));
}

}  // namespace vek::timecode
