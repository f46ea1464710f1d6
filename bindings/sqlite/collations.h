#pragma once

#include <string_view>

#include "sqlite_api.h"

namespace vek::sql {

/// The order of texts in which timecodes stand by their frames, however they are written, and all
/// else as people read it: case ignored, digits by their value. 01:00:00:00, 01:00:00;00 and
/// 01000000 are the same.
inline constexpr const char* timecodeCollation = "TIMECODE";
/// The order of people alone, in which eight digits are a number.
inline constexpr const char* peopleCollation = "PEOPLE";

int compareTimecodes(std::string_view a, std::string_view b) noexcept;

int addCollations(sqlite3* db);

}  // namespace vek::sql
