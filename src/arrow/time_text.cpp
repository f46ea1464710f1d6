#include "arrow/time_text.h"

#include <charconv>
#include <iterator>

namespace {

constexpr std::int64_t secondsOfDay = 86'400;

struct Division {
    std::int64_t whole;
    std::int64_t rest;  // never negative
};

Division divided(std::int64_t number, std::int64_t by) {
    const std::int64_t whole = number / by;
    const std::int64_t rest = number % by;
    return rest < 0 ? Division{whole - 1, rest + by} : Division{whole, rest};
}

void appendPadded(std::int64_t number, std::size_t width, std::string& out) {
    char text[24];
    const auto end = std::to_chars(std::begin(text), std::end(text), number).ptr;
    const auto length = static_cast<std::size_t>(end - text);
    if (length < width) out.append(width - length, '0');
    out.append(text, end);
}

void appendYear(std::int64_t year, std::string& out) {
    if (year < 0) out += '-';
    appendPadded(year < 0 ? -year : year, 4, out);
}

// The calendar repeats every 400 years, here counted from the first of March, so that the day of a
// leap year is the last one.
void appendDay(std::int64_t day, std::string& out) {
    constexpr std::int64_t toMarchOfYear0 = 719'468;
    constexpr std::int64_t daysOf400 = 146'097;
    const Division since = divided(day, daysOf400);
    const Division moved = divided(since.rest + toMarchOfYear0, daysOf400);
    const std::int64_t of = moved.rest;
    const std::int64_t year = (of - of / 1'460 + of / 36'524 - of / 146'096) / 365;
    const std::int64_t inYear = of - (365 * year + year / 4 - year / 100);
    const std::int64_t fromMarch = (5 * inYear + 2) / 153;
    const std::int64_t month = fromMarch < 10 ? fromMarch + 3 : fromMarch - 9;
    appendYear((since.whole + moved.whole) * 400 + year + (month <= 2 ? 1 : 0), out);
    out += '-';
    appendPadded(month, 2, out);
    out += '-';
    appendPadded(inYear - (153 * fromMarch + 2) / 5 + 1, 2, out);
}

void appendFraction(std::int64_t units, int digits, std::string& out) {
    if (units == 0) return;
    out += '.';
    appendPadded(units, static_cast<std::size_t>(digits), out);
    while (out.ends_with('0')) out.pop_back();
}

std::int64_t unitsOfSecond(int digits) {
    std::int64_t units = 1;
    for (int i = 0; i < digits; ++i) units *= 10;
    return units;
}

void appendTime(std::int64_t seconds, std::string& out) {
    appendPadded(seconds / 3600, 2, out);
    out += ':';
    appendPadded(seconds / 60 % 60, 2, out);
    out += ':';
    appendPadded(seconds % 60, 2, out);
}

}  // namespace

void writeDay(std::int64_t day, std::string& out) {
    out.clear();
    appendDay(day, out);
}

// Times of day that are none are written as what they come to, with a sign.
void writeDayTime(std::int64_t units, int digits, std::string& out) {
    out.clear();
    const std::int64_t perSecond = unitsOfSecond(digits);
    const std::int64_t seconds = units / perSecond;
    const std::int64_t rest = units % perSecond;
    if (units < 0) out += '-';
    appendTime(seconds < 0 ? -seconds : seconds, out);
    appendFraction(rest < 0 ? -rest : rest, digits, out);
}

void writeInstant(std::int64_t units, int digits, bool isZoned, std::string& out) {
    out.clear();
    const Division seconds = divided(units, unitsOfSecond(digits));
    const Division days = divided(seconds.whole, secondsOfDay);
    appendDay(days.whole, out);
    out += 'T';
    appendTime(days.rest, out);
    appendFraction(seconds.rest, digits, out);
    if (isZoned) out += 'Z';
}
