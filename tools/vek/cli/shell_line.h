#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// A command line as a shell has it while somebody writes it.
namespace vek {

struct ShellLine {
    std::vector<std::string> words;   ///< behind the program's name, without quotes
    std::string word;                 ///< the one that is being written, without quotes
    std::vector<std::string> behind;  ///< the words behind it, without quotes
    std::size_t kept = 0;             ///< bytes of it that stay whatever is put in for the others
    char quote = '\0';                ///< the quote that is open in it
};

/// Of bash: the line up to the cursor, the signs at which its editor ends a word, and the line from
/// the cursor on. What it puts in stands behind the last of the signs, or behind the quote that is
/// open.
ShellLine bashLine(std::string_view line, std::string_view breaks, std::string_view rest);

/// A text as it is to be put into a line of bash where this quote is open.
std::string bashQuoted(std::string_view text, char quote);

/// A word as fish has it, whose quotes may still be open, without them.
std::string fishUnquoted(std::string_view word);

}  // namespace vek
