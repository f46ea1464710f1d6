#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vek::formats {

/// A text of which each entity that its own document type declares is replaced by what it stands
/// for. Lines stay where they are. Entities in other files are never looked for; those, and such as
/// nobody declares, stay as they are written.
struct ExpandedXml {
    std::string text;
    struct Unknown {
        std::string name;
        std::size_t offset = 0;  ///< in the new text
    };
    std::vector<Unknown> unknown;  ///< the first place of each
    std::string refused = {};      ///< why nothing is replaced; "" where all is well
    std::size_t refusedAt = 0;     ///< in the text that came
};

/// Nothing for a text that refers to no entity but those of XML itself. Of entities at most `most`
/// bytes are made, all their own parts counted, and none holds itself.
std::optional<ExpandedXml> expandedEntities(std::string_view text, std::size_t most);

}  // namespace vek::formats
