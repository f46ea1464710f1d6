#include <vekdb/formats/problem.h>
#include <vekdb/formats/reason.h>

#include "formats/text/width.h"

namespace vek {

namespace {

// A name that is longer than any line of messages is told by its beginning.
std::string shortened(const std::string& name) {
    constexpr std::size_t longest = 200;
    return name.size() <= longest ? name : formats::fitted(name.substr(0, 4 * longest), longest);
}

}  // namespace

std::string Problem::text(std::string_view file) const {
    std::string text(file);
    if (line != 0) text += ":" + std::to_string(line);
    if (!column.empty()) text += ":" + shortened(column);
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
