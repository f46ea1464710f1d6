#pragma once

#include <initializer_list>
#include <span>
#include <string_view>
#include <vector>

#include "formats/log/log.h"

/// Where a log keeps what every clip has, whatever the program that made it calls it.
namespace vek::formats {

/// Two columns that begin and end something: "Start time" and "End time", "Mark IN" and
/// "Mark OUT", "KN Start" and "KN End".
struct RangeColumns {
    unsigned start = 0;
    unsigned end = 0;
};
/// All such pairs that the log has, by their names.
std::vector<RangeColumns> rangeColumns(const Log& log);

/// Whether a column's name says that keycodes or inkcodes stand in it: "KN Start", "Key Number In",
/// "Ink Number", but not "Key Grip".
bool namesFilmCode(std::string_view name);

/// The pair that a column begins or ends; noColumn twice where it has no other one.
RangeColumns rangeOf(const Log& log, unsigned column);

/// The first of these columns that the log has, or noColumn.
unsigned firstColumn(const Log& log, std::initializer_list<const char*> names);
unsigned firstColumn(const Log& log, std::span<const char* const> names);

/// What programs call the reel, tape or roll of a clip, the likeliest first.
inline constexpr const char* reelNames[] = {"Reel",     "Tape",    "Tape Name", "Reel Name",
                                            "Tape ID",  "Camroll", "cam reel",  "Camera Roll",
                                            "Cam Roll", "Roll"};
unsigned reelColumn(const Log& log);

/// The columns of the source's start and end, of the record's, and of the keycodes; noColumn twice
/// where the log has none.
RangeColumns sourceColumns(const Log& log);
RangeColumns recordColumns(const Log& log);
RangeColumns keycodeColumns(const Log& log);

}  // namespace vek::formats
