#include "vekdb/sort_keys_impl.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "host/os.h"

SortKeys::SortKeys(const SortEntry* entries, std::size_t n, bool descending)
    : n_(n), descending_(descending) {
    try {
        write(entries);
    } catch (...) {
        OS()->allocator()->free(bytes_);
        throw;
    }
    numberBytes();
}

SortKeys::~SortKeys() {
    OS()->allocator()->free(bytes_);
    OS()->allocator()->free(starts_);
}

void SortKeys::makeRoom(std::size_t used) {
    if (room_ - used >= most) return;
    constexpr std::size_t usual = 24;
    const std::size_t room = std::max(n_ * usual, room_ + room_ / 2) + most;
    bytes_ = static_cast<unsigned char*>(OS()->allocator()->reallocate(bytes_, room));
    room_ = room;
}

void SortKeys::write(const SortEntry* entries) {
    std::size_t used = 0;
    for (std::size_t i = 0; i < n_; ++i) {
        makeRoom(used);
        unsigned char* key = bytes_ + used;
        writeKey(entries[i].record, key);
        noteBytes(key);
        used += sizeOf(key);
    }
}

// A row without a record has an empty key: nothing is to be told from it.
void SortKeys::writeKey(const dbrecord* record, unsigned char* to) {
    RecordKeyWriter writer(to + 1);
    if (record != nullptr) {
        descending_ ? writer.writeForDescending(*record) : writer.writeAscending(*record);
    }
    const unsigned mark = writer.isCut() ? cutMark : 0;
    anyCut_ = anyCut_ || mark != 0;
    to[0] = static_cast<unsigned char>(writer.length() | mark);
}

void SortKeys::noteBytes(const unsigned char* key) {
    const unsigned length = lengthOf(key);
    for (unsigned i = 0; i < length; ++i) {
        numbers_[i][key[1 + i]] = 1;
    }
    shortest_ = std::min(shortest_, length);
    longest_ = std::max(longest_, length);
}

// Behind its end a key counts as zeros.
void SortKeys::numberBytes() {
    for (unsigned place = 0; place < longest_; ++place) {
        if (place >= shortest_) numbers_[place][0] = 1;
        unsigned next = 0;
        for (std::uint8_t& byte : numbers_[place]) {
            if (byte != 0) byte = static_cast<std::uint8_t>(next++);
        }
        widths_[place] = static_cast<unsigned char>(std::bit_width(next - 1));
        bits_ += widths_[place];
    }
}

void SortKeys::choosePlaces(unsigned room) {
    usedBits_ = std::min(bits_, room);
    placeCount_ = 0;
    unsigned left = usedBits_;
    for (unsigned place = 0; place < longest_ && left > 0; ++place) {
        const unsigned width = widths_[place];
        if (width == 0) continue;
        const unsigned taken = std::min(width, left);
        left -= taken;
        places_[placeCount_++] = {static_cast<unsigned char>(place),
                                  static_cast<unsigned char>(width - taken),
                                  static_cast<unsigned char>(left)};
    }
}

SortKeys::Short SortKeys::shortForm(const unsigned char* key) const {
    const unsigned length = lengthOf(key);
    Short form = 0;
    for (unsigned i = 0; i < placeCount_ && places_[i].place < length; ++i) {
        const Place& at = places_[i];
        const unsigned number = numbers_[at.place][key[1 + at.place]];
        form |= Short{number >> at.dropped} << at.shift;
    }
    // The complement turns the order round.
    return descending_ ? ((Short{1} << usedBits_) - 1) - form : form;
}

void SortKeys::index() {
    starts_ = static_cast<const unsigned char**>(
        OS()->allocator()->allocate(n_ * sizeof(const unsigned char*)));
    const unsigned char* key = bytes_;
    for (std::size_t i = 0; i < n_; ++i) {
        starts_[i] = key;
        key += sizeOf(key);
    }
}

int SortKeys::compare(std::size_t a, std::size_t b) const {
    const unsigned common = std::min(lengthOf(starts_[a]), lengthOf(starts_[b]));
    const int order = std::memcmp(starts_[a] + 1, starts_[b] + 1, common);
    return descending_ ? -order : order;
}
