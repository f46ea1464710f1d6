#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// The parts of a number format's code.
namespace vek::formats {

struct FormatToken {
    enum Kind {
        literal,
        year,
        month,
        day,
        hour,
        minute,
        second,
        fraction,  ///< of a second
        halfDay,   ///< AM/PM
        hours,     ///< elapsed, as are the next two
        minutes,
        seconds,
        digit,  ///< 0, # or ?
        point,
        comma,
        percent,
        exponent,
        slash,
        general,
        cellText,
    };
    Kind kind;
    std::string text = {};  ///< of a literal, or what stands there
    std::size_t count = 1;  ///< letters of a date's part
};

/// One of up to four sections, which stand for positive and negative numbers, zero and texts, or
/// for what their conditions say.
struct FormatSection {
    std::vector<FormatToken> tokens;
    std::string comparison = {};  ///< "<", ">=" and so on; "" where there is no condition
    double bound = 0;
    bool isDate = false;
};

std::vector<FormatSection> formatSections(std::string_view code);

}  // namespace vek::formats
