#include "vekdb/record/record_strings.h"

#include <cstring>
#include <new>
#include <utility>

RecordStrings* RecordStrings::make(unsigned room) {
    static_assert(alignof(RecordStrings) >= alignof(String));
    void* block = ::operator new(sizeof(RecordStrings) + room * (sizeof(String) + sizeof(bool)));
    auto* strings = new (block) RecordStrings{nullptr, 0, static_cast<unsigned short>(room)};
    for (unsigned i = 0; i < room; ++i) {
        new (strings->values() + i) String();
    }
    std::memset(strings->own(), 0, room);
    return strings;
}

RecordStrings* RecordStrings::copy(const RecordStrings& other, unsigned room) {
    RecordStrings* copy = make(room < other.room ? other.room : room);
    for (unsigned i = 0; i < other.room; ++i) {
        copy->values()[i] = other.values()[i];
        copy->own()[i] = other.own()[i];
    }
    if (other.under != nullptr) {
        other.under->store->addReferences(1);
        copy->under = other.under;
        copy->underCount = other.underCount;
    }
    return copy;
}

RecordStrings* RecordStrings::over(const LineSlices* slices, unsigned count, unsigned room) {
    RecordStrings* strings = make(room < count ? count : room);
    strings->under = slices;
    strings->underCount = static_cast<unsigned short>(count);
    return strings;
}

void RecordStrings::destroy(RecordStrings* strings) {
    for (unsigned i = 0; i < strings->room; ++i) {
        strings->values()[i].~String();
    }
    if (strings->under != nullptr) strings->under->store->release();
    ::operator delete(strings);
}

RecordStrings::String& RecordStrings::string(unsigned i) {
    if (isSlice(i)) set(i, String(under->view(i)));
    return values()[i];
}

void RecordStrings::set(unsigned i, String value) {
    values()[i] = std::move(value);
    own()[i] = true;
}

void RecordStrings::cut(unsigned count) {
    for (unsigned i = count; i < room; ++i) {
        set(i, String());
    }
}

void RecordStrings::makeStrings(unsigned first, unsigned count) {
    for (unsigned i = first; i < count; ++i) {
        string(i);
    }
}

void RecordStrings::erase(unsigned i, unsigned count) {
    makeStrings(i + 1, count);
    for (unsigned k = i; k + 1 < count; ++k) {
        set(k, std::move(string(k + 1)));
    }
    cut(count - 1);
}
