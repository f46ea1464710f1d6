#include "vekdb/order/key_ranks.h"

#include <bit>
#include <cstring>

namespace {

constexpr std::size_t rowsForEach = 3;  // of the keys that differ, for ranks to be worth it

std::uint64_t wordAt(const unsigned char* bytes) {
    std::uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

// Keys are whole words, so nothing is left over behind the last.
std::uint64_t hashOf(RecordKey key) {
    std::uint64_t hash = 0;
    for (std::size_t i = 0; i < key.size(); i += RecordKey::word) {
        hash = (hash ^ wordAt(key.bytes() + i)) * 0x9E3779B97F4A7C15u;
        hash ^= hash >> 32;
    }
    return hash;
}

bool areSame(RecordKey a, RecordKey b) {
    return a.size() == b.size() && std::memcmp(a.bytes(), b.bytes(), a.size()) == 0;
}

}  // namespace

KeyRanks::KeyRanks(SortKeys& keys)
    : keys_(keys),
      most_(keys.count() / rowsForEach),
      table_(std::bit_ceil(2 * most_ + 2), none),
      ids_(std::make_unique_for_overwrite<std::uint32_t[]>(keys.count())) {
    if (identify()) rank();
}

unsigned KeyRanks::bits() const {
    return static_cast<unsigned>(std::bit_width(different_.size() - 1));
}

bool KeyRanks::identify() {
    RecordKey key = keys_.first();
    for (std::size_t row = 0; row < keys_.count(); ++row) {
        ids_[row] = idOf(key);
        if (different_.size() > most_) return false;
        key = SortKeys::next(key);
    }
    return true;
}

std::uint32_t KeyRanks::idOf(RecordKey key) {
    const std::size_t mask = table_.size() - 1;
    std::size_t place = hashOf(key) & mask;
    for (; table_[place] != none; place = (place + 1) & mask) {
        if (areSame(different_[table_[place]], key)) return table_[place];
    }
    table_[place] = static_cast<std::uint32_t>(different_.size());
    different_.push_back(key);
    return table_[place];
}

void KeyRanks::rank() {
    const std::size_t n = different_.size();
    SortItems items(n);
    keys_.choosePlaces(items.keyRoom());
    for (std::size_t id = 0; id < n; ++id) items.set(id, keys_.shortForm(different_[id]));
    items.sort(keys_.chosenBits(), this);
    ranks_ = std::make_unique_for_overwrite<std::uint32_t[]>(n);
    for (std::uint32_t rank = 0; rank < n; ++rank) ranks_[items[rank]] = rank;
}
