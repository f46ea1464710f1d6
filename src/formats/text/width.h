#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// How texts look on a terminal. Knows utf8proc, as letters.h does.
namespace vek::formats {

/// Terminal cells of an escaped text: wide characters take two, combining ones none.
std::size_t displayWidth(std::string_view text);

/// The text with control characters, broken bytes and characters that cannot be seen or turn
/// the direction written out (\n, \t, \x1b), so that it is safe on a terminal and takes one line.
std::string escaped(std::string_view text);

/// The terminal cells that a text takes once it is escaped, without making that text.
std::size_t escapedWidth(std::string_view text);

/// The escaped text in at most `width` cells; what does not fit is cut and ends in an ellipsis.
std::string fitted(std::string_view text, std::size_t width);

/// Whether the text is well-formed UTF-8.
bool isUtf8(std::string_view text);

}  // namespace vek::formats
