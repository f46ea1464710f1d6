#pragma once

#include <string>
#include <string_view>

#include <vekdb/host/text_util.h>

/// Letters of all alphabets. Knows utf8proc, as width.h does.
namespace vek::formats {

/// Adds the text with every letter of it in upper case, or in lower case. A letter stays one
/// letter; bytes that are no UTF-8 stay as they are.
void addUpper(std::string& out, std::string_view text);
void addLower(std::string& out, std::string_view text);

/// The same for names that a file system takes for the same which ignores case and tells
/// composed letters not from those that are made of two.
std::string foldedName(std::string_view text);

/// Whether a byte is a letter or a digit of ASCII.
constexpr bool isAsciiLetterOrDigit(char c) {
    return isAsciiDigit(c) || (asciiLower(c) >= 'a' && asciiLower(c) <= 'z');
}

}  // namespace vek::formats
