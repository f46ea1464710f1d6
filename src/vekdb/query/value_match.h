#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string_view>

#include <vekdb/field_types.h>
#include "host/text_finder.h"

/// Whether a date stored as a number of seconds satisfies the criteria as it is printed.
bool dateMatches(std::string_view value, const TextSearch::Criteria& criteria, unsigned flags);
/// Whether a timecode stored as digits satisfies the criteria with its punctuation.
bool digitsMatch(std::string_view value, const TextSearch::Criteria& criteria, unsigned flags);

/// Whether a value of a column of this type satisfies the criteria; `flags` as `TextSearch::match`
/// takes them, to which a timecode adds its own.
inline bool valueMatches(std::string_view value, DBFieldTypes::eType type,
                         const TextSearch::Criteria& criteria, unsigned flags) {
    switch (type) {
        case DBFieldTypes::timecode:
            return TextSearch::match(value, criteria, flags | TextSearch::eMatchTimecode);
        case DBFieldTypes::timecode_s:
            return digitsMatch(value, criteria, flags | TextSearch::eMatchTimecode);
        case DBFieldTypes::dos_date:
            return dateMatches(value, criteria, flags);
        default:
            return TextSearch::match(value, criteria, flags);
    }
}

/// What finds the values of a column of this type that satisfy the criteria, where that is one
/// term that stands in the value as it is.
inline std::optional<TextSearch::Finder> finderFor(DBFieldTypes::eType type,
                                                   const TextSearch::Criteria& criteria,
                                                   unsigned flags) {
    switch (type) {
        case DBFieldTypes::timecode:
            return TextSearch::Finder::of(criteria, flags | TextSearch::eMatchTimecode);
        case DBFieldTypes::timecode_s:
        case DBFieldTypes::dos_date:
            return std::nullopt;
        default:
            return TextSearch::Finder::of(criteria, flags);
    }
}

/// Two columns that hold the start and the end of a range; either may be missing.
struct LabelColumns {
    static constexpr unsigned missing = 0xFFFFFFFF;
    unsigned start = missing;
    unsigned end = missing;
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
