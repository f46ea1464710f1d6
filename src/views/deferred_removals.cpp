#include "views/deferred_removals.h"

#include <algorithm>
#include <numeric>

namespace {

// Account is kept for each source row up to the largest; past this many it is not worth it.
std::uint64_t mostSourceRows(std::uint32_t count) { return 16 * std::uint64_t{count} + 65536; }

}  // namespace

std::unique_ptr<DeferredRemovals> DeferredRemovals::start(ViewSlot* slots, std::uint32_t count,
                                                          std::uint32_t capacity) {
    std::uint32_t largest = 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        largest = std::max(largest, slots[i].row);
    }
    if (largest >= mostSourceRows(count)) return nullptr;
    return std::unique_ptr<DeferredRemovals>(
        new DeferredRemovals(slots, count, capacity, largest + 1));
}

DeferredRemovals::DeferredRemovals(ViewSlot* slots, std::uint32_t count, std::uint32_t capacity,
                                   std::uint32_t bound)
    : slots_(slots),
      entries_(count),
      positions_(count),
      rows_(bound),
      staleTags_(capacity),
      tail_(count - 1) {
    for (std::uint32_t i = count; i < capacity; ++i) {
        staleTags_[i] = slots[i].tag;
    }
    sortByRow();
}

void DeferredRemovals::sortByRow() {
    const auto byRow = [](const ViewSlot& a, const ViewSlot& b) { return a.row < b.row; };
    if (std::is_sorted(slots_, slots_ + entries_, byRow)) return;
    byRow_.resize(entries_);
    std::iota(byRow_.begin(), byRow_.end(), 0u);
    std::stable_sort(byRow_.begin(), byRow_.end(), [this](std::uint32_t a, std::uint32_t b) {
        return slots_[a].row < slots_[b].row;
    });
}

// The entry of a view of all rows stands at its own number; look there first.
std::uint32_t DeferredRemovals::firstEntryOf(std::uint32_t row) const noexcept {
    if (row < entries_ && rowAt(row) == row && (row == 0 || rowAt(row - 1) < row)) return row;
    std::uint32_t low = 0;
    for (std::uint32_t high = entries_; low < high;) {
        const std::uint32_t middle = low + (high - low) / 2;
        if (rowAt(middle) < row) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return low;
}

std::uint32_t DeferredRemovals::current(std::uint32_t original, bool lowered) const noexcept {
    return rows_.countBelow(original) - (lowered && original > dropped_ ? 1 : 0);
}

std::uint32_t DeferredRemovals::sourceRow(std::uint32_t row) const noexcept {
    return current(slot(row).row, dropping_ && row < reached_);
}

std::uint8_t DeferredRemovals::slotTag(std::uint32_t slotNumber) const noexcept {
    return slotNumber < count() ? slot(slotNumber).tag : staleTags_[slotNumber];
}

bool DeferredRemovals::continues(std::uint32_t target, std::uint32_t from) const noexcept {
    return dropping_ ? target == target_ && from == reached_ : from == 0;
}

bool DeferredRemovals::mayRemove(std::uint32_t at, std::uint32_t n) const noexcept {
    return !dropping_ || (at == reached_ && n == 1 && positions_.contains(positionAt(entry_)));
}

std::uint32_t DeferredRemovals::drop(std::uint32_t target) noexcept {
    if (!dropping_) {
        if (target >= rows_.size()) return count();
        target_ = target;
        dropped_ = rows_.nth(target);
        entry_ = firstEntryOf(dropped_);
        dropping_ = true;
    }
    for (; entry_ < entries_ && rowAt(entry_) == dropped_; ++entry_) {
        if (!positions_.contains(positionAt(entry_))) continue;
        reached_ = positions_.countBelow(positionAt(entry_));
        return reached_;
    }
    rows_.erase(dropped_);
    dropping_ = false;
    return count();
}

void DeferredRemovals::remove(std::uint32_t at, std::uint32_t n) noexcept {
    const std::uint32_t before = count();
    while (!positions_.contains(tail_)) --tail_;
    staleTags_[before - 1] = slots_[tail_].tag;
    for (std::uint32_t row = before - n; row + 1 < before; ++row) {
        staleTags_[row] = slot(row).tag;
    }
    if (dropping_) {
        positions_.erase(positionAt(entry_));
        return;
    }
    for (; n > 0; --n) {
        positions_.erase(positions_.nth(at));
    }
}

void DeferredRemovals::changeRoom(std::uint32_t capacity, std::uint32_t kept) {
    staleTags_.resize(capacity);
    if (kept < capacity) std::fill(staleTags_.begin() + kept, staleTags_.end(), 0);
}

void DeferredRemovals::settle() noexcept {
    std::uint32_t next = 0;
    for (std::uint32_t i = 0; i < entries_; ++i) {
        if (!positions_.contains(i)) continue;
        const bool lowered = dropping_ && next < reached_;
        slots_[next++] = {current(slots_[i].row, lowered), slots_[i].tag};
    }
    for (; next < staleTags_.size(); ++next) {
        slots_[next] = {0, staleTags_[next]};
    }
}
