#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Names of columns as people write them. A name with signs in it that mean something else where
/// it stands goes between brackets: "[c<d]=x", "[Name, clip],Take", "{[a|b]}". Within brackets
/// "]]" is a bracket.
namespace vek::formats {

struct WrittenName {
    std::string name;
    std::size_t size = 0;  ///< of what was written, brackets included
};

/// The name between brackets that a text begins with; nothing where none is closed.
std::optional<WrittenName> bracketedName(std::string_view text);

/// The name that is meant where the whole text is a name between brackets; nothing otherwise.
std::optional<std::string> unbracketed(std::string_view text);

/// The names of a list between commas, those in brackets still in them.
std::vector<std::string_view> splitNames(std::string_view list);

}  // namespace vek::formats
