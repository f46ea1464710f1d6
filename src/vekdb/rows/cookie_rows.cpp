#include "vekdb/rows/cookie_rows.h"

#include <cstring>

namespace {

constexpr std::size_t fewestSlots = 16;

// Slots are a power of two, and two thirds of them at most are taken: runs of them stay short.
std::size_t slotsFor(std::size_t rows) {
    std::size_t slots = fewestSlots;
    while (slots - slots / 3 <= rows) slots *= 2;
    return slots;
}

}  // namespace

// The address of the slots takes part, so that nobody can write a file whose identities all
// have one home.
std::size_t CookieRows::home(const Quor::UUID& id) const {
    std::uint64_t halves[2];
    std::memcpy(halves, id.bytes, sizeof halves);
    const auto seed = reinterpret_cast<std::uintptr_t>(slots_.data());
    std::uint64_t mixed = (halves[0] ^ seed) * 0x9E3779B97F4A7C15u;
    mixed = (mixed ^ (mixed >> 32) ^ halves[1]) * 0xD6E8FEB86659FD93u;
    return static_cast<std::size_t>(mixed ^ (mixed >> 32)) & (slots_.size() - 1);
}

std::size_t CookieRows::place(const Quor::UUID& id) const {
    std::size_t at = home(id);
    while (slots_[at].taken() && !(slots_[at].id == id)) at = (at + 1) & (slots_.size() - 1);
    return at;
}

unsigned CookieRows::find(const Quor::UUID& id) const {
    return empty() ? none : slots_[place(id)].row;
}

void CookieRows::enter(const Quor::UUID& id, unsigned row) {
    Slot& slot = slotFor(id);
    if (slot.taken()) return;
    slot = {id, row};
    ++count_;
}

void CookieRows::replace(const Quor::UUID& id, unsigned row) {
    enter(id, row);
    slotFor(id).row = row;
}

void CookieRows::reserve(std::size_t rows) {
    const std::size_t slots = slotsFor(rows);
    if (slots > slots_.size()) moveTo(slots);
}

CookieRows::Slot& CookieRows::slotFor(const Quor::UUID& id) {
    reserve(count_ + 1);
    return slots_[place(id)];
}

void CookieRows::moveTo(std::size_t slotCount) {
    std::vector<Slot> old(slotCount);
    slots_.swap(old);
    for (const Slot& slot : old) {
        if (slot.taken()) slots_[place(slot.id)] = slot;
    }
}
