#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// JSON texts. The only place that knows the JSON library.
namespace vek {

/// One object of a JSON text: names and values in their order, the values as they were written
/// (strings without their quotes, everything else as its own text, null as nothing).
struct JsonRow {
    std::size_t line = 0;
    std::vector<std::string> names;
    std::vector<std::string> values;
};

/// What a JSON text held, and where it went wrong: line 0 when it did not.
struct JsonRows {
    std::vector<JsonRow> rows;
    std::size_t errorLine = 0;
    std::string error;
};

/// Reads an array of objects, one object, or objects one after the other.
JsonRows parseJsonRows(std::string_view text);

/// A quoted JSON string. Bytes that are no UTF-8 become U+FFFD, and `wasChanged` true.
std::string jsonString(std::string_view text, bool& wasChanged);
std::string jsonString(std::string_view text);

}  // namespace vek
