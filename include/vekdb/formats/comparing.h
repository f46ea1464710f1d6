#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <vekdb/formats/log.h>

/// How two logs differ, as values.
namespace vek {

/// A cell that two logs have different texts in.
struct CellDifference {
    std::string column;  ///< its name in the first log
    std::string before;  ///< the text there
    std::string after;   ///< the text in the second log
};

/// A row that is in one log only, or in both with other cells.
struct RowDifference {
    /// Whether it is in the first log only, in the second only, or in both.
    enum Kind { removed, added, changed };
    Kind kind = changed;   ///< which of them
    unsigned a = 0;        ///< the row's index in the first log, for removed and changed: Log::row
    unsigned b = 0;        ///< in the second, for added and changed
    std::string key = {};  ///< for changed: its value in the key column
    std::vector<CellDifference> cells = {};  ///< for changed: at least one
};

/// All of it: columns that only one log has, and rows in the order of the first log, with the
/// second one's where they stand.
struct Differences {
    std::vector<std::string> onlyInFirst;   ///< names of columns
    std::vector<std::string> onlyInSecond;  ///< the same
    std::vector<RowDifference> rows;        ///< rows that are equal are not among them
    std::vector<std::string> notes;         ///< about keys that do not tell rows apart
    std::size_t moreNotes = 0;              ///< behind the first thousand

    /// Whether both have the same columns and rows.
    bool isEmpty() const noexcept {
        return onlyInFirst.empty() && onlyInSecond.empty() && rows.empty();
    }
};

/// Compares the rows of two logs that have the same value in a column, or in several with commas
/// between their names, or, for "", in their order; columns go by name, cells byte by byte. Rows
/// that were removed from a log are left out. No value when a log has no such column.
Result<Differences> compare(const Log& first, const Log& second, std::string_view key = {});

}  // namespace vek
