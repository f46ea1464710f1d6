#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "formats/comparing/compare.h"

namespace vek::formats {

/// Rows of two logs that belong together.
struct RowPair {
    unsigned a = 0;
    unsigned b = 0;
};

/// Looks at two rows in the columns that belong together, which outlive it.
class RowComparer {
public:
    explicit RowComparer(const std::vector<ColumnPair>& columns);

    /// Whether they have the same cells.
    bool areEqual(const dbrecord& a, const dbrecord& b);
    /// Whether at least half of the cells are the same that one of them has filled.
    bool areAkin(const dbrecord& a, const dbrecord& b);

private:
    void fetch(const dbrecord& a, const dbrecord& b);

    const std::vector<ColumnPair>& columns_;
    std::vector<std::string_view> a_;
    std::vector<std::string_view> b_;
};

/// What the rows of two logs hold in the columns that both have. The logs and the columns outlive
/// it.
class RowContents {
public:
    RowContents(const Log& a, const Log& b, const std::vector<ColumnPair>& columns)
        : a_(a), b_(b), columns_(columns), rows_(columns) {}

    /// How many rows are equal from the first on.
    unsigned equalAtStart();
    /// How many are from the last one back, behind so many at the start.
    unsigned equalAtEnd(unsigned behind);
    /// Of the rows between those at the start and those at the end the equal ones of which there
    /// is one in either log, in the order of A.
    std::vector<RowPair> onceInEach(unsigned start, unsigned end);

private:
    bool areEqual(unsigned a, unsigned b);
    std::vector<std::uint64_t> hashesOf(const Log& log, unsigned ColumnPair::*side, unsigned start,
                                        unsigned end) const;

    const Log& a_;
    const Log& b_;
    const std::vector<ColumnPair>& columns_;
    RowComparer rows_;
};

}  // namespace vek::formats
