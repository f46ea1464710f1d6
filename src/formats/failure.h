#pragma once

#include <string>
#include <string_view>

namespace vek {

namespace formats {}
// The program is written in terms of it.
using namespace formats;

}  // namespace vek

namespace vek::formats {

/// How the program ends. Documented to people: scripts lean on these numbers.
enum ExitCode {
    done = 0,
    found = 1,       ///< a difference, a problem, or nothing that matched
    wrongUsage = 2,  ///< also a column that is not there
    unreadable = 3,
    unwritable = 4,
};

/// Ends a subcommand: thrown anywhere, told to the person and turned into the exit code by main.
struct Failure {
    ExitCode code;
    std::string text;
};

/// The parts one behind the other.
template <class... Parts>
std::string concat(const Parts&... parts) {
    std::string out;
    out.reserve((std::string_view(parts).size() + ...));
    (out.append(std::string_view(parts)), ...);
    return out;
}

/// A text between quotes for a message, cut where it is very long.
std::string inQuotes(std::string_view text);

/// "1 row", "3 rows".
std::string counted(std::size_t count, const char* one, const char* many = nullptr);

}  // namespace vek::formats
