#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "vekdb/order/record_key.h"

/// The sort keys of a run of records, and their short forms: numbers of as few bits as tell the
/// keys apart.
///
/// The short form numbers the bytes that occur at each place of the keys and writes these
/// numbers one behind the other. A place where all keys are the same takes no room and the digits
/// of a number take four bits, so two columns of a log often fit into five or six bytes.
class SortKeys {
public:
    SortKeys(const dbrecord* const* records, std::size_t n, bool descending);
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
    /// Prepares short forms of at most `room` bits, fewer than 64: the first ones.
    void choosePlaces(unsigned room);
    unsigned chosenBits() const { return chosenBits_; }
    std::uint64_t shortForm(RecordKey key) const;

private:
    // What each byte at a place adds to a short form.
    using Forms = std::array<std::uint64_t, 256>;
    struct Place {
        unsigned offset;  // in its segment
        const Forms* forms;
        std::uint64_t padForm;  // of this place and those behind it in the segment
    };
    static constexpr unsigned mostSegments = 8;
    static constexpr unsigned behindSegment = 0xFF;  // as an offset

    void write(const dbrecord* const* records);
    void makeRoom(std::size_t used);
    void noteBytes(RecordKey key);
    void notePads();
    void numberBytes();
    void addForms(unsigned place, unsigned dropped, unsigned shift);
    void sumPads(Place* first, Place* end, unsigned char pad);

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

    std::vector<Forms> forms_;  // of the places chosen
    Place places_[KeyLayout::mostPlaces + mostSegments];
    const Place* chosen_[mostSegments] = {};  // in places_, of each segment
    unsigned chosenBits_ = 0;
};
