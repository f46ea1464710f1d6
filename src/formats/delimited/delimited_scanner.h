#pragma once

#include <string_view>
#include <utility>
#include <vector>

#include <vekdb/byte_marks.h>
#include <vekdb/text_rows.h>
#include "formats/text/text_lines.h"

namespace vek::formats {

/// Takes records of separated cells off a text, one after the other. Cells between quotes may
/// hold separators, line ends and doubled quotes; what the quotes hide is put right in the text
/// itself. Nothing else of a cell is touched.
class DelimitedScanner {
public:
    enum class Quotes { respected, ordinary };

    /// A byte may be written behind the text's end.
    DelimitedScanner(char* begin, char* end, char separator, Quotes quotes, std::size_t line = 1);

    /// With another text, as if it stood behind the one that was taken.
    void goOn(char* begin, char* end);

    bool atEnd() const { return at_ == end_; }
    /// The cells of the next record; valid until the next call or until their room is used.
    const std::vector<std::string_view>& takeRecord();
    /// The bytes that the record stood on, the end of its line included.
    TextRows::Room room() const { return {first_, at_ == end_ ? end_ + 1 : at_}; }

    /// Passes over a record whose cells end there and were taken by somebody else.
    void passTo(char* cellsEnd);

    char* place() const { return at_; }
    /// The line on which the next record begins.
    std::size_t line() const { return line_; }
    LineEnd lineEnd() const { return seen_.kind(); }
    bool sawLoneReturns() const { return seen_.hasLoneReturns(); }
    /// The line of a quote that is never closed, 0 for none.
    std::size_t openQuoteLine() const { return openQuoteLine_; }

    /// A cell in quotes that goes on behind the closing one.
    struct StrayText {
        std::size_t cell = 0;
        std::size_t openedOn = 0;  ///< a line; 0 where there is no such cell
        std::size_t closedOn = 0;
    };
    /// The first such cell since this was last asked for.
    StrayText takeStrayText() { return std::exchange(stray_, {}); }
    bool hasStrayText() const { return stray_.openedOn != 0; }

private:
    bool takePlainCells();
    void makeRoom();
    bool takeSeparator();
    void takeLineEnd();
    std::string_view takePlain();
    std::string_view takeQuoted();
    char* takeUpToClosingQuote();
    void countLine(const char* at);
    char* next(char* at) { return begin_ + (marks_.next(at) - begin_); }

    char* begin_;
    char* at_;
    char* end_;
    char* first_;  // of the record
    char separator_;
    char quote_;  // a line feed, which marks nothing new, where quotes are ordinary
    ByteMarks marks_;
    std::size_t line_;
    std::size_t openQuoteLine_ = 0;
    StrayText stray_;
    LineEndsSeen seen_;
    std::vector<std::string_view> cells_;
};

}  // namespace vek::formats
