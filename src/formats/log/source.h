#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <vekdb/field_types.h>
#include "formats/log/parameter_text.h"

namespace vek::formats {

class Input;

/// Bytes of a file, from the first to behind the last.
struct Range {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;

    std::size_t size() const { return static_cast<std::size_t>(end - begin); }
};

/// Where the rows of a log stand in its file: the heading first, then row behind row. What stands
/// between them, as blank lines do, is the gap in front of a row; one may stand behind the last.
class RowPlaces {
public:
    void beginAt(std::uint64_t end) { headingEnd_ = last_ = end; }
    void add(Range row);
    void endAt(std::uint64_t size);

    bool areKnown() const { return isEnded_; }
    std::size_t count() const { return begins_.size() - (isEnded_ ? 1 : 0); }
    Range heading() const { return {0, headingEnd_}; }
    Range row(std::size_t row) const { return {begin(row), begin(row + 1) - gap(row + 1)}; }
    /// For the number of rows, too: what stands behind them.
    Range gapBefore(std::size_t row) const { return {begin(row) - gap(row), begin(row)}; }
    std::uint64_t size() const { return begin(begins_.size() - 1); }

private:
    std::uint64_t begin(std::size_t row) const {
        return wraps_.empty() ? begins_[row] : (wrapsUpTo(row) << 32) + begins_[row];
    }
    std::uint64_t wrapsUpTo(std::size_t row) const;
    std::uint64_t gap(std::size_t row) const { return gaps_.empty() ? 0 : gaps_[row]; }

    std::uint64_t headingEnd_ = 0;
    std::uint64_t last_ = 0;
    bool isEnded_ = false;
    std::vector<std::uint32_t> begins_;  // and the file's size, once it is known: the lower halves
    std::vector<std::size_t> wraps_;     // rows from which on the upper halves are one more
    std::vector<std::uint64_t> gaps_;    // in front of each; none while there was none
};

/// What a log was as it was read, and the file itself, which can be read again: that a save in
/// place can leave what was not changed as it came, byte for byte.
struct Source {
    struct Column {
        std::string name;
        DBFieldTypes::eType type = DBFieldTypes::none;
    };
    struct Cell {
        unsigned row = 0;
        unsigned column = 0;
        std::string value;
    };

    std::shared_ptr<Input> input;
    RowPlaces places;
    std::vector<Column> columns;
    std::vector<ParameterText> parameters;
    /// For each column that the log has now, the one of `columns` that it was; those behind were
    /// added. To be kept up by who takes one away.
    std::vector<unsigned> cameFrom;
    std::size_t named = 0;                 ///< columns that the heading had names for
    std::size_t headingLines = 0;          ///< of a table file
    std::size_t rows = 0;                  ///< that were read
    std::vector<std::string> memberNames;  ///< of JSON objects, one for each column
    std::vector<Cell> exactCells;          ///< that notes in a table file put right
    /// Rows of a table file whose places are known and whose lines are others than writing them
    /// makes, with the end that its heading has; none where there is no such row.
    std::vector<bool> oddRows;
    bool endsOpen = false;        ///< a quote of the last row is never closed
    bool hasLoneReturns = false;  ///< some lines end with a carriage return and no line feed
    bool isDamaged = false;       ///< a table file that is to be written anew, and so mended
    /// Found out where they are asked for: whether bytes are no UTF-8, and which gaps of JSON
    /// hold the bracket of an array.
    std::optional<bool> hasOddBytes = {};
    std::optional<std::vector<std::size_t>> gapsWithBrackets = {};

    /// The column as it was read; their number for one that was added.
    unsigned whereFrom(unsigned column) const {
        return column < cameFrom.size() ? cameFrom[column] : static_cast<unsigned>(columns.size());
    }
};

/// Reads pieces of a source again, those near each other with few calls; where they stand in no
/// order, the input holds all of it after a while. A Failure where the file is no longer as long
/// as it was.
class SourceReader {
public:
    explicit SourceReader(const Input& input);
    /// Valid until the next call.
    std::string_view read(Range range);

private:
    Range windowOf(Range range);
    void get(Range window);

    const Input& input_;
    std::vector<char> window_;
    const char* text_ = nullptr;  // of what was got
    Range got_;
    unsigned jumps_;
};

}  // namespace vek::formats
