#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Texts of logs on their way into a page. Nothing that these functions add can end the element,
/// attribute or string it stands in, whatever a log holds.
namespace vek::page {

/// The text as `vek show` shows it, what cannot be seen written out: between tags, and in
/// attributes between quotes.
void addText(std::string& out, std::string_view text);
std::string asText(std::string_view text);

/// The same with at most so many bytes of the text, and how many are left out behind them.
void addShortText(std::string& out, std::string_view text, std::size_t most);

/// A string of JSON, with its quotes, as it may stand in a script element. A byte that is no
/// character is the lone surrogate U+DC00 and its value, which no text has: so all bytes stay.
void addJson(std::string& out, std::string_view text);

/// Numbers in as few characters as their steps take: each one's difference from the one before,
/// by seven bits a byte, in base64.
std::string packedNumbers(const std::vector<std::uint32_t>& numbers);

/// The base64 of bytes.
std::string base64(std::string_view bytes);

}  // namespace vek::page
