#include "formats/log/line_numbers.h"

#include <algorithm>

namespace vek::formats {

// The second row of a run says how far its rows are from each other.
void LineNumbers::push_back(std::uint32_t line) {
    const auto row = static_cast<std::uint32_t>(count_);
    if (runs_.empty()) {
        runs_.push_back({row, line, 0});
    } else {
        Run& last = runs_.back();
        if (last.row + 1 == row) last.step = line - last.line;
        if (last.lineOf(row) != line) runs_.push_back({row, line, 0});
    }
    ++count_;
}

void LineNumbers::resize(std::size_t count) {
    while (count_ < count) push_back(0);
    count_ = count;
    while (!runs_.empty() && runs_.back().row >= count) runs_.pop_back();
}

std::uint32_t LineNumbers::operator[](std::size_t row) const {
    const auto behind =
        std::upper_bound(runs_.begin(), runs_.end(), row,
                         [](std::size_t at, const Run& run) { return at < run.row; });
    return (behind - 1)->lineOf(row);
}

std::size_t LineNumbers::firstFrom(std::size_t line) const {
    std::size_t first = 0;
    std::size_t count = count_;
    while (count > 0) {
        const std::size_t half = count / 2;
        if ((*this)[first + half] < line) {
            first += half + 1;
            count -= half + 1;
        } else {
            count = half;
        }
    }
    return first;
}

}  // namespace vek::formats
