#pragma once

#include <cstdint>
#include <string>

// Days and times as ISO 8601 writes them. Each function puts the text in the place of what the
// string held. A unit is a second divided by 10 to the power of `digits`; a fraction is written
// without zeros at its end, and not at all where it is none.

/// Days since 1970-01-01: "2026-11-22". Years before 0 have a sign.
void writeDay(std::int64_t day, std::string& out);

/// Units since midnight: "23:59:59.5".
void writeDayTime(std::int64_t units, int digits, std::string& out);

/// Units since 1970: "2026-11-22T23:59:59.5", with a "Z" behind it where that is in UTC.
void writeInstant(std::int64_t units, int digits, bool isZoned, std::string& out);
