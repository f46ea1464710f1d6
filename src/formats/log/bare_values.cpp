#include "formats/log/bare_values.h"

#include <algorithm>

namespace vek::formats {

BareValues::Column& BareValues::at(unsigned column) {
    if (column >= columns_.size()) columns_.resize(column + std::size_t{1});
    return columns_[column];
}

Bare BareValues::of(unsigned row, unsigned column) const {
    if (column >= columns_.size()) return Bare::no;
    const Column& asked = columns_[column];
    const auto replaced = asked.replaced.find(row);
    if (replaced != asked.replaced.end()) return replaced->second;
    const auto behind =
        std::upper_bound(asked.runs.begin(), asked.runs.end(), row,
                         [](unsigned at, const Run& run) { return at < run.begin; });
    if (behind == asked.runs.begin()) return Bare::no;
    const Run& run = *(behind - 1);
    return row < run.end ? run.bare : Bare::no;
}

void BareValues::note(unsigned row, unsigned column, Bare bare) {
    if (bare == Bare::no && column >= columns_.size()) return;
    std::vector<Run>& runs = at(column).runs;
    const bool isKnown = !runs.empty() && runs.back().end > row;
    if (isKnown && --runs.back().end == runs.back().begin) runs.pop_back();
    if (bare == Bare::no) return;
    const bool goesOn = !runs.empty() && runs.back().end == row && runs.back().bare == bare;
    if (goesOn)
        ++runs.back().end;
    else
        runs.push_back({row, row + 1, bare});
}

void BareValues::replace(unsigned row, unsigned column, Bare bare) {
    if (of(row, column) != bare) at(column).replaced.insert_or_assign(row, bare);
}

void BareValues::forget(unsigned column) {
    if (column < columns_.size()) {
        columns_.erase(columns_.begin() + static_cast<std::ptrdiff_t>(column));
    }
}

}  // namespace vek::formats
