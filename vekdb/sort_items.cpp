#include "vekdb/sort_items_impl.h"

#include <cstdlib>

#include "vekdb/record_compare_impl.h"

namespace {

const iTieBreak* tieBreak = nullptr;
unsigned bitsOfIndex = 0;

template <class T>
int order(T a, T b) {
    return int{a > b} - int{a < b};
}

template <class Item>
const Item& itemAt(const void* place) {
    return *static_cast<const Item*>(place);
}

int byNumber(const void* a, const void* b) {
    countComparison();
    return order(itemAt<NarrowItem>(a), itemAt<NarrowItem>(b));
}

int byNarrow(const void* a, const void* b) {
    countComparison();
    const NarrowItem x = itemAt<NarrowItem>(a);
    const NarrowItem y = itemAt<NarrowItem>(b);
    if (x >> bitsOfIndex != y >> bitsOfIndex) return order(x, y);
    const NarrowItem indices = (NarrowItem{1} << bitsOfIndex) - 1;
    return tieBreak->decide(x & indices, y & indices);
}

int byWide(const void* a, const void* b) {
    countComparison();
    const WideItem& x = itemAt<WideItem>(a);
    const WideItem& y = itemAt<WideItem>(b);
    if (x.high != y.high) return order(x.high, y.high);
    if (x.low != y.low) return order(x.low, y.low);
    return tieBreak->decide(x.index, y.index);
}

int byTieBreak(const void* a, const void* b) {
    countComparison();
    return tieBreak->decide(itemAt<std::uint32_t>(a), itemAt<std::uint32_t>(b));
}

}  // namespace

void sortItems(NarrowItem* items, std::size_t n) {
    std::qsort(items, n, sizeof *items, byNumber);
}

void sortItems(NarrowItem* items, std::size_t n, unsigned indexBits, const iTieBreak& ties) {
    tieBreak = &ties;
    bitsOfIndex = indexBits;
    std::qsort(items, n, sizeof *items, byNarrow);
}

void sortItems(WideItem* items, std::size_t n, const iTieBreak& ties) {
    tieBreak = &ties;
    std::qsort(items, n, sizeof *items, byWide);
}

void sortItems(std::uint32_t* items, std::size_t n, const iTieBreak& ties) {
    tieBreak = &ties;
    std::qsort(items, n, sizeof *items, byTieBreak);
}
