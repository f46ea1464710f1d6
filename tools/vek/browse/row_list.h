#pragma once

#include <vector>

namespace vek::browse {

/// A number for each row of a table, which goes with its row as rows come and go. There is a gap
/// where that last happened: what comes or goes at many places, one behind the other, moves each
/// number once.
class RowList {
public:
    unsigned size() const { return static_cast<unsigned>(slots_.size() - gap_); }
    bool empty() const { return size() == 0; }
    unsigned operator[](unsigned row) const { return slots_[row < gapAt_ ? row : row + gap_]; }

    /// Of so many rows the row itself.
    void count(unsigned rows);
    void clear() { *this = RowList(); }
    void insert(unsigned at, const std::vector<unsigned>& numbers);
    /// Takes numbers out.
    std::vector<unsigned> take(unsigned first, unsigned count);

private:
    void moveGapTo(unsigned at);

    std::vector<unsigned> slots_;
    unsigned gapAt_ = 0;
    unsigned gap_ = 0;
};

}  // namespace vek::browse
