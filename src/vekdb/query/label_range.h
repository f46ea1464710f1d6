#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string_view>

#include <vekdb/host/text_search.h>

struct SpecialLabelPair;

/// Gives the column of a name, or 0xFFFFFFFF.
using FindColumn = std::function<unsigned(const char* name)>;

/// Two columns that hold the start and the end of a range; either may be missing.
struct LabelColumns {
    static constexpr unsigned missing = 0xFFFFFFFF;
    unsigned start = missing;
    unsigned end = missing;
};

/// The two columns of a pair.
LabelColumns labelColumns(const FindColumn& find, const SpecialLabelPair& pair);

/// Whether the range from one column to the other holds a text.
struct RangeQuestion {
    LabelColumns columns;
    std::string_view text;
};

/// The text that a range column is asked for: that of the first criterion, as a C string.
std::string_view rangeText(const TextSearch::Criteria& criteria);

/// Eight bytes as a number that is ordered as they are.
inline std::uint64_t orderedWord(const char* bytes) {
    std::uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    return std::endian::native == std::endian::little ? __builtin_bswap64(word) : word;
}

/// As memcmp. What ranges are made of has 8 to 16 bytes: two words that may overlap, without a
/// call.
inline int compareBytes(const char* a, const char* b, std::size_t n) {
    if (n < sizeof(std::uint64_t) || n > 2 * sizeof(std::uint64_t)) return std::memcmp(a, b, n);
    std::uint64_t left = orderedWord(a);
    std::uint64_t right = orderedWord(b);
    if (left == right) {
        left = orderedWord(a + n - sizeof left);
        right = orderedWord(b + n - sizeof right);
    }
    return (left > right) - (left < right);
}

/// As strncmp over the length of the text.
inline int compareFront(std::string_view value, std::string_view text) {
    const std::size_t n = value.size() < text.size() ? value.size() : text.size();
    const int order = compareBytes(value.data(), text.data(), n);
    return order != 0 || n == text.size() ? order : -1;
}

/// Whether the start begins with the text, or the range from start to end holds it, comparing as
/// many characters as the text has.
inline bool rangeHolds(std::string_view start, std::string_view end, std::string_view text) {
    if (start.empty()) return false;
    const int startOrder = compareFront(start, text);
    if (startOrder == 0) return true;
    return !end.empty() && startOrder < 0 && compareFront(end, text) >= 0;
}
