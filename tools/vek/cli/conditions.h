#pragma once

#include <string>
#include <vector>

#include "tools/vek/cli/select.h"

namespace vek {

/// For each row of the table whether the condition holds. "Contains" is the table's own query,
/// so timecodes match by their digits and the start/end columns as ranges.
std::vector<char> rowsThatHold(const Log& log, const Condition& condition);

/// For each row whether a pair of its columns, whatever it is called, holds the timecode; both
/// ends belong to a range. A Failure when the text is no timecode or no such columns exist.
std::vector<char> rowsAtTimecode(const Log& log, const std::string& timecode);

/// Two columns that begin and end something: "Start time" and "End time", "Mark IN" and
/// "Mark OUT", "KN Start" and "KN End".
struct RangeColumns {
    unsigned start = 0;
    unsigned end = 0;
};
std::vector<RangeColumns> rangeColumns(const Log& log);

}  // namespace vek
