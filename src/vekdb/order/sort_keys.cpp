#include "vekdb/order/sort_keys.h"

#include <algorithm>
#include <bit>

#include <vekdb/host/os.h>
#include "host/posix/large_pages.h"
#include "vekdb/record/record_access.h"

namespace {

// Rows stand in any order, and everything that is read of one hangs on what was read before.
constexpr std::size_t step = 8;
constexpr std::size_t farthestAhead = 3 * step;

void expectRow(const dbrecord* const* at) {
    __builtin_prefetch(at[3 * step]);
    RecordAccess::expectView(*at[2 * step]);
    RecordAccess::expectText(*at[step]);
}

}  // namespace

SortKeys::SortKeys(const dbrecord* const* records, std::size_t n, bool descending)
    : layout_(descending), n_(n) {
    std::fill(shortest_, shortest_ + mostSegments, KeyLayout::mostPlaces);
    try {
        write(records);
    } catch (...) {
        OS()->allocator()->free(bytes_);
        throw;
    }
    notePads();
    numberBytes();
}

SortKeys::~SortKeys() {
    OS()->allocator()->free(bytes_);
}

void SortKeys::makeRoom(std::size_t used) {
    if (room_ - used >= RecordKey::largest) return;
    constexpr std::size_t usual = 24;
    const std::size_t room = std::max(n_ * usual, room_ + room_ / 2) + RecordKey::largest;
    bytes_ = static_cast<unsigned char*>(OS()->allocator()->reallocate(bytes_, room));
    room_ = room;
    expectFilling(bytes_, room_);
}

void SortKeys::write(const dbrecord* const* records) {
    RecordKeyWriter writer(layout_);
    std::size_t used = 0;
    for (std::size_t i = 0; i < n_; ++i) {
        makeRoom(used);
        if (n_ - i > farthestAhead) expectRow(records + i);
        const RecordKey key = writer.write(*records[i], bytes_ + used);
        noteBytes(key);
        used += key.size();
    }
}

void SortKeys::noteBytes(RecordKey key) {
    anyCut_ = anyCut_ || key.isCut();
    key.forEachSegment([&](unsigned segment, const unsigned char* bytes, unsigned length) {
        auto* const seen = numbers_ + layout_.segment(segment).firstPlace;
        for (unsigned i = 0; i < length; ++i) seen[i][bytes[i]] = 1;
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
    forms_.clear();
    forms_.reserve(chosenBits_);  // every place takes a bit at least
    unsigned left = chosenBits_;
    Place* next = places_;
    for (unsigned segment = 0; segment < layout_.segmentCount(); ++segment) {
        Place* const first = next;
        chosen_[segment] = first;
        for (unsigned i = 0; i < longest_[segment] && left > 0; ++i) {
            const unsigned place = layout_.segment(segment).firstPlace + i;
            const unsigned taken = std::min<unsigned>(widths_[place], left);
            if (taken == 0) continue;
            left -= taken;
            addForms(place, widths_[place] - taken, left);
            *next++ = {i, &forms_.back(), 0};
        }
        *next++ = {behindSegment, nullptr, 0};
        sumPads(first, next - 1, layout_.segment(segment).pad);
    }
}

// The low bits of a number that there is no room for are dropped. The complement turns the order
// round.
void SortKeys::addForms(unsigned place, unsigned dropped, unsigned shift) {
    const std::uint64_t all = (std::uint64_t{1} << (widths_[place] - dropped)) - 1;
    Forms& forms = forms_.emplace_back();
    for (unsigned byte = 0; byte < forms.size(); ++byte) {
        const std::uint64_t number = numbers_[place][byte] >> dropped;
        forms[byte] = (layout_.isDescending() ? all - number : number) << shift;
    }
}

void SortKeys::sumPads(Place* first, Place* end, unsigned char pad) {
    while (end != first) {
        const std::uint64_t behind = end->padForm;
        --end;
        end->padForm = (*end->forms)[pad] | behind;
    }
}

// Where the key has no such place its pad stands there.
std::uint64_t SortKeys::shortForm(RecordKey key) const {
    std::uint64_t form = 0;
    key.forEachSegment([&](unsigned segment, const unsigned char* bytes, unsigned length) {
        const Place* at = chosen_[segment];
        for (; at->offset < length; ++at) form |= (*at->forms)[bytes[at->offset]];
        form |= at->padForm;
    });
    for (unsigned i = key.segmentCount(); i < layout_.segmentCount(); ++i) {
        form |= chosen_[i]->padForm;
    }
    return form;
}
