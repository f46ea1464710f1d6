#include "formats/reading/lines_in_front.h"

#include <algorithm>

#include "formats/reading/delimiters.h"
#include "formats/text/text_lines.h"

namespace vek::formats {

// The walk looks for the first carriage return of all that it is given.
std::optional<char> delimiterInFront(std::string_view text) {
    LineWalk walk(text.substr(0, text.find('\n')));
    std::string_view line;
    return walk.next(line) ? delimiterOfLine(line) : std::nullopt;
}

char delimiterFor(std::string_view text, std::optional<char> named, char usual, const Log& log) {
    const char wish = log.opening.wishes.delimiter;
    if (wish != '\0') return wish;
    return named ? *named : foundDelimiter(text, true, usual);
}

std::string_view behindLines(std::string_view text, std::size_t count) {
    if (count == 0) return text;
    LineWalk walk(text);
    std::string_view line;
    while (walk.number() < count && walk.next(line)) {
    }
    return walk.rest();
}

namespace {

// Blank lines in front of several cells, as no heading is one; a single column may have no name.
std::size_t blankLinesInFront(std::string_view text, std::optional<char> named, char usual,
                              const Log& log) {
    LineWalk walk(text);
    std::string_view line;
    while (walk.next(line) && line.empty()) {
    }
    const std::size_t blanks = walk.number() - 1;
    if (blanks == 0 || line.empty()) return 0;
    return hasSeveralCells(text, delimiterFor(text, named, usual, log)) ? blanks : 0;
}

}  // namespace

LinesInFront LinesInFront::of(std::string_view text, char usual, const Log& log) {
    const std::optional<char> named = delimiterInFront(text);
    const std::size_t said = std::max<std::size_t>(log.opening.wishes.skippedLines, named ? 1 : 0);
    return {said, blankLinesInFront(behindLines(text, said), named, usual, log)};
}

}  // namespace vek::formats
