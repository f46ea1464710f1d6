#include "formats/comparing/row_groups.h"

#include <algorithm>
#include <bit>

namespace vek::formats {

namespace {

constexpr std::size_t fewestSlots = 16;
constexpr unsigned markBits = 32;

unsigned shiftFor(std::size_t slots) {
    return markBits - static_cast<unsigned>(std::countr_zero(slots));
}

}  // namespace

// Half of the slots stay free. Many rows may have few keys, and slots move in their order as they
// become more, so there is room for a sixteenth of them at first.
RowGroups::RowGroups(std::size_t rows)
    : slots_(std::bit_ceil(std::max(2 * (rows / 16 + 1), fewestSlots))),
      shift_(shiftFor(slots_.size())) {}

std::span<const unsigned> RowGroups::rowsOf(const Slot& slot) const {
    if (slot.isFree()) return {};
    if ((slot.rows & isGroup) == 0) return {&slot.rows, 1};
    return groups_[slot.rows & ~isGroup];
}

std::size_t RowGroups::addTo(Slot& slot, unsigned row) {
    if ((slot.rows & isGroup) == 0) {
        groups_.push_back({slot.rows});
        slot.rows = isGroup | static_cast<std::uint32_t>(groups_.size() - 1);
    }
    std::vector<unsigned>& rows = groups_[slot.rows & ~isGroup];
    rows.push_back(row);
    return rows.size();
}

void RowGroups::grow() {
    const std::vector<Slot> before = std::exchange(slots_, std::vector<Slot>(2 * slots_.size()));
    shift_ = shiftFor(slots_.size());
    for (const Slot& slot : before) {
        if (slot.isFree()) continue;
        std::size_t i = placeOf(slot.mark);
        while (!slots_[i].isFree()) i = (i + 1) & (slots_.size() - 1);
        slots_[i] = slot;
    }
}

}  // namespace vek::formats
