#include "vekdb/order/sort_items.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "vekdb/order/record_compare.h"
#include "vekdb/order/sort_room.h"

namespace {

// More digits would not stay in the processor's first cache while items are dealt out to them.
constexpr unsigned mostDigitBits = 8;

// Few items are dealt out to few digits: each digit costs a step as each item does.
unsigned digitBitsFor(std::size_t n) {
    return std::min(mostDigitBits, static_cast<unsigned>(std::bit_width(n)));
}

// What compares equal keeps its order. `room` is for as many items.
template <class IsBefore>
void mergeSort(SortItem* first, SortItem* last, SortItem* room, const IsBefore& isBefore) {
    if (last - first < 2) return;
    SortItem* const middle = first + (last - first) / 2;
    mergeSort(first, middle, room, isBefore);
    mergeSort(middle, last, room, isBefore);
    if (!isBefore(*middle, middle[-1])) return;
    SortItem* const roomMiddle = std::copy(first, middle, room);
    SortItem* const roomEnd = std::copy(middle, last, roomMiddle);
    std::merge(room, roomMiddle, roomMiddle, roomEnd, first, isBefore);
}

}  // namespace

SortItems::SortItems(std::size_t n)
    : n_(n),
      indexBits_(static_cast<unsigned>(std::bit_width(n))),
      items_(makeSortRoom<SortItem>(n)) {}

// From the last digit to the first; each time what has the same digit keeps its order.
void SortItems::sort(unsigned keyBits, const iTieBreak* ties) {
    if (n_ < 2) return;
    Items spare = makeSortRoom<SortItem>(n_);
    for (unsigned done = 0; done < keyBits;) {
        const unsigned digitBits = std::min(digitBitsFor(n_), keyBits - done);
        deal(spare, indexBits_ + done, digitBits);
        done += digitBits;
    }
    if (ties != nullptr) sortTies(spare, *ties);
}

void SortItems::deal(Items& spare, unsigned shift, unsigned digitBits) {
    const SortItem digits = (SortItem{1} << digitBits) - 1;
    std::uint32_t places[1 << mostDigitBits] = {};
    for (std::size_t i = 0; i < n_; ++i) ++places[items_[i] >> shift & digits];
    std::uint32_t next = 0;
    for (SortItem digit = 0; digit <= digits; ++digit) {
        next += std::exchange(places[digit], next);
    }
    for (std::size_t i = 0; i < n_; ++i) {
        spare[places[items_[i] >> shift & digits]++] = items_[i];
    }
    items_.swap(spare);
}

void SortItems::sortTies(Items& spare, const iTieBreak& ties) {
    auto isBefore = [&](SortItem a, SortItem b) {
        countComparisons(1);
        return ties.decide(a & indices(), b & indices()) < 0;
    };
    SortItem* const end = items_.get() + n_;
    for (SortItem* first = items_.get(); first != end;) {
        auto isOther = [&](SortItem item) { return (item ^ *first) >> indexBits_ != 0; };
        SortItem* const last = std::find_if(first + 1, end, isOther);
        mergeSort(first, last, spare.get(), isBefore);
        first = last;
    }
}
