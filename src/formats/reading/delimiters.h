#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vek::formats {

/// What separates the cells of a text, as its first lines show it. The usual one, unless its
/// heading has but one name by that, or no row has as many cells as the heading, and another one
/// makes a table of the lines or stands in each of them: comma, semicolon, tab or a stroke. Of a
/// text that is not whole, the line at which it is cut shows nothing.
char foundDelimiter(std::string_view text, bool isWhole, char usual);

/// Whether the first line that is not blank is more than one cell.
bool hasSeveralCells(std::string_view text, char delimiter);

/// How many cells all lines behind the first one have by a mark of which it has none itself, as a
/// line in front of a heading. 0 where there is none such.
std::size_t cellsBehindFirstLine(std::string_view text);

/// Whether it is a sign that no cell is made of alone.
bool isMark(char c);

/// What "sep=;" says, the line in front of the heading by which spreadsheets name what separates
/// the cells; nothing for other lines.
std::optional<char> delimiterOfLine(std::string_view line);

/// Whether the first lines are cells between marks, two and more and in each as many.
bool isDelimited(std::string_view text, bool isWhole);

/// What people call a delimiter: "comma", "semicolon", "tab", "pipe", others by themselves in
/// quotes; and the delimiter of such a name, nothing for another.
std::string delimiterName(char delimiter);
std::optional<char> delimiterNamed(std::string_view name);

}  // namespace vek::formats
