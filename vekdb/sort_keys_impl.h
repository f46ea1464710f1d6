#pragma once

#include <cstddef>
#include <cstdint>

#include "vekdb/record_key_impl.h"
#include "vekdb/record_sort_impl.h"

/// The sort keys of a run of entries, and their short forms: numbers of as few bits as tell the
/// keys apart.
///
/// The short form numbers the bytes that occur at each place of the keys and writes these
/// numbers one behind the other. A place where all keys are the same takes no room, the digits
/// of a number take four bits, so two columns of a log often fit into five bytes.
class SortKeys {
public:
    __extension__ using Short = unsigned __int128;

    SortKeys(const SortEntry* entries, std::size_t n, bool descending);
    ~SortKeys();
    SortKeys(const SortKeys&) = delete;
    SortKeys& operator=(const SortKeys&) = delete;

    /// The bits of a short form that nothing is left out of.
    unsigned bits() const { return bits_; }
    /// Whether records of the same key are equal.
    bool areWhole() const { return !anyCut_; }

    /// Makes the short forms, cut to `room` bits, and gives each with its entry to `take`.
    template <class Take>
    void shorten(unsigned room, Take take) {
        choosePlaces(room);
        const unsigned char* key = bytes_;
        for (std::size_t i = 0; i < n_; ++i) {
            take(i, shortForm(key));
            key += sizeOf(key);
        }
    }

    /// Lets `compare` find the keys. Not needed where short forms tell everything.
    void index();
    /// Compares whole keys; 0 also for keys that were cut at the same place.
    int compare(std::size_t a, std::size_t b) const;
    bool isCut(std::size_t i) const { return (starts_[i][0] & cutMark) != 0; }

private:
    // A key stands behind a byte with its length and the mark of a cut one.
    static constexpr unsigned cutMark = 0x80;
    static constexpr std::size_t most = 1 + RecordKeyWriter::longest;

    struct Place {
        unsigned char place;
        unsigned char dropped;  // low bits of the number that there is no room for
        unsigned char shift;
    };

    static unsigned lengthOf(const unsigned char* key) { return key[0] & ~cutMark; }
    static std::size_t sizeOf(const unsigned char* key) { return 1 + lengthOf(key); }

    void write(const SortEntry* entries);
    void writeKey(const dbrecord* record, unsigned char* to);
    void noteBytes(const unsigned char* key);
    void numberBytes();
    void choosePlaces(unsigned room);
    Short shortForm(const unsigned char* key) const;
    void makeRoom(std::size_t used);

    std::size_t n_;
    bool descending_;
    bool anyCut_ = false;
    unsigned char* bytes_ = nullptr;
    std::size_t room_ = 0;
    const unsigned char** starts_ = nullptr;

    unsigned shortest_ = RecordKeyWriter::longest;
    unsigned longest_ = 0;
    unsigned bits_ = 0;
    unsigned usedBits_ = 0;
    unsigned char widths_[RecordKeyWriter::longest] = {};
    Place places_[RecordKeyWriter::longest];
    unsigned placeCount_ = 0;
    // First which bytes occur at a place, then their numbers.
    std::uint8_t numbers_[RecordKeyWriter::longest][256] = {};
};
