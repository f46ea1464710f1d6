#pragma once

#include <cstddef>
#include <string>

/// The decimal digits of a number, as many as a sheet keeps.
namespace vek::formats {

struct DecimalDigits {
    std::string digits;        ///< without zeros in front; "" for zero
    std::ptrdiff_t point = 0;  ///< so many of them stand in front of the point

    /// Of a number that is finite and not negative, to 15 digits.
    static DecimalDigits of(double value);
    /// Keeps so many digits behind the point, rounded half up.
    void round(std::ptrdiff_t decimals);
    /// The digits in front of the point, and those behind it, filled up to so many.
    std::string whole() const;
    std::string behind(std::size_t decimals) const;
};

}  // namespace vek::formats
