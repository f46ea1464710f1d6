#include "vekdb/sort_keys_impl.h"

#include <algorithm>
#include <bit>

#include "host/os.h"

SortKeys::SortKeys(const SortEntry* entries, std::size_t n, bool descending)
    : layout_(descending), n_(n) {
    std::fill(shortest_, shortest_ + mostSegments, KeyLayout::mostPlaces);
    try {
        write(entries);
    } catch (...) {
        OS()->allocator()->free(bytes_);
        throw;
    }
    notePads();
    numberBytes();
}

SortKeys::~SortKeys() { OS()->allocator()->free(bytes_); }

void SortKeys::makeRoom(std::size_t used) {
    if (room_ - used >= RecordKey::largest) return;
    constexpr std::size_t usual = 24;
    const std::size_t room = std::max(n_ * usual, room_ + room_ / 2) + RecordKey::largest;
    bytes_ = static_cast<unsigned char*>(OS()->allocator()->reallocate(bytes_, room));
    room_ = room;
}

void SortKeys::write(const SortEntry* entries) {
    RecordKeyWriter writer(layout_);
    std::size_t used = 0;
    for (std::size_t i = 0; i < n_; ++i) {
        makeRoom(used);
        const RecordKey key = writer.write(*entries[i].record, bytes_ + used);
        noteBytes(key);
        used += key.size();
    }
}

void SortKeys::noteBytes(RecordKey key) {
    anyCut_ = anyCut_ || key.isCut();
    key.forEachSegment([&](unsigned segment, const unsigned char* bytes, unsigned length) {
        const unsigned first = layout_.segment(segment).firstPlace;
        for (unsigned i = 0; i < length; ++i) numbers_[first + i][bytes[i]] = 1;
        shortest_[segment] = std::min(shortest_[segment], length);
        longest_[segment] = std::max(longest_[segment], length);
    });
    for (unsigned i = key.segmentCount(); i < layout_.segmentCount(); ++i) shortest_[i] = 0;
}

void SortKeys::notePads() {
    for (unsigned segment = 0; segment < layout_.segmentCount(); ++segment) {
        const KeyLayout::Segment& at = layout_.segment(segment);
        for (unsigned i = shortest_[segment]; i < longest_[segment]; ++i) {
            numbers_[at.firstPlace + i][at.pad] = 1;
        }
    }
}

void SortKeys::numberBytes() {
    for (unsigned place = 0; place < KeyLayout::mostPlaces; ++place) {
        unsigned next = 0;
        for (std::uint8_t& byte : numbers_[place]) {
            if (byte != 0) byte = static_cast<std::uint8_t>(next++);
        }
        widths_[place] = next == 0 ? 0 : static_cast<std::uint8_t>(std::bit_width(next - 1));
        bits_ += widths_[place];
    }
}

void SortKeys::choosePlaces(unsigned room) {
    chosenBits_ = std::min(bits_, room);
    unsigned left = chosenBits_;
    unsigned end = 0;
    for (unsigned segment = 0; segment < layout_.segmentCount(); ++segment) {
        const unsigned first = layout_.segment(segment).firstPlace;
        for (unsigned i = 0; i < longest_[segment] && left > 0; ++i) {
            const unsigned width = widths_[first + i];
            if (width == 0) continue;
            const unsigned taken = std::min(width, left);
            left -= taken;
            places_[end++] = {static_cast<std::uint8_t>(first + i), static_cast<std::uint8_t>(i),
                              static_cast<std::uint8_t>(width - taken),
                              static_cast<std::uint8_t>(left)};
        }
        placesEnd_[segment] = end;
    }
}
