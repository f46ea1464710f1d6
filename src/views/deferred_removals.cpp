#include "views/deferred_removals.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace {

// Account is kept for each source row up to the largest; past this many it is not worth it.
std::uint64_t mostSourceRows(std::uint32_t count) {
    return 16 * std::uint64_t{count} + 65536;
}

}  // namespace

std::unique_ptr<DeferredRemovals> DeferredRemovals::start(const RowBlocks& rows) {
    std::vector<ViewSlot> slots(rows.size());
    std::uint32_t largest = 0;
    for (std::uint32_t i = 0; i < rows.size(); ++i) {
        slots[i] = {rows.row(i), rows.tag(i)};
        largest = std::max(largest, slots[i].row);
    }
    if (largest >= mostSourceRows(rows.size())) return nullptr;
    return std::unique_ptr<DeferredRemovals>(new DeferredRemovals(std::move(slots), largest + 1));
}

DeferredRemovals::DeferredRemovals(std::vector<ViewSlot> slots, std::uint32_t bound)
    : slots_(std::move(slots)),
      entries_(static_cast<std::uint32_t>(slots_.size())),
      positions_(entries_),
      rows_(bound),
      tail_(entries_ - 1) {
    sortByRow();
}

void DeferredRemovals::sortByRow() {
    const auto byRow = [](const ViewSlot& a, const ViewSlot& b) { return a.row < b.row; };
    if (std::is_sorted(slots_.begin(), slots_.end(), byRow)) return;
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

std::uint8_t DeferredRemovals::lastTag() noexcept {
    while (!positions_.contains(tail_)) --tail_;
    return slots_[tail_].tag;
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
    if (dropping_) {
        positions_.erase(positionAt(entry_));
        return;
    }
    for (; n > 0; --n) {
        positions_.erase(positions_.nth(at));
    }
}

void DeferredRemovals::settle(RowBlocks& rows) const noexcept {
    std::uint32_t next = 0;
    for (std::uint32_t i = 0; i < entries_; ++i) {
        if (!positions_.contains(i)) continue;
        const bool lowered = dropping_ && next < reached_;
        rows.set(next, {current(slots_[i].row, lowered), slots_[i].tag});
        ++next;
    }
    rows.erase(next, entries_ - next);
}
