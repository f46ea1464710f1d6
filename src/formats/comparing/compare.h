#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "formats/comparing/row_key.h"
#include "formats/log/log.h"

namespace vek::formats {

/// Two columns that belong together.
struct ColumnPair {
    unsigned a = 0;
    unsigned b = 0;
};

/// A row that is in one log only, or in both with other cells.
struct DifferingRow {
    enum Kind { removed, added, changed };
    Kind kind = changed;
    unsigned a = 0;  ///< the row in A, for removed and changed
    unsigned b = 0;  ///< the row in B, for added and changed
};

/// Two cells that differ; of the logs' own text.
struct DifferingCell {
    const ColumnPair& columns;
    std::string_view before;
    std::string_view after;
};

/// How two logs differ, in the order of A with B's rows where they stand.
struct LogComparison {
    const Log& a;
    const Log& b;
    std::vector<ColumnPair> shared;
    std::vector<unsigned> onlyInA;  ///< columns
    std::vector<unsigned> onlyInB;
    std::vector<DifferingRow> rows;
    std::vector<std::string> notes;  ///< what to tell about keys
    std::size_t moreNotes = 0;       ///< behind the first thousand
    RowKey key;                      ///< in A, where rows were matched by it

    bool isEmpty() const { return onlyInA.empty() && onlyInB.empty() && rows.empty(); }
    /// What a changed row's key is, "" without one.
    std::string keyOf(const DifferingRow& row) const { return key.text(a, row.a); }
    /// The cells in which the two rows of a changed one differ.
    template <class Take>
    void forEachCell(const DifferingRow& row, Take take) const {
        for (const ColumnPair& pair : shared) {
            const std::string_view before = a.cell(row.a, pair.a);
            const std::string_view after = b.cell(row.b, pair.b);
            if (before != after) take(DifferingCell{pair, before, after});
        }
    }
};

/// Compares by key, one column or several, or in order when `key` is "". Columns go by name, case
/// ignored; cells are compared byte by byte. The logs must outlive what is returned.
LogComparison compareLogs(const Log& a, const Log& b, const std::string& key);

}  // namespace vek::formats
