#include "formats/failure.h"

#include "formats/text/width.h"

namespace vek::formats {

namespace {

constexpr std::size_t longestQuote = 60;

Reason::Kind kindOf(ExitCode code) {
    switch (code) {
        case unreadable:
            return Reason::unreadable;
        case unwritable:
            return Reason::unwritable;
        case found:
            return Reason::contradiction;
        default:
            return Reason::wrongUsage;
    }
}

}  // namespace

Failure::Failure(ExitCode code, const std::string& text)
    : code(code), text(text), reason{kindOf(code), {}, 0, {}, text} {}

Failure::Failure(ExitCode code, const std::string& file, const Problem& problem)
    : code(code), text(problem.text(file)), reason{kindOf(code),   file,          problem.line,
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
