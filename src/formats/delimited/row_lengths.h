#pragma once

#include "formats/writing/writers.h"

/// How long the rows of a text are that is written back: as long as they came. A value that is
/// put behind the end of a row makes it longer, and columns that the heading had no name for get
/// none.
namespace vek::formats {

/// The same sheet with the columns that have no name behind all others.
Sheet unnamedLast(const Sheet& sheet);

class RowLengths {
public:
    /// Of a sheet of which unnamed columns are the last; all rows are whole when lengths are not
    /// kept.
    RowLengths(const Sheet& sheet, bool areKept);

    std::size_t ofHeading() const { return named_; }
    std::size_t of(unsigned row) const;
    /// Empty behind the last column.
    std::string_view cell(unsigned row, unsigned place) const {
        return place < sheet_.columns.size() ? sheet_.cell(row, place) : std::string_view();
    }

private:
    std::size_t cameWith(unsigned row) const;
    std::size_t upToLastValue(unsigned row, std::size_t least) const;

    const Sheet& sheet_;
    std::size_t named_;
    bool areKept_;
};

/// A person named one of the columns that have no name: they are columns like others then.
void nameColumns(Log& log, const std::vector<unsigned>& columns);

}  // namespace vek::formats
