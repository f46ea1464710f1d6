#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <string_view>

#include <vekdb/host/ptr.h>
#include <vekdb/host/text_block.h>

class FillingBlock;
class LineStore;

/// Where the values of one line stand in the text of a LineStore: one behind the other, each
/// with a NUL behind it, and the same number of bytes between the end of one and the start of
/// the next (1 where the values were moved together, 3 where they stand as they were quoted).
struct LineSlices {
    /// The lines whose values lie further than this from the first one become strings.
    static constexpr std::size_t farthest = 0xFFFF;
    /// Between values that stand as they were quoted: quote, comma, quote.
    static constexpr unsigned quotedGap = 3;

    static std::size_t bytesFor(unsigned values) {
        return sizeof(LineSlices) + values * sizeof(std::uint16_t);
    }

    std::string_view view(unsigned i) const {
        std::size_t from = i == 0 ? 0 : next()[i - 1];
        return {first() + from, static_cast<std::size_t>(next()[i] - from) - gap()};
    }
    /// The first values, as many as are asked for.
    void views(std::string_view* values, unsigned count) const;
    /// Raises each length to that of the value.
    void raiseLengths(std::uint16_t* lengths, unsigned values) const;
    const char* first() const;
    /// Replaces a value by another of the same length, which may stand in the same text.
    void overwrite(unsigned i, std::string_view value);
    unsigned gap() const { return static_cast<unsigned>(place >> 56) & 0x3F; }
    /// Whether a value is another one than the line had.
    bool isOverwritten() const { return (place >> 62 & 1) != 0; }
    /// Whether more than one record may read the values.
    bool isShared() const { return place >> 63 != 0; }
    /// Counts one more record. The mark is made while only one record reads, so by one thread.
    void share();
    std::uint64_t offset() const { return place & ((std::uint64_t{1} << 56) - 1); }

    /// The starts of value 1, 2, ... and, behind the last value, of the one that would follow,
    /// counted from the start of value 0.
    std::uint16_t* next() { return reinterpret_cast<std::uint16_t*>(this + 1); }
    const std::uint16_t* next() const { return reinterpret_cast<const std::uint16_t*>(this + 1); }

    LineStore* store;
    // Offset of value 0 in the text; in the bits from 56 on the gap, in the top two the marks of
    // what is overwritten and of what is shared.
    std::uint64_t place;
};

/// The text that rows were read from and the slices of its lines. Each record that stands on
/// a slice holds one reference; the last to go frees text and slices together.
class LineStore {
public:
    explicit LineStore(Quor::Ptr<TextBlock> text);
    ~LineStore();
    LineStore(const LineStore&) = delete;
    LineStore& operator=(const LineStore&) = delete;

    char* text() const { return text_; }

    /// About so many bytes of slices are still to come.
    void expect(std::size_t bytes) noexcept;

    /// Room for the slices of one line of `values` values, 1 or more.
    LineSlices* addSlices(unsigned values, std::uint64_t offset, unsigned gap) {
        LineSlices* slices = openSlices(values, offset, gap);
        closeSlices(slices, values);
        return slices;
    }
    /// The same where only the most values are known yet; closed before others are opened.
    LineSlices* openSlices(unsigned mostValues, std::uint64_t offset, unsigned gap) {
        const std::size_t wanted = LineSlices::bytesFor(mostValues) + alignof(LineSlices);
        if (static_cast<std::size_t>(end_ - free_) < wanted) addChunk(wanted);
        return new (free_) LineSlices{this, offset | (std::uint64_t{gap} << 56)};
    }
    void closeSlices(LineSlices* slices, unsigned values) {
        constexpr std::size_t aligned = ~(alignof(LineSlices) - 1);
        free_ = reinterpret_cast<char*>(slices) +
                ((LineSlices::bytesFor(values) + alignof(LineSlices) - 1) & aligned);
    }

    /// The slices made last are not needed; the next ones take their place.
    void takeBack(LineSlices* last) { free_ = reinterpret_cast<char*>(last); }

    void addReferences(std::uint32_t n) { references_.fetch_add(n, std::memory_order_relaxed); }
    void release(std::uint32_t n = 1) {
        if (references_.fetch_sub(n, std::memory_order_acq_rel) == n) delete this;
    }

private:
    void addChunk(std::size_t atLeast);

    Quor::Ptr<TextBlock> block_;
    char* text_;
    FillingBlock* chunks_ = nullptr;
    char* free_ = nullptr;
    char* end_ = nullptr;
    std::size_t nextChunk_ = std::size_t{64} << 10;  // bytes; doubles
    std::atomic<std::uint32_t> references_{1};       // one for whoever made it
};

inline void LineSlices::share() {
    store->addReferences(1);
    if (!isShared()) place |= std::uint64_t{1} << 63;
}

inline void LineSlices::overwrite(unsigned i, std::string_view value) {
    char* const at = store->text() + (view(i).data() - store->text());
    std::memmove(at, value.data(), value.size());
    place |= std::uint64_t{1} << 62;
}

inline const char* LineSlices::first() const {
    return store->text() + offset();
}
