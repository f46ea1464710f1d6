#include "formats/workbook/number_format.h"

#include <algorithm>
#include <cmath>

#include "formats/text/text_lines.h"
#include "formats/workbook/shown_date.h"
#include "formats/workbook/shown_number.h"

namespace vek::formats {

namespace {

bool holds(const FormatSection& section, double value) {
    const std::string& sign = section.comparison;
    if (sign == "<") return value < section.bound;
    if (sign == "<=") return value <= section.bound;
    if (sign == ">") return value > section.bound;
    if (sign == ">=") return value >= section.bound;
    if (sign == "<>") return value != section.bound;
    return value == section.bound;
}

bool hasCondition(const FormatSection& section) {
    return !section.comparison.empty();
}

bool isForTexts(const FormatSection& section) {
    const auto isText = [](const FormatToken& token) {
        return token.kind == FormatToken::cellText;
    };
    return std::any_of(section.tokens.begin(), section.tokens.end(), isText);
}

}  // namespace

NumberFormat::NumberFormat(std::string_view code)
    : sections_(formatSections(code)), isGeneral_(code.empty() || sameText(code, "General")) {
    if (sections_.size() > 1 && isForTexts(sections_.back())) sections_.pop_back();
}

// A section for negative numbers alone has the sign in its own text.
const FormatSection& NumberFormat::sectionFor(double value, bool& hasSign) const {
    if (std::any_of(sections_.begin(), sections_.end(), hasCondition)) {
        for (const FormatSection& section : sections_) {
            if (!hasCondition(section) || holds(section, value)) return section;
        }
        return sections_.back();
    }
    if (value < 0 && sections_.size() > 1) {
        hasSign = true;
        return sections_[1];
    }
    return value == 0 && sections_.size() > 2 ? sections_[2] : sections_[0];
}

std::string NumberFormat::shown(double value, bool from1904) const {
    bool hasSign = false;
    const FormatSection& section = sectionFor(value, hasSign);
    const bool isText = sections_.size() == 1 && isForTexts(section);
    if (isGeneral_ || isText || !std::isfinite(value)) return generalNumber(value);
    if (section.isDate) {
        return shownDate(value, from1904, section.tokens).value_or(generalNumber(value));
    }
    const std::string text = shownNumber(std::fabs(value), section.tokens);
    // What is rounded to nothing has its sign all the same, a word alone has none.
    const bool isNumber = text.find_first_of("0123456789") != text.npos;
    return value < 0 && !hasSign && isNumber ? "-" + text : text;
}

std::string_view builtInFormat(unsigned number) {
    struct Entry {
        unsigned number;
        std::string_view code;
    };
    static constexpr Entry entries[] = {
        {1, "0"},
        {2, "0.00"},
        {3, "#,##0"},
        {4, "#,##0.00"},
        {5, "$#,##0;($#,##0)"},
        {6, "$#,##0;($#,##0)"},
        {7, "$#,##0.00;($#,##0.00)"},
        {8, "$#,##0.00;($#,##0.00)"},
        {9, "0%"},
        {10, "0.00%"},
        {11, "0.00E+00"},
        {12, "# ?/?"},
        {13, "# ?\?/?\?"},
        {14, "yyyy-mm-dd"},
        {15, "d-mmm-yy"},
        {16, "d-mmm"},
        {17, "mmm-yy"},
        {18, "h:mm AM/PM"},
        {19, "h:mm:ss AM/PM"},
        {20, "h:mm"},
        {21, "h:mm:ss"},
        {22, "yyyy-mm-dd h:mm"},
        {37, "#,##0;(#,##0)"},
        {38, "#,##0;(#,##0)"},
        {39, "#,##0.00;(#,##0.00)"},
        {40, "#,##0.00;(#,##0.00)"},
        {41, "#,##0;(#,##0);\"-\""},
        {42, "$#,##0;$(#,##0);$\"-\""},
        {43, "#,##0.00;(#,##0.00);\"-\""},
        {44, "$#,##0.00;$(#,##0.00);$\"-\""},
        {45, "mm:ss"},
        {46, "[h]:mm:ss"},
        {47, "mm:ss.0"},
        {48, "##0.0E+0"},
        {49, "@"},
    };
    for (const Entry& entry : entries) {
        if (entry.number == number) return entry.code;
    }
    const bool isDateElsewhere = (number >= 27 && number <= 36) || (number >= 50 && number <= 58);
    return isDateElsewhere ? "yyyy-mm-dd" : "General";
}

}  // namespace vek::formats
