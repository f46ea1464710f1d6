#pragma once

#include <cstdint>

/// Where the values of a line of plainly quoted ones are cut off from each other, found bit by bit
/// or, where the machine has wide registers, many at a time. All ways give the same results.
///
/// `openings` marks the quotes that open a value, a bit for each byte of the line, in `words` words
/// of 64; each stands three bytes behind the one before at least, and two behind the line's first
/// byte. The quote that closes the value before, two bytes in front of each, becomes a NUL, and the
/// opening's place is noted at `places`; what is behind the last one noted.
using CutValues = std::uint16_t*(char* line, const std::uint64_t* openings, unsigned words,
                                 std::uint16_t* places);
/// In the widest registers that the machine has.
CutValues cutValues;
/// Without such registers.
CutValues cutValuesNarrowly;
/// In registers of 64 bytes; null where the machine has none that can pick bytes.
CutValues* cutValuesWidest();
