#include "vekdb/record_sort_impl.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <bit>
#include <memory>

#include "vekdb/record_compare_impl.h"
#include "vekdb/sort_keys_impl.h"

namespace {

// Fewer rows are sorted before their keys would be made.
constexpr std::size_t worthKeys = 48;

// What C's qsort moves about. A short key that leaves room for the row's index makes one number
// of both; otherwise they stand side by side.
struct WideItem {
    std::uint64_t high;
    std::uint32_t low;
    std::uint32_t index;
};
constexpr unsigned narrowBits = 64;
constexpr unsigned wideBits = 96;

int sign(bool greater, bool less) { return int{greater} - int{less}; }

template <class T>
int order(const T& a, const T& b) {
    return sign(a > b, a < b);
}

/// One sort. qsort hands its comparison nothing but the items, so the sort under way stands in
/// `running`; there is only one at a time, as with the rest of the comparison's state.
class RecordSort {
public:
    RecordSort(SortEntry* entries, std::size_t n, bool descending)
        : entries_(entries), n_(n), descending_(descending) {
        for (std::size_t i = 0; i < n_; ++i) {
            anyNull_ = anyNull_ || entries_[i].record == nullptr;
            inOrder_ = inOrder_ && (i == 0 || entries_[i - 1].position < entries_[i].position);
        }
    }

    void run() {
        running_ = this;
        n_ < worthKeys ? sortByRecords() : sortByKeys();
    }

private:
    template <class Item>
    using Items = std::unique_ptr<Item[]>;

    void sortByRecords();
    void sortByKeys();
    void sortNarrow(SortKeys& keys, unsigned indexBits);
    void sortWide(SortKeys& keys);
    template <class Item, class IndexOf>
    void putInOrder(const Items<Item>& items, IndexOf indexOf);

    int compareRecords(std::size_t a, std::size_t b) const {
        const dbrecord& x = *entries_[a].record;
        const dbrecord& y = *entries_[b].record;
        return descending_ ? compareDescending(x, y) : compareAscending(x, y);
    }
    int comparePositions(std::size_t a, std::size_t b) const {
        return order(entries_[a].position, entries_[b].position);
    }
    bool isNull(std::size_t i) const { return anyNull_ && entries_[i].record == nullptr; }
    int compareWithoutShortKeys(std::size_t a, std::size_t b) const;

    static int byRecord(const void* a, const void* b);
    static int byNumber(const void* a, const void* b);
    static int byNarrow(const void* a, const void* b);
    static int byWide(const void* a, const void* b);

    static const RecordSort* running_;

