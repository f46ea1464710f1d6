#pragma once

#include <vekdb/host/lightweight_string.h>
#include <vekdb/host/visibility.h>

#include <cstddef>
#include <vector>

// The host's settings.

/// The integer setting of this name: what was set in the process, moved to the
/// nearest end of min..max where it lies outside, or else the default value as it
/// is. Names are told apart by every character. Safe from any thread.
VEKDB_PUBLIC int config_int(const char* key, int defaultValue, int min, int max);

/// Sets an integer setting for the process, and takes it back. A null name sets
/// nothing. The library reads each of its settings once in the life of a process,
/// at its first use.
VEKDB_PUBLIC void setConfigInt(const char* key, int value);
VEKDB_PUBLIC void clearConfigInt(const char* key);

/// One text of a settings record.
class VEKDB_PUBLIC strp_field {
public:
    /// Empty, or with a text.
    strp_field() = default;
    explicit strp_field(const LightweightString<char>& text) : text_(text) {}

    /// Puts another text in, and gives the one that is there.
    void set(const LightweightString<char>& text) { text_ = text; }
    const LightweightString<char>& get() const { return text_; }

private:
    LightweightString<char> text_;
};

/// A settings record: text fields by key, in the order in which the keys were
/// first set. Keys are told apart by every character; a null key is the empty one.
class VEKDB_PUBLIC configb {
public:
    /// Sets the field of a key anew, or adds it behind the others.
    void set(const char* key, const strp_field& field);

    /// The field of a key, an empty field for a key that was never set. Both live
    /// until the record changes.
    const strp_field& get(const char* key) const;
    /// Whether the key was ever set.
    bool has(const char* key) const { return find(key) != nullptr; }

    /// How many keys there are.
    std::size_t size() const { return entries_.size(); }

    /// The i-th key; the null string past the end.
    LightweightString<char> key(std::size_t i) const;

private:
    struct Entry {
        LightweightString<char> key;
        strp_field field;
    };

    const Entry* find(const char* key) const;

    std::vector<Entry> entries_;
};
