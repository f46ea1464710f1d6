#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "column_lookup.h"
#include "log_image.h"
#include "sqlite_api.h"

/// Which conditions of a statement a table looks at by itself. SQLite looks at all of them again,
/// so nothing depends on it that more rows are let through; none is left out that SQLite would
/// have kept.
namespace vek::sql {

/// What a table tells its planner.
struct TableFacts {
    int columns = 0;       ///< those of the log, which stand in front
    int numberColumn = 0;  ///< where the number of the row stands
    bool isUtf8 = true;    ///< texts are compared as the bytes that a log has
    unsigned rows = 0;
};

/// Chooses what to look at, and says how much that costs.
int planQuery(const TableFacts& facts, sqlite3_index_info* info);

/// The conditions that were chosen, with the values of one run.
class RowFilter {
public:
    /// `plan` is what `planQuery` left.
    RowFilter(const TableFacts& facts, const char* plan, int count, sqlite3_value** values);

    /// The rows that may be meant: from one on, up to another one, or those of a list.
    unsigned first() const { return first_; }
    unsigned end() const { return end_; }
    bool takes(const LogImage& image, unsigned row) const;
    /// Where a list is found of rows that alone may be taken, it is put there. The image must
    /// know all rows.
    bool find(LogImage& image, std::vector<unsigned>& rows) const;

private:
    struct Check {
        int op = 0;
        unsigned column = 0;
        bool isTimecode = false;
        std::string_view text = {};
        EqualCells equal;

        bool holds(std::string_view cell) const;
    };

    void addNumber(int op, sqlite3_value* value);
    void addText(int op, int column, char kind, sqlite3_value* value);

    std::vector<std::string> texts_;  // stay where they are
    std::vector<Check> checks_;
    unsigned first_ = 0;
    unsigned end_;
};

}  // namespace vek::sql
