#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "formats/log/log.h"

/// What stands in front of the heading of a text between marks, or of its first row where it has no
/// heading.
namespace vek::formats {

/// What the first line says that separates the cells: "sep=;".
std::optional<char> delimiterInFront(std::string_view text);

/// What separates the cells: what a person says counts first, then what the file says.
char delimiterFor(std::string_view text, std::optional<char> named, char usual, const Log& log);

/// What is behind so many lines.
std::string_view behindLines(std::string_view text, std::size_t count);

struct LinesInFront {
    std::size_t said = 0;   ///< those to pass over, or the one that names the delimiter
    std::size_t blank = 0;  ///< behind them, in front of several cells

    static LinesInFront of(std::string_view text, char usual, const Log& log);
    std::size_t count() const { return said + blank; }
};

}  // namespace vek::formats
