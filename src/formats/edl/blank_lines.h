#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Blank lines of an edit list, which say nothing and yet are somebody's layout. Those within the
/// comments of an event are part of them; of all others it is kept in front of which line they
/// stand. "1 3" is one in front of the first line and one in front of the third; "0" is none.
namespace vek::formats {

/// The blank lines of the heading or of an event, which begins behind the last line of the one
/// before.
class BlankLines {
public:
    BlankLines() = default;
    explicit BlankLines(std::string_view text);

    /// Another line, behind so many blank ones.
    void add(std::size_t blanks) {
        ++lines_;
        places_.insert(places_.end(), blanks, lines_);
    }
    /// Blank lines behind all lines so far.
    void addBehind(std::size_t blanks) { places_.insert(places_.end(), blanks, lines_ + 1); }
    /// The lines of another block.
    void add(const BlankLines& others);
    /// How many stand in front of a line, from 1 on.
    std::size_t before(std::uint32_t line) const;
    /// How many stand in front of that line and of all behind it.
    std::size_t from(std::uint32_t line) const;
    BlankLines withoutFirst() const;

    bool empty() const { return places_.empty(); }
    bool hasLines() const { return lines_ != 0; }
    std::string text() const;
    bool operator==(const BlankLines& other) const { return places_ == other.places_; }

private:
    std::uint32_t lines_ = 0;
    std::vector<std::uint32_t> places_;
};

/// What holds for a whole list: the heading's, those of each event for which nothing else is said,
/// and those at the end. A parameter keeps it, "3 each 1 end 1".
struct ListLayout {
    BlankLines heading;
    BlankLines each;
    std::size_t atEnd = 0;

    std::string text() const;
    static ListLayout of(std::string_view text);
};

/// The column of the events that stand otherwise.
constexpr const char* blankLinesColumn = "Blank Lines";

}  // namespace vek::formats
