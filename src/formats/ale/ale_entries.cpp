#include "formats/ale/ale_entries.h"

#include <algorithm>

#include "formats/text/text_lines.h"

namespace vek::formats {

std::vector<AleEntry> aleEntries(std::string_view line) {
    std::vector<std::string_view> pieces = split(line, '\t');
    while (pieces.size() > 2 && pieces.back().empty()) pieces.pop_back();
    if (pieces.size() <= 2 || pieces.size() % 2 != 0) {
        const std::size_t tab = std::min(line.find('\t'), line.size());
        return {{line.substr(0, tab), line.substr(std::min(tab + 1, line.size()))}};
    }
    std::vector<AleEntry> entries;
    for (std::size_t i = 0; i < pieces.size(); i += 2)
        entries.push_back({pieces[i], pieces[i + 1]});
    return entries;
}

}  // namespace vek::formats
