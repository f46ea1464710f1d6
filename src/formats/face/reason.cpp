#include <vekdb/formats/problem.h>
#include <vekdb/formats/reason.h>

namespace vek {

std::string Problem::text(std::string_view file) const {
    std::string text(file);
    if (line != 0) text += ":" + std::to_string(line);
    if (!column.empty()) text += ":" + column;
    if (!text.empty()) text += ": ";
    text += found;
    if (!expected.empty()) text += ", expected " + expected;
    if (!outcome.empty()) text += "; " + outcome;
    return text;
}

std::string Reason::text() const {
    return Problem{line, column, found, expected, advice}.text(file);
}

}  // namespace vek
