#pragma once

#include <cstddef>
#include <map>
#include <string_view>
#include <vector>

namespace vek::formats {

/// How a cell stood in JSON, where it did not stand between quotes.
enum class Bare : unsigned char { no, number, truth, nothing, nested };

/// Which cells of a log stood bare in JSON. It is known of cells, not of columns, and takes room
/// for those that did alone: less than their text took.
class BareValues {
public:
    bool areAny() const { return !columns_.empty(); }
    Bare of(unsigned row, unsigned column) const;

    /// Of the last row so far, or of one behind it. What is noted last of a cell holds.
    void note(unsigned row, unsigned column, Bare bare);
    /// Of any row: its cell was given a value that stood so.
    void replace(unsigned row, unsigned column, Bare bare);
    /// The columns behind one that goes take its place.
    void forget(unsigned column);

private:
    // Rows from the first to in front of the last.
    struct Run {
        unsigned begin = 0;
        unsigned end = 0;
        Bare bare = Bare::no;
    };
    struct Column {
        std::vector<Run> runs;
        std::map<unsigned, Bare> replaced;
    };

    Column& at(unsigned column);

    std::vector<Column> columns_;
};

}  // namespace vek::formats
