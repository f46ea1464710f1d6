#pragma once

#include <string>
#include <string_view>

#include <vekdb/formats/problem.h>
#include <vekdb/formats/reason.h>

namespace vek::formats {

inline constexpr Reason::Kind unreadable = Reason::unreadable;
inline constexpr Reason::Kind unwritable = Reason::unwritable;
inline constexpr Reason::Kind wrongUsage = Reason::wrongUsage;
inline constexpr Reason::Kind contradiction = Reason::contradiction;

/// Thrown inside the library where it cannot go on. The public face makes a result of it, the
/// program a message and its exit code.
struct Failure {
    Reason::Kind kind;
    std::string text;
    Reason reason = {};

    Failure(Reason::Kind kind, const std::string& text);
    /// A file that has a problem.
    Failure(Reason::Kind kind, const std::string& file, const Problem& problem);
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
