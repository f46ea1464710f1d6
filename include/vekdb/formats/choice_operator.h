#pragma once

namespace vek {

/// How a cell is compared. Numbers and timecodes count by their value, texts without their case;
/// `equal` and `notEqual` go byte by byte, and `matches` is a regular expression that is found
/// anywhere. An empty cell is neither less nor greater.
enum class Operator {
    contains,  ///< "COLUMN=TEXT"
    empty,     ///< "COLUMN="
    equal,     ///< "COLUMN==TEXT"
    notEqual,  ///< "COLUMN!=TEXT"
    less,
    lessOrEqual,
    greater,
    greaterOrEqual,
    matches,  ///< "COLUMN~EXPRESSION"
};

}  // namespace vek
