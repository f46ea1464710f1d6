#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// JSON texts. The only place that knows the JSON library.
namespace vek::formats {

/// Where a JSON text is none, or holds something other than rows.
struct JsonFault {
    std::size_t line = 0;
    std::string found;
};

/// What is wrong with a text of rows that begins on a line; it is read as if `before` stood in
/// front of it. Line 0 when nothing is.
JsonFault faultOfJsonRows(std::string_view before, std::string_view text, std::size_t line);

/// An array or object, without blanks.
struct CompactJson {
    std::string text;
    std::size_t size = 0;  ///< as it stood
};

/// The one that a text begins with; nothing where there is none.
std::optional<CompactJson> compactJson(std::string_view text);

/// A quoted JSON string. Bytes that are no UTF-8 become U+FFFD, and `wasChanged` true.
std::string jsonString(std::string_view text, bool& wasChanged);
std::string jsonString(std::string_view text);
/// The same behind another text.
void addJsonString(std::string& out, std::string_view text, bool& wasChanged);
/// A member's name. The one by which a timeline is told from rows is written with an escape.
std::string jsonName(std::string_view name, bool& wasChanged);

}  // namespace vek::formats
