#pragma once

#include <cstdint>
#include <optional>

/// Days as sheets count them.
namespace vek::formats {

struct SerialTime {
    int year = 0;
    unsigned month = 0;
    unsigned day = 0;
    unsigned weekday = 0;      ///< 0 is Sunday
    std::int64_t days = 0;     ///< whole ones of the number
    std::int64_t seconds = 0;  ///< of the day
    unsigned fraction = 0;     ///< of the second, in the units that were asked for
};

/// The moment of a number, rounded to a second or to the unit of so many digits behind it. Nothing
/// for what lies before the first day or behind the year 9999. February 1900 has 29 days there.
std::optional<SerialTime> serialTime(double value, bool from1904, unsigned digits);

}  // namespace vek::formats
