#pragma once

#include <cstddef>
#include <string_view>

#include <vekdb/host/text_util.h>
#include <vekdb/sort.h>

class dbrecord;

/// The record comparison without the counting, and its rules one by one for whoever prepares
/// keys of the same order. All of it goes by the process-wide state of `vekdb/sort.h`.
int compareAscending(const dbrecord& a, const dbrecord& b);
int compareDescending(const dbrecord& a, const dbrecord& b);

inline void countComparisons(std::size_t n) {
    comco = static_cast<int>(static_cast<unsigned>(comco) + static_cast<unsigned>(n));
}

/// Negative, 0 or positive; only the letters A to Z have a case.
int compareIgnoringCase(std::string_view a, std::string_view b);

/// The columns in force; an empty list where none was prepared.
const int* sortColumns();

/// A value up to its first NUL, as a comparison of C strings sees it.
std::string_view textToCompare(const dbrecord& record, int column);
inline std::string_view withoutLeadingSpace(std::string_view text) {
    std::size_t blanks = 0;
    while (blanks < text.size() && isAsciiSpace(text[blanks])) ++blanks;
    return text.substr(blanks);
}

enum class ValueOrder { people, timecode, part };
ValueOrder valueOrderOf(int column);

/// The characters of a timecode that count: those before the separator of the frames, which is
/// skipped whatever it is, and those behind it.
inline constexpr std::size_t timecodeHeadLength = 8;
inline std::string_view timecodeHead(std::string_view text) {
    return text.substr(0, timecodeHeadLength);
}
inline std::string_view timecodeTail(std::string_view text) {
    return text.size() > timecodeHeadLength ? text.substr(timecodeHeadLength + 1) : "";
}

/// What the sort offset leaves of a value.
std::string_view partToCompare(std::string_view text);
