#pragma once

#include <string>

#include "formats/choosing/conditions.h"

/// Whether the range between a row's start and end holds something. Both ends belong to a range.
namespace vek::formats {

/// Whether a pair of the row's columns, whatever it is called, holds the timecode or keycode. A
/// Failure when the text is neither or no such columns exist.
RowTest codeTest(const Log& log, const std::string& code);
/// A Failure when the text is neither, whatever the log.
void requireCode(const std::string& code, const Terms& terms);

/// Whether the column begins or ends a range of keycodes or inkcodes under a name that is not the
/// table's own: "KN Start", "Ink End". The table knows to ask its own ones for their range.
bool isOfLabelRange(const Log& log, unsigned column);

/// Whether the range that such a column belongs to holds the text. A keycode is looked for by its
/// feet and frames on its roll, whatever stands between the digits; other texts as the table does
/// it: the start begins with them, or they are between the two as texts.
RowTest labelRangeTest(const Log& log, const Condition& condition);

}  // namespace vek::formats
