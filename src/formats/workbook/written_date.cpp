#include "formats/workbook/written_date.h"

#include <charconv>
#include <chrono>

namespace vek::formats {

namespace {

constexpr int daysBefore1904 = 1462;
constexpr int firstCommonDay = 61;  // 1 March 1900, behind a day that never was

// Takes so many digits off, and the sign behind them where there is one.
std::optional<unsigned> takeNumber(std::string_view& text, std::size_t digits, char sign) {
    unsigned number = 0;
    if (text.size() < digits) return {};
    const auto [end, error] = std::from_chars(text.data(), text.data() + digits, number);
    if (error != std::errc() || end != text.data() + digits) return {};
    text.remove_prefix(digits);
    if (sign == '\0') return number;
    if (!text.starts_with(sign)) return {};
    text.remove_prefix(1);
    return number;
}

std::optional<int> takeDay(std::string_view& text) {
    const std::optional<unsigned> year = takeNumber(text, 4, '-');
    const std::optional<unsigned> month = year ? takeNumber(text, 2, '-') : year;
    const std::optional<unsigned> day = month ? takeNumber(text, 2, '\0') : month;
    if (!day) return {};
    const std::chrono::year_month_day date(std::chrono::year(static_cast<int>(*year)),
                                           std::chrono::month(*month), std::chrono::day(*day));
    if (!date.ok()) return {};
    const std::chrono::sys_days first = std::chrono::year(1899) / 12 / 30;
    const auto days = (std::chrono::sys_days(date) - first).count();
    const bool isUnsure = days < firstCommonDay && days != 0;
    return isUnsure ? std::optional<int>() : static_cast<int>(days);
}

// The point of a second and what is behind it.
double takeFraction(std::string_view& text) {
    if (!text.starts_with('.')) return 0;
    double part = 0;
    double unit = 0.1;
    text.remove_prefix(1);
    for (; !text.empty() && text[0] >= '0' && text[0] <= '9'; text.remove_prefix(1)) {
        part += unit * (text[0] - '0');
        unit /= 10;
    }
    return part;
}

std::optional<double> takeTime(std::string_view& text) {
    const std::optional<unsigned> hours = takeNumber(text, 2, ':');
    const std::optional<unsigned> minutes = hours ? takeNumber(text, 2, ':') : hours;
    const std::optional<unsigned> seconds = minutes ? takeNumber(text, 2, '\0') : minutes;
    if (!seconds || *hours > 23 || *minutes > 59 || *seconds > 59) return {};
    return ((*hours * 60 + *minutes) * 60 + *seconds + takeFraction(text)) / 86400.0;
}

}  // namespace

std::optional<double> writtenDate(std::string_view text, bool from1904) {
    if (text.ends_with('Z')) text.remove_suffix(1);
    const bool isTime = text.size() > 2 && text[2] == ':';
    std::optional<int> days = isTime ? 0 : takeDay(text);
    if (!days) return {};
    if (!isTime && from1904) *days -= daysBefore1904;
    if (*days < 0) return {};
    if (text.empty()) return *days;
    if (!isTime && !text.starts_with('T')) return {};
    if (!isTime) text.remove_prefix(1);
    const std::optional<double> time = takeTime(text);
    if (!time || !text.empty()) return {};
    return *days + *time;
}

}  // namespace vek::formats
