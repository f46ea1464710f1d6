#include "views/view_index.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <new>
#include <vector>

#include <vekdb/host/exceptions.h>

namespace {

constexpr int kLeastRoom = 20;

unsigned wantedRoom(int n) {
    return static_cast<unsigned>(std::max(n, kLeastRoom));
}

}  // namespace

ViewIndex::~ViewIndex() {
    delete[] slots_;
}

int ViewIndex::backedCount() const noexcept {
    const unsigned rows = static_cast<unsigned>(count_);
    return static_cast<int>(std::min(rows, capacity_));
}

unsigned ViewIndex::slotTag(unsigned slot) const noexcept {
    if (slot >= capacity_) {
        return 0;
    }
    return deferred_ == nullptr ? slots_[slot].tag : deferred_->slotTag(slot);
}

void ViewIndex::setTag(int row, bool value) noexcept {
    if (holds(row)) {
        Slot& slot = deferred_ == nullptr ? slots_[row] : deferred_->slot(unsigned(row));
        slot.tag = value ? 1 : 0;
    }
}

void ViewIndex::setSourceRow(int row, unsigned sourceRow) noexcept {
    settle();
    if (holds(row)) {
        slots_[row].row = sourceRow;
    }
}

void ViewIndex::forgetRows() noexcept {
    settle();
    count_ = 0;
}

void ViewIndex::clear() noexcept {
    deferred_.reset();
    midDrop_ = false;
    delete[] slots_;
    slots_ = nullptr;
    capacity_ = 0;
    count_ = 0;
}

unsigned ViewIndex::capacityFor(int n) const noexcept {
    if (n == 0) {
        return 0;
    }
    const unsigned wanted = wantedRoom(n);
    if (capacity_ < wanted) {
        return std::max(wanted, 2 * capacity_);
    }
    return capacity_ > 2 * wanted ? capacity_ / 2 : capacity_;
}

// The slots that a room of another capacity has from this one; those behind them are fresh.
unsigned ViewIndex::keptIn(unsigned capacity, int wanted) const noexcept {
    const unsigned rows = static_cast<unsigned>(count_);
    const unsigned kept = std::min(capacity < rows ? wantedRoom(wanted) : rows, capacity_);
    return std::min(kept, capacity);
}

// Rows move to the new room; the slots behind them only as far as the rule says.
void ViewIndex::moveTo(Slot* room, unsigned capacity, int wanted) noexcept {
    if (room != nullptr) {
        std::copy_n(slots_, keptIn(capacity, wanted), room);
    }
    delete[] slots_;
    slots_ = room;
    capacity_ = capacity;
}

void ViewIndex::shrinkInPlace(unsigned capacity, int wanted) noexcept {
    std::fill(slots_ + keptIn(capacity, wanted), slots_ + capacity, Slot{});
    capacity_ = capacity;
}

void ViewIndex::sizeFor(int n) {
    settle();
    const unsigned capacity = capacityFor(n);
    if (capacity != capacity_) {
        moveTo(capacity > 0 ? new Slot[capacity]() : nullptr, capacity, n);
    }
}

int ViewIndex::countWith(int more) const {
    if (more > INT_MAX - count_) {
        throw Quor::Exception::BadAlloc();
    }
    return count_ + more;
}

void ViewIndex::append(unsigned sourceRow) {
    sizeFor(countWith(1));
    slots_[count_].row = sourceRow;
    ++count_;
}

// Moves the rows from `from` on to `to`; what moves past the room is lost.
void ViewIndex::moveSlots(int from, int to) noexcept {
    const int room = static_cast<int>(std::min<unsigned>(capacity_, INT_MAX));
    const int rows = std::min(backedCount() - from, room - to);
    if (rows <= 0) {
        return;
    }
    if (to < from) {
        std::copy_n(slots_ + from, rows, slots_ + to);
    } else {
        std::copy_backward(slots_ + from, slots_ + from + rows, slots_ + to + rows);
    }
}

ViewIndex::Room ViewIndex::roomForMore(int n) const {
    const unsigned capacity = capacityFor(countWith(n));
    const bool sameRoom = capacity == capacity_ || capacity == 0;
    return {sameRoom ? nullptr : std::make_unique<Slot[]>(capacity), capacity};
}

ViewIndex::Room ViewIndex::roomForFirst(int n) {
    return ViewIndex().roomForMore(n);
}

int ViewIndex::openGap(int at, int n, Room room) {
    const int newCount = countWith(n);
    settle();
    if (room.slots != nullptr && room.capacity == capacityFor(newCount)) {
        moveTo(room.slots.release(), room.capacity, newCount);
    } else {
        sizeFor(newCount);
    }
    at = std::clamp(at, 0, count_);
    moveSlots(at, at + n);
    count_ = newCount;
    return at;
}

// Appending them one by one gives the room, and the tags behind the rows, that inserting them
// one by one gives. Inserted before a row, each takes the tag of the row it displaces, which is
// the first displaced row's, or that of a new row that took it from there.
void ViewIndex::insertOneByOne(const unsigned* sourceRows, int n, int at) {
    settle();
    const int before = count_;
    const int end = countWith(n);
    try {
        for (int i = 0; i < n; ++i) {
            append(sourceRows[i]);
        }
    } catch (...) {
        count_ = before;
        throw;
    }
    if (n == 0 || at >= before) {
        return;
    }
    const int first = std::max(at, 0);
    const std::uint8_t tag = slots_[first].tag;
    std::copy_backward(slots_ + first, slots_ + before, slots_ + end);
    // Positions before the first row count as the first, so rows come to stand there in
    // reverse until the position has reached it.
    const int reversed = at < 0 ? std::min<long long>(n, 1LL - at) : 1;
    for (int i = 0; i < n; ++i) {
        const bool ahead = i < n - reversed + 1;
        const int row = ahead ? reversed - 1 + i : n - 1 - i;
        slots_[first + i] = {sourceRows[row], tag};
    }
}

