#include "views/view_index.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <new>
#include <utility>

#include <vekdb/host/exceptions.h>

namespace {

constexpr int kLeastRoom = 20;

// To begin and end deferring costs as much as so many passes over the rows.
constexpr unsigned kDropsThatPay = 100;
constexpr unsigned kMostPatience = 1024;

unsigned wantedRoom(int n) {
    return static_cast<unsigned>(std::max(n, kLeastRoom));
}

}  // namespace

unsigned ViewIndex::slotTag(unsigned slot) const noexcept {
    if (slot >= capacity_) {
        return 0;
    }
    return slot < unsigned(count_) ? tag(int(slot)) : usedTag(slot);
}

void ViewIndex::setTag(int row, bool value) noexcept {
    if (!holds(row)) {
        return;
    }
    if (deferred_ == nullptr) {
        rows_.setTag(unsigned(row), value);
    } else {
        deferred_->setTag(unsigned(row), value);
    }
}

void ViewIndex::setSourceRow(int row, unsigned sourceRow) noexcept {
    settle();
    if (holds(row)) {
        const auto at = unsigned(row);
        rows_.set(at, {sourceRow, rows_.tag(at)});
        order_ = Order::unknown;
    }
}

void ViewIndex::forgetRows() noexcept {
    settle();
    leaveTags(0, rows_.size());
    rows_.forget();
    count_ = 0;
    order_ = Order::ascending;
}

void ViewIndex::clear() noexcept {
    deferred_.reset();
    rows_.clear();
    usedTags_ = {};
    usedEnd_ = 0;
    capacity_ = 0;
    count_ = 0;
    order_ = Order::ascending;
}

// --- room

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

// The tags that rows leave in their slots when these come to stand behind the last row.
void ViewIndex::leaveTags(unsigned from, unsigned end) noexcept {
    for (unsigned slot = from; slot < end; ++slot) {
        usedTags_[slot] = rows_.tag(slot) != 0;
    }
    usedEnd_ = std::max(usedEnd_, end);
}

// There is memory for the tags of that many slots.
void ViewIndex::changeRoom(unsigned capacity, unsigned kept) noexcept {
    if (kept < rows_.size()) {
        rows_.erase(kept, rows_.size() - kept);
    }
    capacity_ = capacity;
    usedEnd_ = std::min(usedEnd_, kept);
    if (capacity == 0) {
        usedTags_ = {};
    } else if (capacity != usedTags_.size()) {
        usedTags_.resize(capacity);
    }
}

// Rows that had no room, or lose what they had, show source row 0, untagged.
void ViewIndex::giveRoomlessRows(unsigned count) {
    if (rows_.size() >= count) {
        return;
    }
    while (rows_.size() < count) {
        RowBlocks::Spare spare = rows_.spareFor(rows_.size(), 1);
        rows_.insert(rows_.size(), 1, 0, spare);
    }
    order_ = Order::unknown;
}

void ViewIndex::changeRoomFor(int n) {
    const unsigned capacity = capacityFor(n);
    if (capacity == capacity_) {
        return;
    }
    usedTags_.reserve(capacity);
    const unsigned before = rows_.size();
    const unsigned backed = std::min(capacity, static_cast<unsigned>(count_));
    try {
        giveRoomlessRows(backed);
    } catch (...) {
        rows_.erase(before, rows_.size() - before);
        throw;
    }
    const unsigned kept = keptIn(capacity, n);
    for (unsigned i = kept; i < backed && i < before; ++i) {
        rows_.set(i, {0, 0});
        order_ = Order::unknown;
    }
    changeRoom(capacity, std::max(kept, backed));
    usedEnd_ = std::min(usedEnd_, kept);
}

void ViewIndex::sizeFor(int n) {
    settle();
    changeRoomFor(n);
}

int ViewIndex::countWith(int more) const {
    if (more > INT_MAX - count_) {
        throw Quor::Exception::BadAlloc();
    }
    return count_ + more;
}

// --- order

bool ViewIndex::ascends() const noexcept {
    if (order_ == Order::unknown) {
        order_ = rows_.isAscending() ? Order::ascending : Order::none;
    }
    return order_ == Order::ascending;
}

