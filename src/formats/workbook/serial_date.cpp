#include "formats/workbook/serial_date.h"

#include <chrono>
#include <cmath>

namespace vek::formats {

namespace {

constexpr std::int64_t leapDayThatWasNot = 60;
constexpr std::int64_t daysBefore1904 = 1462;
constexpr std::int64_t daysTo10000 = 2958466;
constexpr std::int64_t secondsOfADay = 86400;

std::int64_t unitsIn(unsigned digits) {
    std::int64_t units = 1;
    for (unsigned i = 0; i < digits; ++i) units *= 10;
    return units;
}

void setDate(SerialTime& time, std::int64_t days) {
    time.weekday = static_cast<unsigned>((days + 6) % 7);
    if (days == 0 || days == leapDayThatWasNot) {
        time.year = 1900;
        time.month = days == 0 ? 1 : 2;
        time.day = days == 0 ? 0 : 29;
        return;
    }
    const std::int64_t behind = days > leapDayThatWasNot ? 1 : 0;
    const std::chrono::sys_days first = std::chrono::year(1899) / 12 / 31;
    const std::chrono::year_month_day date(first + std::chrono::days(days - behind));
    time.year = static_cast<int>(date.year());
    time.month = static_cast<unsigned>(date.month());
    time.day = static_cast<unsigned>(date.day());
}

}  // namespace

std::optional<SerialTime> serialTime(double value, bool from1904, unsigned digits) {
    if (!(value >= 0) || value >= static_cast<double>(daysTo10000)) return {};
    const std::int64_t units = unitsIn(digits);
    const double whole = std::floor(value);
    const auto perDay = static_cast<double>(secondsOfADay * units);
    std::int64_t ofDay = std::llround((value - whole) * perDay);
    SerialTime time;
    time.days = static_cast<std::int64_t>(whole);
    if (ofDay >= secondsOfADay * units) {
        ofDay -= secondsOfADay * units;
        ++time.days;
    }
    time.seconds = ofDay / units;
    time.fraction = static_cast<unsigned>(ofDay % units);
    const std::int64_t days = time.days + (from1904 ? daysBefore1904 : 0);
    if (days >= daysTo10000) return {};
    setDate(time, days);
    return time;
}

}  // namespace vek::formats
