#include "vekdb/order/record_sort.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

#include "vekdb/order/key_ranks.h"
#include "vekdb/order/record_compare.h"
#include "vekdb/order/sort_keys.h"
#include "vekdb/order/sort_room.h"

namespace {

// Fewer rows are sorted before their keys would be made.
constexpr std::size_t worthKeys = 48;

/// One sort: makes items of the records and has them sorted.
class RecordSort final : private iTieBreak {
public:
    RecordSort(const dbrecord* const* records, std::size_t n, bool descending)
        : records_(records), n_(n), descending_(descending), items_(n) {}

    SortItems order();

private:
    void sortByRecords();
    void sortByKeys();
    void keepKeys(const SortKeys& keys);
    template <class KeyOf>
    void sortBy(unsigned keyBits, KeyOf keyOf, const iTieBreak* ties);

    int decide(std::size_t a, std::size_t b) const override;
    int compareRecords(std::size_t a, std::size_t b) const;

    const dbrecord* const* records_;
    std::size_t n_;
    bool descending_;
    SortItems items_;
    const SortKeys* keys_ = nullptr;
    std::unique_ptr<const unsigned char*[]> keyOf_;
};

int RecordSort::compareRecords(std::size_t a, std::size_t b) const {
    const dbrecord& x = *records_[a];
    const dbrecord& y = *records_[b];
    return descending_ ? compareDescending(x, y) : compareAscending(x, y);
}

int RecordSort::decide(std::size_t a, std::size_t b) const {
    if (keys_ == nullptr) return compareRecords(a, b);
    const RecordKey x(keyOf_[a]);
    const int order = keys_->compare(x, RecordKey(keyOf_[b]));
    return order == 0 && x.isCut() ? compareRecords(a, b) : order;
}

SortItems RecordSort::order() {
    n_ < worthKeys ? sortByRecords() : sortByKeys();
    return std::move(items_);
}

void RecordSort::sortByRecords() {
    sortBy(
        0, [](std::size_t) { return 0; }, this);
}

void RecordSort::sortByKeys() {
    countComparisons(n_ - 1);
    SortKeys keys(records_, n_, descending_);
    const bool isShort = keys.bits() <= items_.keyRoom();
    if (keys.anyCut() || !isShort) keepKeys(keys);
    if (!isShort) {
        const KeyRanks ranks(keys);
        if (ranks.areKnown()) {
            return sortBy(
                ranks.bits(), [&](std::size_t i) { return ranks.rankOf(i); },
                keys.anyCut() ? this : nullptr);
        }
    }
    keys.choosePlaces(items_.keyRoom());
    RecordKey key = keys.first();
    auto nextForm = [&](std::size_t) {
        const SortItem form = keys.shortForm(key);
        key = SortKeys::next(key);
        return form;
    };
    sortBy(keys.chosenBits(), nextForm, keys_ != nullptr ? this : nullptr);
}

// Where the short ones do not tell everything.
void RecordSort::keepKeys(const SortKeys& keys) {
    keys_ = &keys;
    keyOf_ = makeSortRoom<const unsigned char*>(n_);
    RecordKey key = keys.first();
    for (std::size_t i = 0; i < n_; ++i, key = SortKeys::next(key)) keyOf_[i] = key.bytes();
}

template <class KeyOf>
void RecordSort::sortBy(unsigned keyBits, KeyOf keyOf, const iTieBreak* ties) {
    for (std::size_t i = 0; i < n_; ++i) items_.set(i, keyOf(i));
    items_.sort(keyBits, ties);
}

bool hasRecord(const SortEntry& entry) {
    return entry.record != nullptr;
}

bool comesBefore(const SortEntry& a, const SortEntry& b) {
    return a.position < b.position;
}

// A row that is equal to every other would leave no order among them: it is kept out.
std::vector<SortEntry> presentByPosition(const SortEntry* entries, std::size_t n) {
    std::vector<SortEntry> present;
    present.reserve(n);
    std::copy_if(entries, entries + n, std::back_inserter(present), hasRecord);
    if (!std::is_sorted(present.begin(), present.end(), comesBefore)) {
        std::sort(present.begin(), present.end(), comesBefore);
    }
    return present;
}

bool arePresentByPosition(const SortEntry* entries, std::size_t n) {
    return std::all_of(entries, entries + n, hasRecord) &&
           std::is_sorted(entries, entries + n, comesBefore);
}

SortItems orderOfEntries(const SortEntry* entries, std::size_t n, int direction) {
    std::vector<const dbrecord*> records(n);
    std::transform(entries, entries + n, records.begin(),
                   [](const SortEntry& entry) { return entry.record; });
    return orderOfRecords(records.data(), n, direction);
}

// From a copy: what is read of it in any order hangs on nothing that was read before. By now the
// keys are gone, which took more room.
void sortInPlace(SortEntry* entries, std::size_t n, int direction) {
    const SortItems order = orderOfEntries(entries, n, direction);
    const std::unique_ptr<SortEntry[]> before = makeSortRoom<SortEntry>(n);
    std::copy(entries, entries + n, before.get());
    for (std::size_t i = 0; i < n; ++i) entries[i] = before[order[i]];
}

}  // namespace

SortItems orderOfRecords(const dbrecord* const* records, std::size_t n, int direction) {
    return RecordSort(records, n, direction < 0).order();
}

void sortRecordEntries(SortEntry* entries, std::size_t n, int direction) {
    if (arePresentByPosition(entries, n)) return sortInPlace(entries, n, direction);
    const std::vector<SortEntry> present = presentByPosition(entries, n);
    const SortItems order = orderOfEntries(present.data(), present.size(), direction);
    std::size_t next = 0;
    for (std::size_t i = 0; i < n; ++i) {
        if (hasRecord(entries[i])) entries[i] = present[order[next++]];
    }
}
