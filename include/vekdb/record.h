#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include <vekdb/field_types.h>
#include <vekdb/host/lightweight_string.h>
#include <vekdb/host/visibility.h>

class TextFile;
class configb;
class vekdb;
struct LineSlices;
struct RecordStrings;

/// Who is told of what happens to a record's values: the table that owns it.
class VEKDB_PUBLIC RecordOwner {
protected:
    /// Is what it is; copying tells nobody.
    RecordOwner() = default;
    RecordOwner(const RecordOwner&) = default;
    RecordOwner& operator=(const RecordOwner&) = default;

private:
    friend class dbrecord;
    /// A value was changed.
    virtual void recordChanged() = 0;
    /// The values were read from a line.
    virtual void recordRead() = 0;

protected:
    virtual ~RecordOwner() = default;  // behind the others, whose slots stay where they were
};

/// One row: an ordered list of at most 65,535 values, each held as text, a changed flag, an
/// 8-bit tag and a link back to the table that owns it.
///
/// A table creates, owns and destroys its records; whoever reaches one through `get_record`
/// never frees it, and it lives until its row is deleted or its table goes. Records made with
/// the constructors belong to whoever made them and to no table. Copies share text.
/// Not locked: one thread at a time, reading included.
class VEKDB_PUBLIC dbrecord {
public:
    /// `count` empty values, no container, neither changed nor tagged.
    explicit dbrecord(unsigned short count);
    /// The other's values; no container, neither changed nor tagged.
    dbrecord(const dbrecord& other);
    ~dbrecord();

    /// Takes the other's count and stores each of its values as `set_field` with trim does, so
    /// leading white space is dropped and the changed flags are set even for equal values.
    /// Container and tag stay. Where memory ends, the values behind are empty.
    dbrecord& operator=(const dbrecord& other);

    /// Empties every value; the count and the flags stay.
    void clear();

    /// Stores a value; false, and nothing changed, when `index` is out of range. A null text
    /// counts as empty. With `trim`, leading white space of the 7-bit range is skipped. Sets the
    /// changed flag of the record and the modified flag of its table.
    bool set_field(int index, const char* text, bool trim = true);
    /// The same for text without an end of its own; false also where it has a NUL inside, which
    /// no log holds.
    bool set_field(int index, std::string_view text, bool trim = true);
    bool set_field(int index, int value);                 ///< as "%d"
    bool set_field(int index, unsigned int value);        ///< as "%u"
    bool set_field(int index, long value);                ///< as "%ld"
    bool set_field(int index, unsigned long value);       ///< as "%lu"
    bool set_field(int index, long long value);           ///< as "%lld"
    bool set_field(int index, unsigned long long value);  ///< as "%llu"
    bool set_field(int index, double value);              ///< as "%.8lf", at most 255 characters
    bool set_field(int index, bool value);                ///< as "t" or "f"

    /// A character would be stored as its number, a pointer to anything but `char` as "t".
    template <FieldCharacter C>
    bool set_field(int index, C value) = delete;
    template <class T>
    bool set_field(int index, const T* text, bool trim = true) = delete;

    /// Stores `value` (shared) only where it differs; an equal value sets no flag.
    /// False when `index` is out of range.
    bool setField(unsigned short index, LightweightString<char> value);

    /// The value's characters, "" when it is empty, null when `index` is out of range. Valid
    /// until the value is changed or the record goes.
    const char* get_field(unsigned short index) const;

    /// The value, or an empty string when `index` is out of range. The reference is valid until
    /// the record is changed, copied over or destroyed.
    const LightweightString<char>& getField(unsigned short index) const;

    /// The value without making a string of it; empty when `index` is out of range. A NUL
    /// stands behind its end. Valid as `get_field` is.
    std::string_view fieldView(unsigned index) const;
    /// The first `count` values, as `fieldView` gives each: one call a row instead of one a value.
    void fieldViews(std::string_view* values, unsigned count) const;

    /// Copies at most `length` characters as strncpy does and writes a zero at `length`, so the
    /// destination holds `length` + 1. An empty value writes a zero at position 0. False, and
    /// nothing written, when `index` or `length` is out of range or `destination` is null.
    bool in_field(int index, char* destination, int length) const;

    /// True when there are no values or all of them are empty.
    bool is_blank() const;

    /// The table that is told of changes; null for none. Setting it gives the table nothing: a
    /// record is owned by who made it.
    void set_container(vekdb* table);
    vekdb* get_container() const;

    /// Removes one value; an index out of range is ignored. No flag is set.
    void removeField(unsigned short index);
    /// Makes the record `count` values long. Nothing happens when `count` is negative or above
    /// 65,535, or `widths` is null; the widths themselves and the flag are not read.
    void resizeRecord(int count, const int* widths, bool flag);
    /// Values have no width: does nothing.
    void resizeField(int index, int width);

    /// Copies the record's named values into `settings`; returns how many of the mapped fields
    /// it copied, 0 without a container or a column "name".
    int update(configb* settings) const;

    /// Reads the file's next line into the record: 0 for an essentially empty line, otherwise
    /// the number of scan steps (one a field, one a skipped control character). Marks the record
    /// changed and its table modified.
    int read(TextFile& file);
    /// Appends the record to the file as one line and clears the changed flag; always 1.
    int write(TextFile& file) const;

    /// Whether a value was changed since the record was made or saved.
    bool get_changed() const { return changed_; }
    /// 0 to 255; 0 is not tagged.
    unsigned get_tag() const { return tag_; }
    /// How many values there are.
    unsigned short get_num_fields() const { return count_; }

private:
    friend class RecordAccess;

    // Either slices of the text that a table was loaded from, or strings of the record's own
    // (null while every value is empty), some of which may still stand for a slice.
    enum class Storage : std::uint8_t { strings, slices };

    RecordStrings& ownStrings(unsigned atLeast) const;
    void store(unsigned index, LightweightString<char> value);
    bool storeText(int index, std::string_view text, bool trim);
    bool overwrite(unsigned index, std::string_view value);
    void markChanged();
    void markRead();
    char* writeValues(char* to) const;
    std::size_t longestLine() const;
    void share(const dbrecord& other);
    void release();
    void resize(unsigned count);
    void prepareRemoval(unsigned index);

    RecordOwner* owner_ = nullptr;
    mutable union {
        RecordStrings* strings;
        LineSlices* slices;
    } values_ = {nullptr};
    unsigned short count_;
    mutable unsigned short stored_ = 0;  // values behind these were never stored: empty
    mutable Storage storage_ = Storage::strings;
    std::uint8_t tag_ = 0;
    mutable bool changed_ = false;
    // Its table keeps keys of its values, which end with a change; keeps its address.
    mutable bool isKeyed_ : 1 = false;
    bool isListed_ : 1 = false;
};
