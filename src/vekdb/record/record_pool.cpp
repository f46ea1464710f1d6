#include "vekdb/record/record_pool.h"

#include <algorithm>
#include <new>

#include "host/posix/large_pages.h"

#if defined(__SANITIZE_ADDRESS__)
#define VEKDB_POISON 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VEKDB_POISON 1
#endif
#endif

#ifdef VEKDB_POISON
#include <sanitizer/asan_interface.h>
#endif

namespace {

constexpr std::size_t largestSlab = std::size_t{1} << 19;

// A destroyed record's place stays in the pool; the sanitizer is told that nobody may touch it.
void forbid([[maybe_unused]] void* place, [[maybe_unused]] std::size_t bytes) {
#ifdef VEKDB_POISON
    ASAN_POISON_MEMORY_REGION(place, bytes);
#endif
}

void allow([[maybe_unused]] void* place, [[maybe_unused]] std::size_t bytes) {
#ifdef VEKDB_POISON
    ASAN_UNPOISON_MEMORY_REGION(place, bytes);
#endif
}

}  // namespace

union RecordPool::Place {
    Place* next;
    alignas(dbrecord) unsigned char record[sizeof(dbrecord)];
};

void* RecordPool::take() {
    if (unused_ != nullptr) {
        Place* place = unused_;
        unused_ = next(place);
        allow(place, sizeof(Place));
        return place;
    }
    if (fresh_ == end_) addSlab();
    void* place = fresh_;
    fresh_ += sizeof(Place);
    return place;
}

void RecordPool::addSlab() {
    slabs_ = FillingBlock::allocate(nextSlab_ * sizeof(Place), slabs_);
    fresh_ = slabs_->begin();
    const auto room = static_cast<std::size_t>(slabs_->end() - fresh_);
    end_ = fresh_ + room / sizeof(Place) * sizeof(Place);
    nextSlab_ = std::min(nextSlab_ * 2, largestSlab);
}

void RecordPool::expect(std::size_t records) noexcept {
    nextSlab_ = std::clamp(records, nextSlab_, largestSlab);
}

void RecordPool::put(void* memory, Place*& list) noexcept {
    auto* place = static_cast<Place*>(memory);
    place->next = list;
    list = place;
    forbid(place, sizeof(Place));
}

RecordPool::Place* RecordPool::next(Place* place) noexcept {
    allow(place, sizeof(Place));
    Place* behind = place->next;
    forbid(place, sizeof(Place));
    return behind;
}

dbrecord* RecordPool::create(unsigned short count) {
    return new (take()) dbrecord(count);
}

dbrecord* RecordPool::create(const dbrecord& other) {
    void* place = take();
    try {
        return new (place) dbrecord(other);
    } catch (...) {
        put(place, unused_);
        throw;
    }
}

void RecordPool::destroy(dbrecord* record) noexcept {
    if (record == nullptr) return;
    record->~dbrecord();
    put(record, unused_);
}

void RecordPool::retire(dbrecord* record) noexcept {
    record->~dbrecord();
    put(record, retired_);
}

std::vector<const dbrecord*> RecordPool::retired() const {
    std::vector<const dbrecord*> records;
    for (Place* place = retired_; place != nullptr; place = next(place)) {
        records.push_back(reinterpret_cast<const dbrecord*>(place));
    }
    std::sort(records.begin(), records.end());
    return records;
}

void RecordPool::reuseRetired() noexcept {
    while (retired_ != nullptr) {
        Place* place = retired_;
        retired_ = next(place);
        allow(place, sizeof(Place));
        put(place, unused_);
    }
}

void RecordPool::releaseSlabs() noexcept {
    while (slabs_ != nullptr) {
        FillingBlock* next = slabs_->next();
        allow(slabs_->begin(), static_cast<std::size_t>(slabs_->end() - slabs_->begin()));
        FillingBlock::free(slabs_);
        slabs_ = next;
    }
    unused_ = retired_ = nullptr;
    fresh_ = end_ = nullptr;
    nextSlab_ = firstSlab;
}