void ViewIndex::forgetOrderOfNothing() noexcept {
    if (rows_.size() == 0) {
        order_ = Order::ascending;
    }
}

// Of ascending rows, whether they still are with the n rows that came to stand at `at`.
void ViewIndex::noteOrderOf(int at, int n) noexcept {
    const unsigned end = std::min(unsigned(at + n) + 1, rows_.size());
    for (unsigned i = unsigned(std::max(at, 1)); i < end && order_ == Order::ascending; ++i) {
        if (rows_.row(i - 1) > rows_.row(i)) {
            order_ = Order::none;
        }
    }
}

// --- rows that come

// As most rows come: behind others, where there is room.
bool ViewIndex::push(unsigned sourceRow) noexcept {
    const auto at = static_cast<unsigned>(count_);
    if (deferred_ != nullptr || at == 0 || at >= capacity_ || at != rows_.size()) {
        return false;
    }
    if (capacityFor(count_ + 1) != capacity_) {
        return false;
    }
    const unsigned before = rows_.row(at - 1);
    if (!rows_.push({sourceRow, std::uint8_t(usedTag(at))})) {
        return false;
    }
    ++count_;
    if (order_ == Order::ascending && before > sourceRow) {
        order_ = Order::none;
    }
    return true;
}

void ViewIndex::append(unsigned sourceRow) {
    if (push(sourceRow)) {
        return;
    }
    settle();
    RowBlocks::Spare spare = rows_.spareFor(rows_.size(), 1);
    sizeFor(countWith(1));
    const unsigned at = rows_.size();
    if (!rows_.isEnough(spare, at, 1)) {
        spare = rows_.spareFor(at, 1);
    }
    forgetOrderOfNothing();
    rows_.insert(at, 1, sourceRow, spare);
    rows_.setTag(at, usedTag(at));
    ++count_;
    noteOrderOf(int(at), 1);
}

ViewIndex::Room ViewIndex::roomForMore(int at, int n) const {
    const unsigned capacity = capacityFor(countWith(n));
    settle();
    const auto place = unsigned(std::clamp(at, 0, int(rows_.size())));
    Room room{capacity, {}, rows_.spareFor(place, unsigned(n))};
    if (capacity > usedTags_.size()) {
        room.usedTags.resize(capacity);
    }
    return room;
}

ViewIndex::Room ViewIndex::roomForFirst(int n) {
    return ViewIndex().roomForMore(0, n);
}

// The new rows have the tags that their slots hold: of the rows that stood there, or the ones
// left there.
void ViewIndex::takeTagsFromSlots(int at, int n) noexcept {
    for (int slot = at; slot < at + n; ++slot) {
        const bool displaced = slot < count_;
        if (!displaced && unsigned(slot) >= usedEnd_) {
            return;
        }
        const unsigned tag = displaced ? rows_.tag(unsigned(slot + n)) : usedTag(unsigned(slot));
        rows_.setTag(unsigned(slot), std::uint8_t(tag));
    }
}

int ViewIndex::insert(int at, int n, unsigned first, Room room) {
    const int newCount = countWith(n);
    settle();
    forgetOrderOfNothing();
    at = std::clamp(at, 0, count_);
    const unsigned capacity = capacityFor(newCount);
    const bool fits = capacity == room.capacity && capacity <= room.usedTags.size();
    if (fits && capacity != capacity_ && backedCount() == count_) {
        usedTags_.swap(room.usedTags);
        changeRoom(capacity, keptIn(capacity, newCount));
    } else {
        changeRoomFor(newCount);
    }
    if (!rows_.isEnough(room.rows, unsigned(at), unsigned(n))) {
        room.rows = rows_.spareFor(unsigned(at), unsigned(n));
    }
    rows_.insert(unsigned(at), unsigned(n), first, room.rows);
    takeTagsFromSlots(at, n);
    count_ = newCount;
    return at;
}

int ViewIndex::openGap(int at, int n) {
    const int place = insert(at, n, 0, roomForMore(at, n));
    for (int i = place; i < place + n; ++i) {
        const unsigned displaced = i + n < count_ ? rows_.row(unsigned(i + n)) : 0;
        rows_.set(unsigned(i), {displaced, rows_.tag(unsigned(i))});
    }
    order_ = Order::unknown;
    return place;
}

