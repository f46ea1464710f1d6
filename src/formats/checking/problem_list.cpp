#include "formats/checking/problem_list.h"

#include <algorithm>
#include <tuple>

namespace vek::formats {

void ProblemList::add(std::size_t group, const Problem& problem) {
    entries_.push_back({static_cast<std::uint32_t>(problem.line), static_cast<std::uint32_t>(group),
                        placeOf(problem.column), placeOf(problem.found), placeOf(problem.expected),
                        placeOf(problem.outcome) & 0x7FFFFFFFu, problem.isDamage ? 1u : 0u});
}

void ProblemList::sort() {
    const auto isBefore = [](const Entry& a, const Entry& b) {
        return std::tie(a.line, a.group) < std::tie(b.line, b.group);
    };
    if (std::is_sorted(entries_.begin(), entries_.end(), isBefore)) return;
    std::stable_sort(entries_.begin(), entries_.end(), isBefore);
}

Problem ProblemList::operator[](std::size_t place) const {
    const Entry& entry = entries_[place];
    return {entry.line,
            texts_[entry.column],
            texts_[entry.found],
            texts_[entry.expected],
            texts_[entry.outcome],
            entry.isDamage != 0};
}

}  // namespace vek::formats
