#include "vekdb/record_sort_impl.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <vector>

#include "vekdb/key_ranks_impl.h"
#include "vekdb/record_compare_impl.h"
#include "vekdb/sort_items_impl.h"
#include "vekdb/sort_keys_impl.h"

namespace {

// Fewer rows are sorted before their keys would be made.
constexpr std::size_t worthKeys = 48;

template <class Item>
std::unique_ptr<Item[]> makeItems(std::size_t n) {
    return std::make_unique_for_overwrite<Item[]>(n);
}

/// One sort: makes items of the rows, has them sorted and puts the entries in their order.
class RecordSort final : private iTieBreak {
public:
    RecordSort(SortEntry* entries, std::size_t n, bool descending);

    void run() { isForKeys_ ? sortByKeys() : sortByRecords(); }

private:
    void sortByRecords();
    void sortByKeys();
    template <class KeyOf>
    void sortNarrow(const SortKeys& keys, KeyOf keyOf);
    void sortWide(SortKeys& keys);
    template <class Item, class IndexOf>
    void putInOrder(const Item* items, IndexOf indexOf);

    int decide(std::size_t a, std::size_t b) const override;
    int compareRecords(std::size_t a, std::size_t b) const;
    int compareByKeys(std::size_t a, std::size_t b) const;

    SortEntry* entries_;
    std::size_t n_;
    bool descending_;
    unsigned indexBits_;
    bool isForKeys_;
    bool inOrder_ = true;             // by position
    const SortKeys* keys_ = nullptr;  // where the short ones do not tell everything
    std::unique_ptr<const unsigned char*[]> keyOf_;
};

RecordSort::RecordSort(SortEntry* entries, std::size_t n, bool descending)
    : entries_(entries),
      n_(n),
      descending_(descending),
      indexBits_(static_cast<unsigned>(std::bit_width(n - 1))),
      isForKeys_(n >= worthKeys) {
    for (std::size_t i = 1; i < n_; ++i) {
        inOrder_ = inOrder_ && entries_[i - 1].position < entries_[i].position;
    }
}

int RecordSort::compareRecords(std::size_t a, std::size_t b) const {
    const dbrecord& x = *entries_[a].record;
    const dbrecord& y = *entries_[b].record;
    return descending_ ? compareDescending(x, y) : compareAscending(x, y);
}

int RecordSort::compareByKeys(std::size_t a, std::size_t b) const {
    const RecordKey x(keyOf_[a]);
    const int order = keys_->compare(x, RecordKey(keyOf_[b]));
    return order == 0 && x.isCut() ? compareRecords(a, b) : order;
}

int RecordSort::decide(std::size_t a, std::size_t b) const {
    int order = 0;
    if (!isForKeys_) {
        order = compareRecords(a, b);
    } else if (keys_ != nullptr) {
        order = compareByKeys(a, b);
    }
    if (order != 0) return order;
    return int{entries_[a].position > entries_[b].position} -
           int{entries_[a].position < entries_[b].position};
}

template <class Item, class IndexOf>
void RecordSort::putInOrder(const Item* items, IndexOf indexOf) {
    auto sorted = makeItems<SortEntry>(n_);
    for (std::size_t i = 0; i < n_; ++i) {
        sorted[i] = entries_[indexOf(items[i])];
    }
    std::memcpy(entries_, sorted.get(), n_ * sizeof(SortEntry));
}

void RecordSort::sortByRecords() {
    auto items = makeItems<std::uint32_t>(n_);
    for (std::size_t i = 0; i < n_; ++i) items[i] = static_cast<std::uint32_t>(i);
    sortItems(items.get(), n_, *this);
    putInOrder(items.get(), [](std::uint32_t index) { return index; });
}

void RecordSort::sortByKeys() {
    SortKeys keys(entries_, n_, descending_);
    const bool isNarrow = keys.bits() + indexBits_ <= narrowBits;
    if (keys.anyCut() || !isNarrow) {
        keys_ = &keys;
        keyOf_ = makeItems<const unsigned char*>(n_);
        RecordKey key = keys.first();
        for (std::size_t i = 0; i < n_; ++i, key = SortKeys::next(key)) keyOf_[i] = key.bytes();
    }
    if (isNarrow) {
        keys.choosePlaces(narrowBits - indexBits_);
        RecordKey key = keys.first();
        return sortNarrow(keys, [&](std::size_t) {
            const auto form = keys.shortForm<NarrowItem>(key);
            key = SortKeys::next(key);
            return form;
        });
    }
    const KeyRanks ranks(keys);
    if (!ranks.areKnown()) return sortWide(keys);
    if (!keys.anyCut()) keys_ = nullptr;
    sortNarrow(keys, [&](std::size_t i) { return NarrowItem{ranks.rankOf(i)}; });
}

// Where indices go up with positions, and keys tell everything, the item's number decides alone.
template <class KeyOf>
void RecordSort::sortNarrow(const SortKeys&, KeyOf keyOf) {
    auto items = makeItems<NarrowItem>(n_);
    for (std::size_t i = 0; i < n_; ++i) items[i] = keyOf(i) << indexBits_ | i;
    if (keys_ == nullptr && inOrder_) {
        sortItems(items.get(), n_);
    } else {
        sortItems(items.get(), n_, indexBits_, *this);
    }
    const NarrowItem indices = (NarrowItem{1} << indexBits_) - 1;
    putInOrder(items.get(), [=](NarrowItem item) { return item & indices; });
}

void RecordSort::sortWide(SortKeys& keys) {
    keys.choosePlaces(WideItem::keyBits);
    auto items = makeItems<WideItem>(n_);
    for (std::size_t i = 0; i < n_; ++i) items[i] = wideItem(keys, RecordKey(keyOf_[i]), i);
    sortItems(items.get(), n_, *this);
    putInOrder(items.get(), [](const WideItem& item) { return item.index; });
}

void sortAll(SortEntry* entries, std::size_t n, bool descending) {
    if (n >= 2) RecordSort(entries, n, descending).run();
}

bool hasRecord(const SortEntry& entry) { return entry.record != nullptr; }

// A row that is equal to every other would leave no order among them: it is kept out.
void sortAround(SortEntry* entries, std::size_t n, bool descending) {
    std::vector<SortEntry> present;
    present.reserve(n);
    std::copy_if(entries, entries + n, std::back_inserter(present), hasRecord);
    sortAll(present.data(), present.size(), descending);
    auto next = present.begin();
    for (std::size_t i = 0; i < n; ++i) {
        if (hasRecord(entries[i])) entries[i] = *next++;
    }
}

}  // namespace

void sortRecordEntries(SortEntry* entries, std::size_t n, int direction) {
    const bool allPresent = std::all_of(entries, entries + n, hasRecord);
    (allPresent ? sortAll : sortAround)(entries, n, direction < 0);
}
