#include "formats/workbook/decimal_digits.h"

#include <algorithm>
#include <charconv>

namespace vek::formats {

namespace {

constexpr int keptBehindFirst = 14;

}  // namespace

DecimalDigits DecimalDigits::of(double value) {
    DecimalDigits made;
    if (value == 0) return made;
    char text[64];
    const auto [end, error] = std::to_chars(text, text + sizeof text, value,
                                            std::chars_format::scientific, keptBehindFirst);
    const std::string written(text, end);
    const std::size_t mark = written.find('e');
    int exponent = 0;
    const char* from = written.data() + mark + 1;
    if (*from == '+') ++from;
    std::from_chars(from, written.data() + written.size(), exponent);
    made.digits = written.substr(0, 1) + written.substr(2, mark - 2);
    made.digits.erase(made.digits.find_last_not_of('0') + 1);
    made.point = exponent + 1;
    return made;
}

void DecimalDigits::round(std::ptrdiff_t decimals) {
    const std::ptrdiff_t kept = point + decimals;
    if (kept >= static_cast<std::ptrdiff_t>(digits.size())) return;
    const bool isUp = kept >= 0 && digits[static_cast<std::size_t>(kept)] >= '5';
    digits.resize(static_cast<std::size_t>(std::max<std::ptrdiff_t>(kept, 0)));
    if (isUp) {
        while (!digits.empty() && digits.back() == '9') digits.pop_back();
        if (digits.empty()) {
            digits = "1";
            ++point;
        } else {
            ++digits.back();
        }
    }
    digits.erase(digits.find_last_not_of('0') + 1);
    if (digits.empty()) point = 0;
}

std::string DecimalDigits::whole() const {
    if (point <= 0) return {};
    std::string text = digits.substr(0, static_cast<std::size_t>(point));
    text.resize(static_cast<std::size_t>(point), '0');
    return text;
}

std::string DecimalDigits::behind(std::size_t decimals) const {
    std::string text;
    if (point < 0) text.assign(std::min(decimals, static_cast<std::size_t>(-point)), '0');
    const auto from = static_cast<std::size_t>(std::max<std::ptrdiff_t>(point, 0));
    if (from < digits.size()) text += digits.substr(from);
    text.resize(decimals, '0');
    return text;
}

}  // namespace vek::formats
