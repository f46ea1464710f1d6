#include "tools/vek/browse/row_list.h"

#include <algorithm>
#include <numeric>

namespace vek::browse {

void RowList::count(unsigned rows) {
    clear();
    slots_.resize(rows);
    std::iota(slots_.begin(), slots_.end(), 0u);
}

void RowList::moveGapTo(unsigned at) {
    const auto begin = slots_.begin();
    if (at > gapAt_) {
        std::copy(begin + gapAt_ + gap_, begin + at + gap_, begin + gapAt_);
    } else {
        std::copy_backward(begin + at, begin + gapAt_, begin + gapAt_ + gap_);
    }
    gapAt_ = at;
}

void RowList::insert(unsigned at, const std::vector<unsigned>& numbers) {
    const auto more = static_cast<unsigned>(numbers.size());
    if (gap_ < more) {
        moveGapTo(size());
        slots_.resize(slots_.size() + more + slots_.size() / 8);
        gap_ = static_cast<unsigned>(slots_.size()) - gapAt_;
    }
    moveGapTo(at);
    std::copy(numbers.begin(), numbers.end(), slots_.begin() + at);
    gapAt_ += more;
    gap_ -= more;
}

std::vector<unsigned> RowList::take(unsigned first, unsigned count) {
    moveGapTo(first);
    const auto from = slots_.begin() + first + gap_;
    gap_ += count;
    return {from, from + count};
}

}  // namespace vek::browse