// Whoever is told of removals cannot have them undone, so they must not fail.
void ViewIndex::remove(int at, int n) noexcept {
    if (deferred_ != nullptr && !deferred_->mayRemove(unsigned(at), unsigned(n))) {
        settle();
    }
    considerDeferring(count_ - at);
    const int newCount = count_ - n;
    if (deferred_ != nullptr && newCount > 0) {
        removeDeferred(at, n);
        return;
    }
    settle();
    moveSlots(at + n, at);
    changeRoomFor(newCount);
    count_ = newCount;
}

// Without memory, rows that have no room get none, and a smaller room is kept in the larger one.
void ViewIndex::changeRoomFor(int n) noexcept {
    const unsigned capacity = capacityFor(n);
    if (capacity == capacity_) {
        return;
    }
    Slot* room = capacity > 0 ? new (std::nothrow) Slot[capacity]() : nullptr;
    if (room != nullptr || capacity == 0) {
        moveTo(room, capacity, n);
    } else if (capacity < capacity_) {
        shrinkInPlace(capacity, n);
    }
}

// The slots keep their memory; only the account of them follows the rule.
void ViewIndex::removeDeferred(int at, int n) noexcept {
    const int newCount = count_ - n;
    const unsigned capacity = capacityFor(newCount);
    deferred_->remove(unsigned(at), unsigned(n));
    if (capacity != capacity_) {
        const unsigned rows = unsigned(count_);
        deferred_->changeRoom(capacity, capacity < rows ? wantedRoom(newCount) : rows);
        capacity_ = capacity;
    }
    count_ = newCount;
}

// Not in the middle of a drop, which would have to go on in the way it began.
void ViewIndex::considerDeferring(int work) noexcept {
    if (deferred_ != nullptr) {
        return;
    }
    strain_ += unsigned(work);
    const auto rows = unsigned(count_);
    if (midDrop_ || count_ < Deferral::leastRows || rows > capacity_ ||
        strain_ < std::uint64_t{Deferral::passes} * rows) {
        return;
    }
    strain_ = 0;
    reads_ = 0;
    try {
        deferred_ = DeferredRemovals::start(slots_, rows, capacity_);
    } catch (const std::bad_alloc&) {
        return;  // there is always the plain way
    }
}

// In one piece a row is read at once; many reads pay for putting the rows there.
void ViewIndex::noteRead() const noexcept {
    if (++reads_ > unsigned(count_)) {
        settle();
    }
}

unsigned ViewIndex::deferredRow(int row) const noexcept {
    noteRead();
    return deferred_ == nullptr ? slots_[row].row : deferred_->sourceRow(unsigned(row));
}

unsigned ViewIndex::deferredTag(int row) const noexcept {
    noteRead();
    return deferred_ == nullptr ? slots_[row].tag : deferred_->slot(unsigned(row)).tag;
}

void ViewIndex::settle() const noexcept {
    if (deferred_ != nullptr) {
        deferred_->settle();
        deferred_.reset();
    }
}

void ViewIndex::raiseFrom(int at, unsigned by) noexcept {
    settle();
    const int rows = backedCount();
    for (int i = at; i < rows; ++i) {
        slots_[i].row += by;
    }
}

int ViewIndex::lowerAbove(unsigned target, int from) noexcept {
    if (deferred_ != nullptr && !deferred_->continues(target, unsigned(from))) {
        settle();
    }
    if (from == 0) {
        midDrop_ = false;
        considerDeferring(count_);
    }
    if (deferred_ != nullptr) {
        return int(deferred_->drop(target));
    }
    midDrop_ = true;
    const int rows = backedCount();
    for (int i = from; i < rows; ++i) {
        if (slots_[i].row == target) {
            return i;
        }
        slots_[i].row -= slots_[i].row > target ? 1 : 0;
    }
    midDrop_ = false;
    return count_;
}

int ViewIndex::consecutiveRun(int at, int atMost) const noexcept {
    int run = 1;
    while (run < atMost && sourceRow(at + run) == sourceRow(at + run - 1) + 1) {
        ++run;
    }
    return run;
}

void ViewIndex::reorder(const unsigned* positions) {
    settle();
    const std::vector<Slot> old(slots_, slots_ + backedCount());
    for (std::size_t i = 0; i < old.size(); ++i) {
        slots_[i] = old[positions[i]];
    }
}

void ViewIndex::tagAll(bool value) noexcept {
    settle();
    const int rows = backedCount();
    for (int i = 0; i < rows; ++i) {
        slots_[i].tag = value ? 1 : 0;
    }
}

void ViewIndex::invertTags() noexcept {
    settle();
    const int rows = backedCount();
    for (int i = 0; i < rows; ++i) {
        slots_[i].tag ^= 1;
    }
}

unsigned ViewIndex::countTags() const noexcept {
    settle();
    const int rows = backedCount();
    unsigned tagged = 0;
    for (int i = 0; i < rows; ++i) {
        tagged += slots_[i].tag;
    }
    return tagged;
}

int ViewIndex::find(unsigned sourceRow) const noexcept {
    settle();
    const int rows = backedCount();
    for (int i = 0; i < rows; ++i) {
        if (slots_[i].row == sourceRow) {
            return i;
        }
    }
    return -1;
}
