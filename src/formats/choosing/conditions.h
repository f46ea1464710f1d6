#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <vekdb/formats/choice_operator.h>
#include "formats/log/log.h"

namespace vek::formats {

struct Condition {
    unsigned column = 0;
    Operator op = Operator::contains;
    std::string text;
};

/// "COLUMN=TEXT", "COLUMN==TEXT", "COLUMN~REGEX", ...; a Failure when it is none of them.
Condition parseCondition(const Log& log, const std::string& text);

/// Compares as people read: timecodes by their frames, numbers by their value, case ignored.
int comparePeople(std::string_view a, std::string_view b);

/// Whether something holds for a row of the table. The log must outlive the test.
using RowTest = std::function<bool(unsigned row)>;

/// Whether the row's value in one column is as the condition says, any but "contains".
RowTest testOf(const Log& log, const Condition& condition);

/// Whether one of the conditions is about the column.
bool asksFor(const std::vector<Condition>& conditions, unsigned column);

/// Makes these "contains" conditions, of which no two are about the same column, the table's own
/// query: timecodes match by their digits and the start/end columns as ranges.
void askTable(const Log& log, const std::vector<Condition>& conditions);

}  // namespace vek::formats
