#pragma once

#include <cstddef>
#include <cstdint>

#include "vekdb/record_key_impl.h"
#include "vekdb/record_sort_impl.h"

/// The sort keys of a run of entries, and their short forms: numbers of as few bits as tell the
/// keys apart.
///
/// The short form numbers the bytes that occur at each place of the keys and writes these
/// numbers one behind the other. A place where all keys are the same takes no room and the digits
/// of a number take four bits, so two columns of a log often fit into five or six bytes.
class SortKeys {
public:
    SortKeys(const SortEntry* entries, std::size_t n, bool descending);
    ~SortKeys();
    SortKeys(const SortKeys&) = delete;
    SortKeys& operator=(const SortKeys&) = delete;

    std::size_t count() const { return n_; }
    /// Whether some keys do not tell everything of their records.
    bool anyCut() const { return anyCut_; }

    RecordKey first() const { return RecordKey(bytes_); }
    static RecordKey next(RecordKey key) { return RecordKey(key.bytes() + key.size()); }

    /// As the records compare; 0 also for keys that were cut at the same place.
    int compare(RecordKey a, RecordKey b) const {
        const int order = compareKeys(layout_, a, b);
        return layout_.isDescending() ? -order : order;
    }

    /// The bits of a short form that nothing is left out of.
    unsigned bits() const { return bits_; }
    /// Prepares short forms of at most `room` bits: the first ones.
    void choosePlaces(unsigned room);
    unsigned chosenBits() const { return chosenBits_; }
    /// The short form of a key. `Form` has room for the bits chosen and is unsigned.
    template <class Form>
    Form shortForm(RecordKey key) const;

private:
    struct Place {
        std::uint8_t place;    // of all
        std::uint8_t offset;   // in its segment
        std::uint8_t dropped;  // low bits of the number that there is no room for
        std::uint8_t shift;
    };
    static constexpr unsigned mostSegments = 8;

    void write(const SortEntry* entries);
    void makeRoom(std::size_t used);
    void noteBytes(RecordKey key);
    void notePads();
    void numberBytes();

    KeyLayout layout_;
    std::size_t n_;
    unsigned char* bytes_ = nullptr;
    std::size_t room_ = 0;
    bool anyCut_ = false;

    unsigned shortest_[mostSegments];
    unsigned longest_[mostSegments] = {};
    // First which bytes occur at a place, then their numbers.
    std::uint8_t numbers_[KeyLayout::mostPlaces][256] = {};
    std::uint8_t widths_[KeyLayout::mostPlaces] = {};
    unsigned bits_ = 0;

    Place places_[KeyLayout::mostPlaces];
    unsigned placesEnd_[mostSegments] = {};  // in places_, of each segment
    unsigned chosenBits_ = 0;
};

// Where the key has no such place its pad stands there.
template <class Form>
Form SortKeys::shortForm(RecordKey key) const {
    Form form = 0;
    auto add = [&](unsigned segment, const unsigned char* bytes, unsigned length) {
        const unsigned from = segment == 0 ? 0 : placesEnd_[segment - 1];
        const unsigned char pad = layout_.segment(segment).pad;
        for (unsigned i = from; i < placesEnd_[segment]; ++i) {
            const Place& at = places_[i];
            const unsigned char byte = at.offset < length ? bytes[at.offset] : pad;
            form |= static_cast<Form>(numbers_[at.place][byte] >> at.dropped) << at.shift;
        }
    };
    key.forEachSegment(add);
    for (unsigned i = key.segmentCount(); i < layout_.segmentCount(); ++i) add(i, nullptr, 0);
    // The complement turns the order round.
    const Form all = static_cast<Form>((static_cast<Form>(1) << chosenBits_) - 1);
    return layout_.isDescending() ? all - form : form;
}
