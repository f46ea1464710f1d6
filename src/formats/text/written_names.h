#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Names of columns as people write them. A name with signs in it that mean something else where
/// it stands goes between brackets: "[c<d]=x", "[Name, clip],Take", "{[a|b]}". Within brackets
/// "]]" is a bracket, and "[c<d]#2" is the second column of the name c<d.
namespace vek::formats {

struct WrittenName {
    std::string name;
    std::size_t turn = 0;  ///< which one of the name, from 1 on; 0 where that is not said
    std::size_t size = 0;  ///< of what was written, brackets included
};

/// The name between brackets that a text begins with; nothing where none is closed.
std::optional<WrittenName> bracketedName(std::string_view text);

/// The same where the whole text is such a name; nothing otherwise.
std::optional<WrittenName> unbracketed(std::string_view text);

/// A name between brackets; the same only where it has signs in it that need them.
std::string inBrackets(std::string_view name);
std::string asWritten(const std::string& name);

/// The names of a list between commas, those in brackets still in them.
std::vector<std::string_view> splitNames(std::string_view list);

}  // namespace vek::formats
