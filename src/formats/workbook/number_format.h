#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "formats/workbook/format_tokens.h"

/// Numbers as a sheet shows them.
namespace vek::formats {

/// What a cell's style makes of a number: "0.00", "[h]:mm:ss", "yyyy-mm-dd;@" and the like. Names
/// of months and days are English. Room that a format leaves for a column's width is left out.
class NumberFormat {
public:
    /// The format of a code as a workbook writes it.
    explicit NumberFormat(std::string_view code = "General");

    /// Days count from 1904 in workbooks that say so. What is no date is shown as the number it
    /// is.
    std::string shown(double value, bool from1904) const;
    /// Whether a number is shown as a day or a time.
    bool isForDates() const { return !isGeneral_ && sections_[0].isDate; }

private:
    const FormatSection& sectionFor(double value, bool& hasSign) const;

    std::vector<FormatSection> sections_;
    bool isGeneral_;
};

/// The code of a format that workbooks name by its number alone; General where there is none.
/// Dates that every country writes otherwise are written year first.
std::string_view builtInFormat(unsigned number);

}  // namespace vek::formats
