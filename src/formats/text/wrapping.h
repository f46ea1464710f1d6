#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vek::formats {

/// The escaped text in lines of at most `width` terminal cells, 1 or more. They end between words
/// where they can, and within a word that is wider than a line; a character that is wider than
/// a line has one of its own. One line where there is no text.
std::vector<std::string> wrapped(std::string_view text, std::size_t width);

}  // namespace vek::formats
