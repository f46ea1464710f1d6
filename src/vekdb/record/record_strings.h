#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include <vekdb/host/lightweight_string.h>
#include "vekdb/record/line_store.h"

/// One value in place of a slice: its text, which stays where it is for as long as the strings
/// live that it belongs to.
struct ValuePatch {
    static constexpr std::uint16_t noValue = 0xFFFF;

    char* text() { return reinterpret_cast<char*>(this + 1); }
    std::string_view view() const { return {reinterpret_cast<const char*>(this + 1), size}; }
    void write(std::string_view value);

    ValuePatch* next;
    std::uint16_t index;
    std::uint16_t size;
    std::uint16_t room;  // for the text, its NUL included
    bool isInFront;      // stands in the block of the strings that it was made with
};

/// Values as strings of a record's own, laid out in one block: this header, `room` strings,
/// `room` marks. Where a record stood on slices before, a value without a mark still stands for
/// its slice, or for the patch that has its place, so that changing or asking for one value costs
/// one string and not one a column. The first texts that are set come as patches, while there is
/// room for no string yet: one small block each, or for the first the one of the header.
struct RecordStrings {
    using String = LightweightString<char>;

    static RecordStrings* make(unsigned room);
    /// A copy with at least the room asked for; the strings are shared.
    static RecordStrings* copy(const RecordStrings& other, unsigned room);
    /// `slices` keep their reference: it passes to the strings.
    static RecordStrings* over(const LineSlices* slices, unsigned count, unsigned room);
    /// The same with no room: every value stands for its slice.
    static RecordStrings* standing(const LineSlices* slices, unsigned count);
    /// The same with one value patched, of at most `longestPatch`.
    static RecordStrings* patched(const LineSlices* slices, unsigned count, unsigned index,
                                  std::string_view value);
    /// The same strings with more room; what stood in for slices stays where it is.
    static RecordStrings* grown(RecordStrings* strings, unsigned room);
    static void destroy(RecordStrings* strings);

    std::string_view view(unsigned i) const {
        return standsUnder(i) ? underView(i) : values()[i].view();
    }
    /// The value as a string, made from what stands under it on the first call.
    String& string(unsigned i);
    void set(unsigned i, String value);
    /// Sets a value that has no string by a patch. False, and nothing done, where it is to be a
    /// string: there is room for some, the text is long, or there are enough patches.
    bool patch(unsigned i, std::string_view value);
    /// Drops the values from `count` on.
    void cut(unsigned count);
    /// Makes a string of every value of `count` from `first` on.
    void makeStrings(unsigned first, unsigned count);
    /// Whether a value can be taken out and those behind it go on standing for their slices.
    bool mayLeaveOut() const { return room == 0 && leftOut == none; }
    /// Takes out one value of `count`. Takes no memory where one may be left out, or those behind
    /// it are strings.
    void erase(unsigned i, unsigned count);

    static constexpr std::size_t longestPatch = 1000;
    static constexpr unsigned short none = 0xFFFF;

    String* values() { return reinterpret_cast<String*>(this + 1); }
    const String* values() const { return reinterpret_cast<const String*>(this + 1); }
    bool* own() { return reinterpret_cast<bool*>(values() + room); }
    const bool* own() const { return reinterpret_cast<const bool*>(values() + room); }

    const LineSlices* under;
    ValuePatch* patches;
    unsigned short underCount;
    unsigned short room;
    unsigned short leftOut = none;  // of `under`, the value that no value stands for

private:
    bool standsUnder(unsigned i) const { return i < underCount && (room == 0 || !own()[i]); }
    std::string_view underView(unsigned i) const {
        const ValuePatch* found = patchOf(i);
        return found != nullptr ? found->view() : under->view(i < leftOut ? i : i + 1);
    }
    ValuePatch* patchOf(unsigned i) const {
        ValuePatch* found = patches;
        while (found != nullptr && found->index != i) found = found->next;
        return found;
    }
    void leaveOut(unsigned i);
    bool hasEnoughPatches() const;
    /// Whether the block is that of one of the patches.
    bool hasBlock(const void* block) const;
};