    SortEntry* entries_;
    std::size_t n_;
    bool descending_;
    bool anyNull_ = false;
    bool inOrder_ = true;           // by position
    const SortKeys* keys_ = nullptr;  // where the short ones do not tell everything
    unsigned indexBits_ = 0;
};

const RecordSort* RecordSort::running_ = nullptr;

// What decides between two rows whose short keys are the same.
int RecordSort::compareWithoutShortKeys(std::size_t a, std::size_t b) const {
    if (keys_ != nullptr) {
        if (int order = keys_->compare(a, b); order != 0) return order;
        if (keys_->isCut(a)) {
            if (int order = compareRecords(a, b); order != 0) return order;
        }
    }
    return comparePositions(a, b);
}

int RecordSort::byRecord(const void* a, const void* b) {
    countComparison();
    const std::size_t x = *static_cast<const std::uint32_t*>(a);
    const std::size_t y = *static_cast<const std::uint32_t*>(b);
    if (!running_->isNull(x) && !running_->isNull(y)) {
        if (int order = running_->compareRecords(x, y); order != 0) return order;
    }
    return running_->comparePositions(x, y);
}

int RecordSort::byNumber(const void* a, const void* b) {
    countComparison();
    return order(*static_cast<const std::uint64_t*>(a), *static_cast<const std::uint64_t*>(b));
}

int RecordSort::byNarrow(const void* a, const void* b) {
    countComparison();
    const std::uint64_t x = *static_cast<const std::uint64_t*>(a);
    const std::uint64_t y = *static_cast<const std::uint64_t*>(b);
    const std::uint64_t indices = (std::uint64_t{1} << running_->indexBits_) - 1;
    if (running_->isNull(x & indices) || running_->isNull(y & indices)) {
        return running_->comparePositions(x & indices, y & indices);
    }
    if (int keys = order(x >> running_->indexBits_, y >> running_->indexBits_); keys != 0) {
        return keys;
    }
    return running_->compareWithoutShortKeys(x & indices, y & indices);
}

int RecordSort::byWide(const void* a, const void* b) {
    countComparison();
    const WideItem& x = *static_cast<const WideItem*>(a);
    const WideItem& y = *static_cast<const WideItem*>(b);
    if (running_->isNull(x.index) || running_->isNull(y.index)) {
        return running_->comparePositions(x.index, y.index);
    }
    if (x.high != y.high) return order(x.high, y.high);
    if (x.low != y.low) return order(x.low, y.low);
    return running_->compareWithoutShortKeys(x.index, y.index);
}

template <class Item, class IndexOf>
void RecordSort::putInOrder(const Items<Item>& items, IndexOf indexOf) {
    Items<SortEntry> sorted = std::make_unique_for_overwrite<SortEntry[]>(n_);
    for (std::size_t i = 0; i < n_; ++i) {
        sorted[i] = entries_[indexOf(items[i])];
    }
    std::memcpy(entries_, sorted.get(), n_ * sizeof(SortEntry));
}

void RecordSort::sortByRecords() {
    auto items = std::make_unique_for_overwrite<std::uint32_t[]>(n_);
    for (std::size_t i = 0; i < n_; ++i) {
        items[i] = static_cast<std::uint32_t>(i);
    }
    std::qsort(items.get(), n_, sizeof items[0], byRecord);
    putInOrder(items, [](std::uint32_t index) { return index; });
}

void RecordSort::sortByKeys() {
    SortKeys keys(entries_, n_, descending_);
    const auto indexBits = static_cast<unsigned>(std::bit_width(n_ - 1));
    const bool isNarrow = keys.bits() + indexBits <= narrowBits;
    if (!keys.areWhole() || keys.bits() > wideBits) {
        keys.index();
        keys_ = &keys;
    }
    isNarrow ? sortNarrow(keys, indexBits) : sortWide(keys);
}

void RecordSort::sortNarrow(SortKeys& keys, unsigned indexBits) {
    indexBits_ = indexBits;
    auto items = std::make_unique_for_overwrite<std::uint64_t[]>(n_);
    keys.shorten(narrowBits - indexBits, [&](std::size_t i, SortKeys::Short key) {
        items[i] = static_cast<std::uint64_t>(key) << indexBits | i;
    });
    // Where indices go up with positions the number decides alone.
    const bool numberTellsAll = keys_ == nullptr && !anyNull_ && inOrder_;
    std::qsort(items.get(), n_, sizeof items[0], numberTellsAll ? byNumber : byNarrow);
    const std::uint64_t indices = (std::uint64_t{1} << indexBits) - 1;
    putInOrder(items, [=](std::uint64_t item) { return item & indices; });
}

void RecordSort::sortWide(SortKeys& keys) {
    auto items = std::make_unique_for_overwrite<WideItem[]>(n_);
    const unsigned bits = std::min(keys.bits(), wideBits);
    keys.shorten(bits, [&](std::size_t i, SortKeys::Short key) {
        key <<= wideBits - bits;
        items[i] = {static_cast<std::uint64_t>(key >> 32), static_cast<std::uint32_t>(key),
                    static_cast<std::uint32_t>(i)};
    });
    std::qsort(items.get(), n_, sizeof items[0], byWide);
    putInOrder(items, [](const WideItem& item) { return item.index; });
}

}  // namespace

void sortRecordEntries(SortEntry* entries, std::size_t n, int direction) {
    if (n < 2) return;
    RecordSort(entries, n, direction < 0).run();
}