void ViewIndex::insertRun(int at, int n, unsigned first, Room room) {
    const int place = insert(at, n, first, std::move(room));
    if (n == 0) {
        return;
    }
    if (first > UINT_MAX - unsigned(n - 1)) {
        order_ = Order::none;
    }
    noteOrderOf(place, 0);
    noteOrderOf(place + n, 0);
}

// Appending them one by one gives the room, and the tags behind the rows, that inserting them
// one by one gives. Inserted before a row, each takes the tag of the row it displaces, which is
// the first displaced row's, or that of a new row that took it from there.
void ViewIndex::insertOneByOne(const unsigned* sourceRows, int n, int at) {
    settle();
    const int before = count_;
    countWith(n);
    const bool inside = n > 0 && at < before;
    RowBlocks::Spare spare;
    if (inside) {
        spare = rows_.spareFor(unsigned(n));
    }
    appendAll(sourceRows, n);
    if (!inside) {
        return;
    }
    const int first = std::max(at, 0);
    const std::uint8_t tag = rows_.tag(unsigned(first));
    rows_.erase(unsigned(before), unsigned(n));
    rows_.insert(unsigned(first), unsigned(n), 0, spare);
    // Positions before the first row count as the first, so rows come to stand there in
    // reverse until the position has reached it.
    const int reversed = at < 0 ? std::min<long long>(n, 1LL - at) : 1;
    for (int i = 0; i < n; ++i) {
        const bool ahead = i < n - reversed + 1;
        const int row = ahead ? reversed - 1 + i : n - 1 - i;
        rows_.set(unsigned(first + i), {sourceRows[row], tag});
    }
    order_ = Order::unknown;
}

// All or none.
void ViewIndex::appendAll(const unsigned* sourceRows, int n) {
    const int before = count_;
    try {
        for (int i = 0; i < n; ++i) {
            append(sourceRows[i]);
        }
    } catch (...) {
        count_ = before;
        if (rows_.size() > unsigned(before)) {
            rows_.erase(unsigned(before), rows_.size() - unsigned(before));
        }
        throw;
    }
}

// --- rows that go

// Whoever is told of removals cannot have them undone, so they must not fail. The tags that the
// last rows leave behind are noted before anything moves.
void ViewIndex::remove(int at, int n) noexcept {
    if (deferred_ != nullptr && !deferred_->mayRemove(unsigned(at), unsigned(n))) {
        settle();
    }
    const int newCount = count_ - n;
    if (deferred_ != nullptr && newCount > 0) {
        removeDeferred(at, n);
        return;
    }
    settle();
    if (backedCount() < count_) {
        moveDownWithoutRoom(at, n);
        return;
    }
    const unsigned capacity = capacityFor(newCount);
    const unsigned kept = keptIn(capacity, newCount);
    leaveTags(unsigned(newCount), unsigned(count_));
    rows_.erase(unsigned(at), unsigned(n));
    count_ = newCount;
    if (capacity != capacity_) {
        changeRoom(capacity, kept);
    }
}

// Of rows that have no room there is nothing to move: the last ones that have room stay in their
// slots, too. Without memory, rows that have no room get none.
void ViewIndex::moveDownWithoutRoom(int at, int n) noexcept {
    for (auto from = std::size_t(at) + std::size_t(n); from < rows_.size(); ++from) {
        const auto row = unsigned(from);
        rows_.set(row - unsigned(n), {rows_.row(row), rows_.tag(row)});
    }
    order_ = Order::unknown;
    const int newCount = count_ - n;
    tryRoomFor(newCount);
    count_ = newCount;
    if (rows_.size() > unsigned(newCount)) {
        leaveTags(unsigned(newCount), rows_.size());
        rows_.erase(unsigned(newCount), rows_.size() - unsigned(newCount));
    }
}

void ViewIndex::tryRoomFor(int n) noexcept {
    try {
        changeRoomFor(n);
    } catch (const std::bad_alloc&) {
        return;
    }
}

