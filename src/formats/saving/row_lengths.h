#pragma once

#include "formats/writing/writers.h"

/// How long the rows of a text are that take the place of others: as long as those were. A value
/// that is put behind the end of a row makes it longer, and columns that the heading had no name
/// for get none.
namespace vek::formats {

/// The columns in their order, those that have no name behind all others.
std::vector<unsigned> unnamedLast(const Log& log, const std::vector<unsigned>& columns);

class RowLengths {
public:
    /// Of columns of which unnamed ones are the last, in a log that was read to be changed.
    RowLengths(const Log& log, const std::vector<unsigned>& columns);

    std::size_t ofHeading() const { return named_; }
    /// Of a row of the sheet in the place of one of so many values; 0 where there was none.
    std::size_t of(const Sheet& sheet, unsigned row, std::size_t came) const;

private:
    std::size_t inPlaceOf(const Sheet& sheet, unsigned row, std::size_t came) const;
    std::size_t leastOf(std::size_t came) const;
    std::size_t upToLastValue(const Sheet& sheet, unsigned row, std::size_t least) const;

    const Source& source_;
    std::vector<unsigned> cameFrom_;  // for each column that is written
    std::size_t named_;
    std::size_t cameNamed_;  // names of the heading as it was read
};

}  // namespace vek::formats
