#pragma once

#include <vekdb/host/lightweight_string.h>
#include "vekdb/record/line_store.h"

/// Values as strings of a record's own, laid out in one block: this header, `room` strings,
/// `room` marks. Where a record stood on slices before, a value without a mark still stands for
/// its slice, so that changing or asking for one value costs one string and not one a column.
struct RecordStrings {
    using String = LightweightString<char>;

    static RecordStrings* make(unsigned room);
    /// A copy with at least the room asked for; the strings are shared.
    static RecordStrings* copy(const RecordStrings& other, unsigned room);
    /// `slices` keep their reference: it passes to the strings.
    static RecordStrings* over(const LineSlices* slices, unsigned count, unsigned room);
    static void destroy(RecordStrings* strings);

    std::string_view view(unsigned i) const {
        return isSlice(i) ? under->view(i) : values()[i].view();
    }
    bool isSlice(unsigned i) const { return i < underCount && !own()[i]; }
    /// The value as a string, made from its slice on the first call.
    String& string(unsigned i);
    void set(unsigned i, String value);
    /// Drops the values from `count` on.
    void cut(unsigned count);
    /// Makes a string of every value of `count` from `first` on.
    void makeStrings(unsigned first, unsigned count);
    /// Takes out one value of `count`. Takes no memory where those behind it are strings.
    void erase(unsigned i, unsigned count);

    String* values() { return reinterpret_cast<String*>(this + 1); }
    const String* values() const { return reinterpret_cast<const String*>(this + 1); }
    bool* own() { return reinterpret_cast<bool*>(values() + room); }
    const bool* own() const { return reinterpret_cast<const bool*>(values() + room); }

    const LineSlices* under;
    unsigned short underCount;
    unsigned short room;
};
