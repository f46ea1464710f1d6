#pragma once

#include <functional>
#include <string>
#include <vector>

#include "formats/select.h"

namespace vek {

/// Whether something holds for a row of the table. The log must outlive the test.
using RowTest = std::function<bool(unsigned row)>;

/// Whether the row's value in one column is as the condition says, any but "contains".
RowTest testOf(const Log& log, const Condition& condition);

/// Whether one of the conditions is about the column.
bool asksFor(const std::vector<Condition>& conditions, unsigned column);

/// Makes these "contains" conditions, of which no two are about the same column, the table's own
/// query: timecodes match by their digits and the start/end columns as ranges.
void askTable(const Log& log, const std::vector<Condition>& conditions);

/// Whether a pair of the row's columns, whatever it is called, holds the timecode; both ends
/// belong to a range. A Failure when the text is no timecode or no such columns exist.
RowTest timecodeTest(const Log& log, const std::string& timecode);

/// Two columns that begin and end something: "Start time" and "End time", "Mark IN" and
/// "Mark OUT", "KN Start" and "KN End".
struct RangeColumns {
    unsigned start = 0;
    unsigned end = 0;
};
std::vector<RangeColumns> rangeColumns(const Log& log);

}  // namespace vek