// The rows keep their memory; only the account of it follows the rule.
void ViewIndex::removeDeferred(int at, int n) noexcept {
    const int newCount = count_ - n;
    const unsigned capacity = capacityFor(newCount);
    const unsigned kept = keptIn(capacity, newCount);
    usedTags_[unsigned(count_ - 1)] = deferred_->lastTag() != 0;
    for (int slot = newCount; slot + 1 < count_; ++slot) {
        usedTags_[unsigned(slot)] = deferred_->tag(unsigned(slot)) != 0;
    }
    usedEnd_ = std::max(usedEnd_, unsigned(count_));
    deferred_->remove(unsigned(at), unsigned(n));
    if (capacity != capacity_) {
        capacity_ = capacity;
        usedEnd_ = std::min(usedEnd_, kept);
    }
    count_ = newCount;
}

void ViewIndex::considerDeferring() noexcept {
    if (deferred_ != nullptr || ascends()) {
        return;
    }
    const auto rows = unsigned(count_);
    strain_ += rows;
    if (count_ < Deferral::leastRows || rows > capacity_ ||
        strain_ < std::uint64_t{Deferral::passes} * patience_ * rows) {
        return;
    }
    strain_ = 0;
    reads_ = 0;
    drops_ = 0;
    try {
        deferred_ = DeferredRemovals::start(rows_);
    } catch (const std::bad_alloc&) {
        return;  // there is always the plain way
    }
    if (deferred_ == nullptr) {
        patience_ = kMostPatience;
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
    return deferred_ == nullptr ? rows_.row(unsigned(row)) : deferred_->sourceRow(unsigned(row));
}

unsigned ViewIndex::deferredTag(int row) const noexcept {
    noteRead();
    return deferred_ == nullptr ? rows_.tag(unsigned(row)) : deferred_->tag(unsigned(row));
}

void ViewIndex::settle() const noexcept {
    if (deferred_ != nullptr) {
        patience_ = drops_ >= kDropsThatPay ? 1 : std::min(patience_ * 4, kMostPatience);
        deferred_->settle(rows_);
        deferred_.reset();
    }
}

// --- renumbering

void ViewIndex::raiseFrom(int at, unsigned by) noexcept {
    settle();
    const unsigned rows = rows_.size();
    if (at < 0 || unsigned(at) >= rows) {
        return;
    }
    if (rows_.row(rows - 1) > UINT_MAX - by) {
        order_ = Order::unknown;
    }
    rows_.shiftFrom(unsigned(at), by);
}

int ViewIndex::lowerAbove(unsigned target, int from) noexcept {
    if (deferred_ != nullptr && !deferred_->continues(target, unsigned(from))) {
        settle();
    }
    if (from == 0) {
        considerDeferring();
    }
    if (deferred_ != nullptr) {
        ++drops_;
        return int(deferred_->drop(target));
    }
    unsigned row = 0;
    if (ascends()) {
        row = std::max(rows_.firstFrom(target), unsigned(from));
        if (row < rows_.size() && rows_.row(row) != target) {
            rows_.shiftFrom(row, ~0u);
            row = rows_.size();
        }
    } else {
        row = rows_.lowerAbove(target, unsigned(from));
    }
    return row < rows_.size() ? int(row) : count_;
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
    std::vector<ViewSlot> old(rows_.size());
    for (unsigned i = 0; i < old.size(); ++i) {
        old[i] = {rows_.row(i), rows_.tag(i)};
    }
    for (unsigned i = 0; i < old.size(); ++i) {
        rows_.set(i, old[positions[i]]);
    }
    order_ = Order::unknown;
}

void ViewIndex::tagAll(bool value) noexcept {
    settle();
    rows_.tagAll(value);
}

void ViewIndex::invertTags() noexcept {
    settle();
    rows_.invertTags();
}

unsigned ViewIndex::countTags() const noexcept {
    settle();
    return rows_.countTags();
}

int ViewIndex::find(unsigned sourceRow) const noexcept {
    settle();
    unsigned row = ascends() ? rows_.firstFrom(sourceRow) : rows_.find(sourceRow);
    if (row < rows_.size() && rows_.row(row) != sourceRow) {
        row = rows_.size();
    }
    return row < rows_.size() ? int(row) : -1;
}
