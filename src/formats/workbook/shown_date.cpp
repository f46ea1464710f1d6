#include "formats/workbook/shown_date.h"

#include <algorithm>
#include <array>

#include "formats/workbook/serial_date.h"

namespace vek::formats {

namespace {

using Kind = FormatToken::Kind;

constexpr std::array<std::string_view, 12> monthNames = {
    "January", "February", "March",     "April",   "May",      "June",
    "July",    "August",   "September", "October", "November", "December"};
constexpr std::array<std::string_view, 7> dayNames = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                      "Thursday", "Friday", "Saturday"};

std::string padded(std::int64_t number, std::size_t places) {
    std::string text = std::to_string(number);
    if (text.size() < places) text.insert(0, places - text.size(), '0');
    return text;
}

// Three letters shorten a name, five leave the first alone.
std::string named(std::string_view name, std::size_t letters) {
    if (letters == 5) return std::string(name.substr(0, 1));
    return std::string(letters == 3 ? name.substr(0, 3) : name);
}

class DateText {
public:
    DateText(const SerialTime& time, bool hasHalves) : time_(time), hasHalves_(hasHalves) {}

    std::string part(const FormatToken& token) const {
        const std::size_t two = std::min<std::size_t>(token.count, 2);
        switch (token.kind) {
            case Kind::year:
                return token.count <= 2 ? padded(time_.year % 100, 2) : padded(time_.year, 4);
            case Kind::month:
                if (token.count > 2) return named(monthNames[time_.month - 1], token.count);
                return padded(time_.month, token.count);
            case Kind::day:
                if (token.count > 2) return named(dayNames[time_.weekday], token.count);
                return padded(time_.day, token.count);
            case Kind::hour:
                return padded(hour(), two);
            case Kind::minute:
                return padded(time_.seconds / 60 % 60, two);
            case Kind::second:
                return padded(time_.seconds % 60, two);
            case Kind::halfDay:
                return half(token);
            case Kind::fraction:
                return "." + padded(time_.fraction, token.count);
            default:
                return elapsed(token);
        }
    }

private:
    std::int64_t hour() const {
        const std::int64_t hour = time_.seconds / 3600;
        return hasHalves_ ? (hour + 11) % 12 + 1 : hour;
    }

    std::string half(const FormatToken& token) const {
        const bool isAfternoon = time_.seconds >= 12 * 3600;
        const std::size_t slash = token.text.find('/');
        return isAfternoon ? token.text.substr(slash + 1) : token.text.substr(0, slash);
    }

    std::string elapsed(const FormatToken& token) const {
        const std::int64_t all = time_.days * 86400 + time_.seconds;
        switch (token.kind) {
            case Kind::hours:
                return padded(all / 3600, token.count);
            case Kind::minutes:
                return padded(all / 60, token.count);
            case Kind::seconds:
                return padded(all, token.count);
            default:
                return token.text;
        }
    }

    const SerialTime& time_;
    bool hasHalves_;
};

}  // namespace

std::optional<std::string> shownDate(double value, bool from1904,
                                     const std::vector<FormatToken>& tokens) {
    constexpr std::size_t mostDigits = 9;
    std::size_t digits = 0;
    bool hasHalves = false;
    for (const FormatToken& token : tokens) {
        if (token.kind == Kind::fraction) digits = std::max(digits, token.count);
        hasHalves = hasHalves || token.kind == Kind::halfDay;
    }
    digits = std::min(digits, mostDigits);
    const auto time = serialTime(value, from1904, static_cast<unsigned>(digits));
    if (!time) return {};
    const DateText text(*time, hasHalves);
    std::string made;
    for (const FormatToken& token : tokens) made += text.part(token);
    return made;
}

}  // namespace vek::formats
