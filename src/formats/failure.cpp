#include "formats/failure.h"

#include "formats/text/width.h"

namespace vek::formats {

namespace {

constexpr std::size_t longestQuote = 60;

}  // namespace

Failure::Failure(Reason::Kind kind, const std::string& text)
    : kind(kind), text(text), reason{kind, {}, 0, {}, text} {}

Failure::Failure(Reason::Kind kind, const std::string& file, const Problem& problem)
    : kind(kind), text(problem.text(file)), reason{kind,           file,          problem.line,
                                                   problem.column, problem.found, problem.expected,
                                                   problem.outcome} {}

std::string inQuotes(std::string_view text) {
    if (text.size() <= longestQuote) return concat("\"", text, "\"");
    return concat("\"", fitted(text.substr(0, 4 * longestQuote), longestQuote), "\"");
}

std::string counted(std::size_t count, const char* one, const char* many) {
    std::string name = count == 1 ? one : many != nullptr ? many : std::string(one) + "s";
    return std::to_string(count) + " " + name;
}

}  // namespace vek::formats
