#include "tools/vek/cli/exit.h"

#include <unistd.h>

#include "tools/vek/cli/width.h"

namespace vek {

namespace {

constexpr std::size_t longestQuote = 60;

}  // namespace

void say(const std::string& text) {
    std::string line = "vek: " + escaped(text) + "\n";
    // Nothing is left to be told when even this stream is gone.
    [[maybe_unused]] ssize_t written = ::write(STDERR_FILENO, line.data(), line.size());
}

std::string inQuotes(std::string_view text) {
    if (text.size() <= longestQuote) return concat("\"", text, "\"");
    return concat("\"", fitted(text.substr(0, 4 * longestQuote), longestQuote), "\"");
}

std::string counted(std::size_t count, const char* one, const char* many) {
    std::string name = count == 1 ? one : many != nullptr ? many : std::string(one) + "s";
    return std::to_string(count) + " " + name;
}

}  // namespace vek
