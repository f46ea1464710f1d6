#pragma once

#include <cstddef>
#include <cstdint>

/// Decides between rows, by their indices, whose short keys are the same.
class iTieBreak {
public:
    virtual int decide(std::size_t a, std::size_t b) const = 0;

protected:
    ~iTieBreak() = default;
};

// What C's qsort moves about in place of rows. qsort hands its comparison the items and nothing
// else, so what belongs to the sort under way stands in variables of the process: only one sort
// may run at a time. Every comparison is counted.

/// A short key above, the row's index in the lowest bits.
using NarrowItem = std::uint64_t;
inline constexpr unsigned narrowBits = 64;

/// A short key beside the row's index.
struct WideItem {
    static constexpr unsigned keyBits = 96;

    std::uint64_t high;
    std::uint32_t low;
    std::uint32_t index;
};

/// Sorts by the whole number, so that indices decide between keys that are the same.
void sortItems(NarrowItem* items, std::size_t n);
void sortItems(NarrowItem* items, std::size_t n, unsigned indexBits, const iTieBreak& ties);
void sortItems(WideItem* items, std::size_t n, const iTieBreak& ties);
/// Items are indices and nothing else: every comparison is the tie-breaker's.
void sortItems(std::uint32_t* items, std::size_t n, const iTieBreak& ties);
