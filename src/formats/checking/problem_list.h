#pragma once

#include <cstdint>
#include <vector>

#include <vekdb/formats/problem.h>
#include "formats/text/name_list.h"

namespace vek::formats {

/// Problems of which there may be one for each cell of a log: what they say is kept once, as nearly
/// all say the same of other lines.
class ProblemList {
public:
    /// Of one line those of a lower group come first, and of a group those that were added first.
    void add(std::size_t group, const Problem& problem);
    void sort();

    ProblemList() = default;
    ProblemList(ProblemList&&) = default;
    ProblemList& operator=(ProblemList&&) = default;

    std::size_t size() const { return entries_.size(); }
    bool empty() const { return entries_.empty(); }
    Problem operator[](std::size_t place) const;

    class Iterator {
    public:
        Iterator(const ProblemList& list, std::size_t place) : list_(list), place_(place) {}
        Problem operator*() const { return list_[place_]; }
        Iterator& operator++() {
            ++place_;
            return *this;
        }
        bool operator!=(const Iterator& other) const { return place_ != other.place_; }

    private:
        const ProblemList& list_;
        std::size_t place_;
    };
    Iterator begin() const { return {*this, 0}; }
    Iterator end() const { return {*this, size()}; }

private:
    struct Entry {
        std::uint32_t line;
        std::uint32_t group;
        std::uint32_t column;  // these are places of texts
        std::uint32_t found;
        std::uint32_t expected;
        std::uint32_t outcome : 31;
        std::uint32_t isDamage : 1;
    };

    std::uint32_t placeOf(const std::string& text) {
        return static_cast<std::uint32_t>(texts_.place(text));
    }

    NameList texts_;
    std::vector<Entry> entries_;
};

}  // namespace vek::formats
