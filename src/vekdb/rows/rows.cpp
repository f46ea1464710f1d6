#include "vekdb/rows/rows.h"

#include <algorithm>
#include <cstring>

#include <vekdb/host/exceptions.h>
#include <vekdb/host/os.h>
#include "host/posix/large_pages.h"
#include "vekdb/record/record_access.h"

namespace {

// So many times the rows that are there may be taken room for by what is expected.
constexpr std::size_t mostAhead = 64;

// Makes room for `slots` pointers; what is new is undefined.
void resizeSlots(dbrecord**& block, std::size_t& room, std::size_t slots) {
    const std::size_t bytes = slots * sizeof(dbrecord*);
    block = static_cast<dbrecord**>(OS()->allocator()->reallocate(block, bytes));
    expectFilling(block, bytes);
    room = slots;
}

void freeSlots(dbrecord**& block, std::size_t& room) {
    OS()->allocator()->free(block);
    block = nullptr;
    room = 0;
}

}  // namespace

void Rows::makeRoom(std::size_t slots) {
    if (slots <= room_) return;
    const std::size_t ahead = std::min(expected_, slots * mostAhead);
    resizeSlots(slots_, room_, std::max({slots, room_ + room_ / 2, ahead}));
}

void Rows::addChunk() {
    cover(std::uint64_t{capacity_} + 1);
}

void Rows::cover(std::uint64_t rows) {
    if (rows <= capacity_) return;
    std::uint64_t capacity = (rows + chunk - 1) / chunk * chunk;
    if (capacity >= none) throw Quor::Exception::BadAlloc();
    makeRoom(static_cast<std::size_t>(capacity));
    capacity_ = static_cast<unsigned>(capacity);
}

void Rows::expect(std::size_t more) noexcept {
    pool_.expect(more);
    // With the step that is always free.
    expected_ = count_ + more + chunk;
}

void Rows::append(dbrecord* record) {
    if (gap_ != 0 && std::size_t{count_} + gap_ >= room_) moveGapTo(count_);
    if (gapAt_ == count_) {
        slots_[count_++] = record;
        gapAt_ = count_;
        gap_ = gap_ > 0 ? gap_ - 1 : 0;
    } else {
        slots_[count_++ + gap_] = record;
    }
}

// All the room behind the rows becomes the gap where it is too small.
void Rows::insert(unsigned at, dbrecord* const* records, unsigned n) {
    ++order_;
    if (gap_ < n) {
        moveGapTo(count_);
        gap_ = static_cast<unsigned>(room_ - count_);
    }
    moveGapTo(at);
    std::memcpy(slots_ + at, records, n * sizeof(dbrecord*));
    gapAt_ += n;
    gap_ -= n;
    count_ += n;
}

// Rows keep their order; those between the gap's old and new place cross it.
void Rows::moveGapTo(unsigned at) {
    if (gap_ == 0) {
        gapAt_ = at;
        return;
    }
    if (at > gapAt_) {
        std::memmove(slots_ + gapAt_, slots_ + gapAt_ + gap_, (at - gapAt_) * sizeof(dbrecord*));
    } else {
        std::memmove(slots_ + at + gap_, slots_ + at, (gapAt_ - at) * sizeof(dbrecord*));
    }
    gapAt_ = at;
}

void Rows::erase(unsigned first, unsigned n) {
    ++order_;
    for (unsigned i = first; i < first + n; ++i) {
        dbrecord* record = at(i);
        RecordAccess::isListed(*record) ? pool_.retire(record) : pool_.destroy(record);
    }
    if (gapAt_ < first || gapAt_ > first + n) moveGapTo(gapAt_ < first ? first : first + n);
    gapAt_ = first;
    gap_ += n;
    count_ -= n;
}

dbrecord** Rows::inOneArray() {
    moveGapTo(count_);
    gap_ = 0;
    ++order_;
    return slots_;
}

// Slots behind the tagged count that were never filled are null.
void Rows::makeTaggedRoom() {
    if (taggedRoom_ > capacity_) return;
    const std::size_t before = taggedRoom_;
    resizeSlots(tagged_, taggedRoom_, std::size_t{capacity_} + 1);
    std::fill(tagged_ + before, tagged_ + taggedRoom_, nullptr);
}

void Rows::indexTags() {
    makeTaggedRoom();
    forgetDeleted();
    taggedCount_ = 0;
    for (unsigned i = 0; i < count_; ++i) {
        dbrecord* record = at(i);
        if (record->get_tag() == 0) continue;
        RecordAccess::markListed(*record);
        tagged_[taggedCount_++] = record;
    }
}

// A row that gets the address of a deleted one must not be taken for it.
void Rows::forgetDeleted() {
    const std::vector<const dbrecord*> deleted = pool_.retired();
    if (deleted.empty()) return;
    std::replace_if(
        tagged_, tagged_ + taggedRoom_,
        [&](const dbrecord* record) {
            return std::binary_search(deleted.begin(), deleted.end(), record);
        },
        nullptr);
    pool_.reuseRetired();
}

unsigned Rows::newRow(unsigned raw) const {
    if (tagsOnly_ == 0) return raw;
    if (raw >= count_) return none;
    dbrecord* const* end = tagged_ + taggedCount_;
    dbrecord* const* found = std::find(tagged_, const_cast<dbrecord**>(end), at(raw));
    return found == end ? none : static_cast<unsigned>(found - tagged_);
}

RecordRun Rows::shownFrom(unsigned position) const {
    if (tagsOnly_ != 0) return {tagged_ + position, taggedCount_ - position};
    if (position < gapAt_) return {slots_ + position, gapAt_ - position};
    return {slots_ + gap_ + position, count_ - position};
}

RowsInOrder Rows::inOrder() const {
    return {{{slots_, gapAt_}, {slots_ + gapAt_ + gap_, count_ - gapAt_}}, order_};
}

unsigned Rows::rawRow(unsigned shown) const {
    if (tagsOnly_ == 0) return shown;
    if (shown > taggedCount_ || shown >= taggedRoom_ || tagged_[shown] == nullptr) return none;
    for (unsigned i = 0; i < count_; ++i) {
        if (at(i) == tagged_[shown]) return i;
    }
    return none;
}

void Rows::release() {
    ++order_;
    for (unsigned i = 0; i < count_; ++i) {
        pool_.destroy(at(i));
    }
    pool_.releaseSlabs();
    freeSlots(slots_, room_);
    freeSlots(tagged_, taggedRoom_);
    expected_ = 0;
    count_ = capacity_ = gapAt_ = gap_ = taggedCount_ = tagsOnly_ = 0;
}
