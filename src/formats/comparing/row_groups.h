#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace vek::formats {

/// Rows in groups of one key each. Keys are not kept: a row is found by the hash of its key, and
/// whoever asks tells whether a row that is there has the key, too. The hash is a keyed one, so
/// that nobody can choose keys that all meet in one place.
class RowGroups {
public:
    /// About so many rows are to come.
    explicit RowGroups(std::size_t rows = 0);

    /// Enters a row behind those of its key; how many of them there are then.
    template <class IsSame>
    std::size_t add(std::uint64_t hash, unsigned row, IsSame isSame) {
        if (2 * (used_ + 1) > slots_.size()) grow();
        Slot& slot = slotOf(hash, isSame);
        if (slot.isFree()) {
            ++used_;
            slot = {markOf(hash), row};
            return 1;
        }
        return addTo(slot, row);
    }

    /// The rows of a key in the order in which they came; ends with the next `add`.
    template <class IsSame>
    std::span<const unsigned> find(std::uint64_t hash, IsSame isSame) const {
        return rowsOf(const_cast<RowGroups*>(this)->slotOf(hash, isSame));
    }

    /// Of the keys that several rows have, in the order of their second rows.
    const std::vector<std::vector<unsigned>>& repeated() const { return groups_; }

    /// Starts to fetch from memory what the key is looked for in.
    void expect(std::uint64_t hash) const { __builtin_prefetch(&slots_[placeOf(markOf(hash))]); }

private:
    static constexpr std::uint32_t none = 0xFFFFFFFF;
    static constexpr std::uint32_t isGroup = 0x80000000;  // the rest is its number

    struct Slot {
        std::uint32_t mark = 0;  // of the hash
        std::uint32_t rows = none;

        bool isFree() const { return rows == none; }
    };

    static std::uint32_t markOf(std::uint64_t hash) {
        return static_cast<std::uint32_t>(hash >> 32);
    }
    std::size_t placeOf(std::uint32_t mark) const { return mark >> shift_; }

    template <class IsSame>
    Slot& slotOf(std::uint64_t hash, IsSame isSame) {
        const std::uint32_t mark = markOf(hash);
        for (std::size_t i = placeOf(mark);; i = (i + 1) & (slots_.size() - 1)) {
            Slot& slot = slots_[i];
            if (slot.isFree()) return slot;
            if (slot.mark == mark && isSame(rowsOf(slot).front())) return slot;
        }
    }

    std::span<const unsigned> rowsOf(const Slot& slot) const;
    std::size_t addTo(Slot& slot, unsigned row);
    void grow();

    std::vector<Slot> slots_;
    unsigned shift_;  // what is left of a mark's bits is a place
    std::size_t used_ = 0;
    std::vector<std::vector<unsigned>> groups_;
};

/// Calls `take` with the numbers from 0 on and their hashes, which are worked out some time
/// ahead, so that `groups` are fetched from memory meanwhile.
template <class HashOf, class Take>
void forEachHashed(const RowGroups& groups, unsigned count, HashOf hashOf, Take take) {
    constexpr unsigned ahead = 16;
    std::uint64_t hashes[ahead];
    for (unsigned first = 0; first < count; first += ahead) {
        const unsigned end = count - first < ahead ? count : first + ahead;
        for (unsigned row = first; row < end; ++row) {
            hashes[row - first] = hashOf(row);
            groups.expect(hashes[row - first]);
        }
        for (unsigned row = first; row < end; ++row) take(row, hashes[row - first]);
    }
}

}  // namespace vek::formats
