#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// How many bytes at the text's front are well-formed UTF-8: all of them, or up to the first that
/// is not.
std::size_t wellFormedFront(std::string_view text);

/// Whether no byte is beyond 0x7F.
bool isAscii(std::string_view text);

/// The text with U+FFFD for what is no UTF-8.
std::string withReplacements(std::string_view text);
