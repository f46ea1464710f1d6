#pragma once

#include <array>
#include <cstddef>
#include <string_view>
#include <vector>

#include "formats/text/line_end.h"

/// The lines of a text, and pieces of them.
namespace vek::formats {

/// Walks the lines of a text: takes the next one off, without its end.
class LineWalk {
public:
    /// A line of a table file ends with a line feed, perhaps with a carriage return before it;
    /// one of other formats with a line feed, a carriage return or both.
    enum class Ends { any, lineFeed };

    explicit LineWalk(std::string_view text, Ends ends = Ends::any);
    bool next(std::string_view& line);
    std::size_t number() const { return number_; }
    LineEnd lineEnd() const { return seen_.kind(); }
    bool sawLoneReturns() const { return seen_.hasLoneReturns(); }
    /// Whether a carriage return ended a line, with or without a line feed.
    bool sawCr() const { return sawCr_; }
    /// What stands behind the line taken last.
    std::string_view rest() const { return text_.substr(at_); }

private:
    std::size_t findEnd();
    void takeEnd();

    std::string_view text_;
    std::size_t at_ = 0;
    std::size_t nextCr_ = 0;  // at or behind `at_` once it was looked for
    std::size_t number_ = 0;
    Ends ends_;
    LineEndsSeen seen_;
    bool sawCr_ = false;
};

/// The pieces of a text between separators; "" is one empty piece.
std::vector<std::string_view> split(std::string_view text, char separator);
/// Without blanks of the 7-bit range at both ends.
std::string_view withoutBlankEnds(std::string_view text);
inline std::string_view trimmed(std::string_view text) {
    const auto isInk = [](char c) { return static_cast<unsigned char>(c) > ' '; };
    const bool hasNone = text.empty() || (isInk(text.front()) && isInk(text.back()));
    return hasNone ? text : withoutBlankEnds(text);
}
/// Whether one of the bytes is there. Looks at all, so that many can be looked at together.
inline bool hasAnyOf(std::string_view text, std::array<char, 4> kinds) {
    bool has = false;
    for (char c : text) has |= c == kinds[0] || c == kinds[1] || c == kinds[2] || c == kinds[3];
    return has;
}
/// Equal without regard to the case of A to Z.
bool sameText(std::string_view a, std::string_view b);

}  // namespace vek::formats
