#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include <vekdb/host/visibility.h>

class TextFile;
class dbrecord;
class vekdb;

/// Lines of a table file for rows of a table in any order, each as `dbrecord::write` makes it.
/// What the rows ahead need is fetched from memory meanwhile, so that an order which is not that
/// of the file costs little more.
class VEKDB_PUBLIC RowLines {
public:
    /// The table outlives this; what is written of it stays as it is meanwhile.
    explicit RowLines(const vekdb& table) : table_(table) {}

    /// Appends the lines of the first of these rows, of as many as have about so many bytes
    /// together, and answers how many that were: at least one where there is any. Each of them
    /// must be there. What is marked as changed stays so.
    std::size_t append(const unsigned* rows, std::size_t count, std::size_t bytes,
                       TextFile& to) const;

    /// Appends the line of one row, which keeps its mark of change.
    static void append(const dbrecord& row, TextFile& to);

    /// Whether a row's values are those of the line that it was read from, each between quotes and
    /// nothing in them that means something, and empty ones behind them: they are read back as they
    /// are.
    static bool isAsRead(const dbrecord& row);
    /// Bytes of that line, its end not counted, where it had all of the row's values: the row is
    /// written as it was read. 0 for every other row.
    static std::size_t sizeAsRead(const dbrecord& row);
    /// Where that line, or any other whose values were kept together, begins in the text that the
    /// row was read from. Nothing of rows whose values stand elsewhere by now.
    static std::optional<std::uint64_t> placeAsRead(const dbrecord& row);

private:
    const vekdb& table_;
};
