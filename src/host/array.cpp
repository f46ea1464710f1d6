#include <vekdb/host/array.h>

#include <vekdb/host/exceptions.h>
#include <vekdb/host/grow_string.h>
#include <vekdb/host/os.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>

// A record handed to the array and not yet in its place.
class Array::Owned : public std::unique_ptr<ArrayRec> {
    using unique_ptr::unique_ptr;
};

Array::~Array() {
    deleteRecords();
    OS()->allocator()->free(records_);
}

void Array::deleteRecords() noexcept {
    while (count_ > 0) {
        delete records_[--count_];
    }
}

void Array::init(unsigned room) {
    deleteRecords();
    sorted_ = false;
    reserve(room);
}

void Array::reserve(unsigned room) {
    if (room <= capacity_) {
        return;
    }
    const std::size_t bytes = std::size_t(room) * sizeof(ArrayRec*);
    records_ = static_cast<ArrayRec**>(OS()->allocator()->reallocate(records_, bytes));
    capacity_ = room;
}

void Array::sort() {
    std::stable_sort(records_, records_ + count_,
                     [](const ArrayRec* a, const ArrayRec* b) { return a->compare(*b) < 0; });
    sorted_ = true;
}

bool Array::find(const ArrayRec& record, unsigned& index) const {
    ArrayRec** const end = records_ + count_;
    ArrayRec** place;
    if (sorted_) {
        place = std::lower_bound(records_, end, &record, [](const ArrayRec* a, const ArrayRec* b) {
            return a->compare(*b) < 0;
        });
    } else {
        place = std::find_if(records_, end,
                             [&](const ArrayRec* kept) { return kept->compare(record) == 0; });
    }
    index = static_cast<unsigned>(place - records_);
    return place != end && (*place)->compare(record) == 0;
}

bool Array::intern(ArrayRec* record, unsigned& index) {
    Owned owned(record);
    if (!owned || find(*owned, index)) {
        return false;
    }
    put(owned, index);
    return true;
}

void Array::appendDatum(ArrayRec* record) {
    insertDatum(record, count_);
}

void Array::insertDatum(ArrayRec* record, unsigned index) {
    Owned owned(record);
    if (owned) {
        index = std::min(index, count_);
        put(owned, index);
        sorted_ = sorted_ && isInOrderAt(index);
    }
}

bool Array::replaceDatum(unsigned index, ArrayRec* record) {
    Owned owned(record);
    if (!owned || index >= count_) {
        return false;
    }
    delete std::exchange(records_[index], owned.release());
    sorted_ = sorted_ && isInOrderAt(index);
    return true;
}

void Array::put(Owned& record, unsigned index) {
    if (count_ == capacity_) {
        const std::uint64_t room = std::max<std::uint64_t>(8, std::uint64_t(capacity_) * 2);
        if (room > UINT32_MAX) {
            throw Quor::Exception::BadAlloc();
        }
        reserve(static_cast<unsigned>(room));
    }
    std::move_backward(records_ + index, records_ + count_, records_ + count_ + 1);
    records_[index] = record.release();
    ++count_;
}

bool Array::isInOrderAt(unsigned index) const {
    const ArrayRec& record = *records_[index];
    return (index == 0 || records_[index - 1]->compare(record) <= 0) &&
           (index + 1 == count_ || record.compare(*records_[index + 1]) <= 0);
}

void Array::printOn(GrowString& out) const {
    for (unsigned i = 0; i < count_; ++i) {
        out.append(i == 0 ? "" : ", ");
        records_[i]->printOn(out);
    }
}

void Set::init(unsigned room) {
    Array::init(room);
    sort();
}
