#pragma once

#include <string>
#include <vector>

#include "formats/log/log.h"

namespace vek::formats {

struct CellDifference {
    std::string column;
    std::string before;
    std::string after;
};

/// A row that is in one log only, or in both with other cells.
struct RowDifference {
    enum Kind { removed, added, changed };
    Kind kind = changed;
    unsigned a = 0;  ///< the row in A, for removed and changed
    unsigned b = 0;  ///< the row in B, for added and changed
    std::string key;
    std::vector<CellDifference> cells;
};

/// How two logs differ, in the order of A with B's rows where they stand.
struct Differences {
    const Log& a;
    const Log& b;
    std::vector<std::string> onlyInA;  ///< column names
    std::vector<std::string> onlyInB;
    std::vector<RowDifference> rows;
    std::vector<std::string> notes;  ///< what to tell about keys

    bool isEmpty() const { return onlyInA.empty() && onlyInB.empty() && rows.empty(); }
};

/// Compares by key, or in order when `key` is "". Columns go by name, case ignored; cells are
/// compared byte by byte. The logs must outlive what is returned.
Differences compareLogs(const Log& a, const Log& b, const std::string& key);

}  // namespace vek::formats
