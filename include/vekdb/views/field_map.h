#pragma once

#include <vector>

#include <vekdb/host/lightweight_string.h>
#include <vekdb/host/visibility.h>
#include <vekdb/views/view.h>

class vekdb;

/// Which columns of a source are shown, and in which order: a list of column names, each with
/// a flag whether it is visible. A value; copies share the source, as handles do.
///
/// A source keeps its map in the parameter "V5_FIELD_MAP", as numbers of columns counted from 1,
/// one blank between them, with a minus before the hidden ones: "1 -3 2". The map reads that
/// text when it is bound and gives it by `asString`; storing it is the caller's business.
/// Reading it enters the parameter, with an empty value, in a view that has none.
///
/// Names compare without regard to case. Positions out of range read as not there and change
/// nothing. Where memory ends, the map is as it was. Not locked: one thread at a time.
class VEKDB_PUBLIC FieldMap {
public:
    /// No entries, no source.
    FieldMap() = default;
    /// As `setSourceDb` makes it.
    explicit FieldMap(const VDBView& view);
    /// Over a view of the map's own. The table must outlive the map's use of it.
    explicit FieldMap(vekdb& table);
    FieldMap(const FieldMap&) = default;
    FieldMap(FieldMap&&) noexcept = default;
    FieldMap& operator=(const FieldMap& other);
    FieldMap& operator=(FieldMap&& other) noexcept = default;
    ~FieldMap() = default;

    /// Binds to the view and appends what its parameter lists, or, when there is nothing
    /// listed and the map is empty, all its columns. An entry of the text is read from three
    /// characters at most, and what cannot be read ends the reading.
    void setSourceDb(const VDBView& view);
    const VDBView& source() const { return source_; }

    /// How many entries there are, hidden ones included.
    unsigned size() const { return static_cast<unsigned>(names_.size()); }
    /// The position of a name, or -1.
    int getFieldIdx(const LightweightString<char>& name) const;
    bool containsField(const LightweightString<char>& name) const;
    /// False also for an entry that is not there.
    bool isVisible(const LightweightString<char>& name) const;
    bool isVisible(int i) const;
    /// The name at a position; the null string out of range.
    LightweightString<char> getName(int i) const;
    LightweightString<char> operator[](int i) const { return getName(i); }

    /// Adds an entry at the end unless the name is there already.
    void append(const LightweightString<char>& name, bool visible);
    /// Replaces an entry; nothing checks whether the name is there already.
    void set(int i, const LightweightString<char>& name, bool visible);
    void setName(int i, const LightweightString<char>& name);
    void setVisible(int i, bool visible);
    void invertVisible(int i);
    /// Exchanges two entries, flags included.
    void swap(int i, int j);
    /// False when the name is not there.
    bool remove(const LightweightString<char>& name);
    /// Removes all entries; the source stays.
    void clear();

    /// How many entries are visible.
    unsigned numVisible() const;
    /// The source's column of the n-th visible entry, counted from 0; -1 when there is none.
    int getVisibleFieldIndex(int n) const;

    /// The text for the parameter. Without a source the entries are numbered by their own
    /// positions; a name that the source has no column for is written as 0.
    LightweightString<char> asString() const;

private:
    bool has(int i) const;
    void readFrom(const LightweightString<char>& text);
    void appendColumn(int number);
    void appendAllColumns();
    unsigned columnOf(unsigned i) const;

    std::vector<LightweightString<char>> names_;
    std::vector<bool> visible_;
    VDBView source_;
};
