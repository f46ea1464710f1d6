#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <vekdb/formats/choice_operator.h>
#include "formats/choosing/regex.h"
#include "formats/log/log.h"

namespace vek::formats {

struct Condition {
    unsigned column = 0;
    Operator op = Operator::contains;
    std::string text;
};

/// "COLUMN=TEXT", "COLUMN==TEXT", "COLUMN~REGEX", ...; a Failure when it is none of them.
Condition parseCondition(const Log& log, const std::string& text);
/// Whether a text is one, as far as that can be told without a log; a Failure where it is none,
/// also for a regular expression that is none.
bool isCondition(const std::string& text);
void requireCondition(const std::string& text);

/// Compares as people read: timecodes by their frames, numbers by their value, case ignored.
int comparePeople(std::string_view a, std::string_view b);

/// Whether something holds for a row of the table. The log must outlive the test.
using RowTest = std::function<bool(unsigned row)>;

/// Whether the row's value in one column is as the condition says, any but "contains".
RowTest testOf(const Log& log, const Condition& condition);

/// Regular expressions that were made, for whoever asks many logs the same.
class Regexes {
public:
    /// A Failure with wrongUsage where the text is none.
    std::shared_ptr<const Regex> of(const std::string& text);

private:
    std::map<std::string, std::shared_ptr<const Regex>> made_;
};
RowTest testOf(const Log& log, const Condition& condition, Regexes& regexes);

/// Whether one of the conditions is about the column.
bool asksFor(const std::vector<Condition>& conditions, unsigned column);

/// Makes these "contains" conditions, of which no two are about the same column, the table's own
/// query: timecodes match by their digits and the start/end columns as ranges.
void askTable(const Log& log, const std::vector<Condition>& conditions);

}  // namespace vek::formats
