#pragma once

#include <cstdint>
#include <string_view>

#include "vekdb/order/record_compare.h"

class dbrecord;

/// How the sort keys of one sort are made up: which columns they hold, in how many places, by
/// the record comparison in force.
///
/// A key is a row of segments, and each segment has as many places as the layout gives it: those
/// that a record does not fill count as the segment's pad. So the same place of two keys always
/// holds the same thing, and keys compare place by place as the record comparison compares the
/// records, as far as they go.
class KeyLayout {
public:
    /// Of all keys together; more would cost more than the full comparison of a few records.
    static constexpr unsigned mostPlaces = 128;
    static constexpr unsigned mostColumns = 4;
    static constexpr unsigned mostSegments = 2 * mostColumns;  // text and marks

    struct Segment {
        std::uint8_t firstPlace;
        std::uint8_t places;
        std::uint8_t pad;
    };
    struct Column {
        int column;
        ValueOrder order;
        std::uint8_t textPlaces;
        std::uint8_t markPlaces;  // only for the people's order
    };

    explicit KeyLayout(bool descending);

    bool isDescending() const { return descending_; }
    unsigned columnCount() const { return columnCount_; }
    const Column& column(unsigned i) const { return columns_[i]; }
    /// Whether there are columns behind those that the keys hold.
    bool leavesColumnsOut() const { return leavesColumnsOut_; }
    unsigned segmentCount() const { return segmentCount_; }
    const Segment& segment(unsigned i) const { return segments_[i]; }

private:
    void addColumn(int column, unsigned places);
    void addSegment(unsigned places, std::uint8_t pad);

    bool descending_;
    bool leavesColumnsOut_ = false;
    unsigned columnCount_ = 0;
    unsigned segmentCount_ = 0;
    unsigned placesUsed_ = 0;
    Column columns_[mostColumns];
    Segment segments_[mostSegments];
};

/// A key as it stands in memory: its size, the number of its segments with the mark of a cut
/// key, and each segment behind its length. Zeros fill it up to whole words.
///
/// A key that was cut decides nothing between records whose keys are the same; any other key
/// decides everything. Keys are cut where a segment is full, or behind places that say so, so
/// that of two keys which are the same up to there both are cut.
class RecordKey {
public:
    static constexpr std::size_t word = 8;
    static constexpr std::size_t largest = 152;  // sizes, lengths, all places and a word of zeros

    explicit RecordKey(const unsigned char* bytes) : bytes_(bytes) {}

    std::size_t size() const { return bytes_[0]; }
    const unsigned char* bytes() const { return bytes_; }
    bool isCut() const { return (bytes_[1] & cutMark) != 0; }
    unsigned segmentCount() const { return bytes_[1] & ~unsigned{cutMark}; }

    /// Gives every segment with its number to `take(number, bytes, length)`.
    template <class Take>
    void forEachSegment(Take take) const {
        const unsigned char* at = bytes_ + header;
        const unsigned count = segmentCount();
        for (unsigned i = 0; i < count; ++i) {
            take(i, at + 1, unsigned{at[0]});
            at += 1 + at[0];
        }
    }

private:
    friend class RecordKeyWriter;
    static constexpr unsigned char cutMark = 0x80;
    static constexpr unsigned header = 2;

    static_assert(header + KeyLayout::mostSegments + KeyLayout::mostPlaces + word <= largest);
    static_assert(largest <= 255 && KeyLayout::mostSegments < cutMark, "one byte says each");

    const unsigned char* bytes_;
};

/// Negative, 0 or positive, by the places of two keys. The opposite of what the descending
/// comparison gives where the layout is a descending one.
int compareKeys(const KeyLayout& layout, RecordKey a, RecordKey b);

/// Writes the keys of records.
class RecordKeyWriter {
public:
    explicit RecordKeyWriter(const KeyLayout& layout) : layout_(layout) {}

    /// `to` has room for the largest key.
    RecordKey write(const dbrecord& record, unsigned char* to);

private:
    class ZeroMarks;

    void put(unsigned char byte) {
        if (at_ != end_) *at_++ = byte;
    }
    bool isFull() const { return at_ == end_; }
    void open(unsigned places) {
        segment_ = at_++;
        end_ = at_ + places;
    }
    void close() {
        *segment_ = static_cast<unsigned char>(at_ - segment_ - 1);
        ++segments_;
    }

    void writeAscending(const dbrecord& record);
    void writeDescending(const dbrecord& record);
    bool writeText(const KeyLayout::Column& column, std::string_view text, ZeroMarks& zeros);
    bool writeMarks(const KeyLayout::Column& column, const ZeroMarks& zeros);
    void putFolded(std::string_view text);
    void putTimecode(std::string_view text);
    void putAsRead(std::string_view text, ZeroMarks& zeros);
    void putDigits(std::string_view digits);

    const KeyLayout& layout_;
    unsigned char* segment_ = nullptr;  // the length of the open one
    unsigned char* at_ = nullptr;
    unsigned char* end_ = nullptr;  // of the open segment
    unsigned segments_ = 0;
    bool isCut_ = false;
};
