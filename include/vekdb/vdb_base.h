#pragma once

#include <string_view>

#include <vekdb/field_types.h>
#include <vekdb/host/lightweight_string.h>
#include <vekdb/host/ptr.h>
#include <vekdb/host/visibility.h>

class Cookie;
class dbrecord;
class VDBBase;

/// What tables and views tell their listeners: a notice's name, of which
/// NotifyMsgTypeDictionary makes its type.
inline constexpr char kRecordsDeleted[] = "recordsDeleted";
inline constexpr char kRecordsChanged[] = "recordsChanged";

/// Refers to a record source without holding it, and turns null when the source is destroyed.
/// Whatever outlives a source by mistake, a view its table above all, then has no source
/// instead of a dangling one. Linking and unlinking take constant time and no memory.
class VEKDB_PUBLIC SourceLink {
public:
    /// Refers to nothing, or to a source.
    SourceLink() noexcept = default;
    explicit SourceLink(VDBBase* source) noexcept { set(source); }
    SourceLink(const SourceLink&) = delete;
    SourceLink& operator=(const SourceLink&) = delete;
    ~SourceLink() { set(nullptr); }

    /// Refers to another source, or to none.
    void set(VDBBase* source) noexcept;
    /// Null for none, and when it was destroyed.
    VDBBase* get() const noexcept { return source_; }

private:
    void unlink() noexcept;

    VDBBase* source_ = nullptr;
    SourceLink* next_ = nullptr;
    SourceLink** place_ = nullptr;
};

/// A SourceLink to a table or to a view.
template <class T>
class VEKDB_PUBLIC SourceRef {
public:
    /// As SourceLink.
    SourceRef() noexcept = default;
    explicit SourceRef(T* source) noexcept : link_(source) {}

    /// As SourceLink.
    void set(T* source) noexcept { link_.set(source); }
    T* get() const noexcept { return static_cast<T*>(link_.get()); }

private:
    SourceLink link_;
};

/// The record-source interface that tables and views both answer, so that saving, cursors,
/// field maps and merging take either.
///
/// Rows and columns are 32-bit and relative to what the source shows. "No row", "nothing found"
/// and refusals are 0xFFFFFFFF on unsigned results. A record got here is never freed by the
/// caller; one from `make_dummy_record` is. The declaration order is the order of the slots.
///
/// The same operation may mean something milder on a view: `delete_tagged_records` and
/// `set_show_tags_only` of a view only take rows out of the stack of views.
/// Not locked: one thread at a time.
class VEKDB_PUBLIC VDBBase : public iObject {
public:
    /// Nobody refers to it yet.
    VDBBase() = default;
    VDBBase(const VDBBase&) = delete;
    VDBBase& operator=(const VDBBase&) = delete;
    ~VDBBase() override {
        while (links_ != nullptr) {
            links_->set(nullptr);
        }
    }

    /// Writes all rows under the source's file name; how many, 0 when saving failed.
    virtual int save_text() = 0;
    /// The same with the tagged rows alone; 0 when saving failed.
    virtual int save_tags() = 0;

    /// Puts `n` blank records in front of a row, and takes up to `n` of them away from a row on.
    virtual void insert_records(unsigned at, int n) = 0;
    virtual void delete_records(unsigned first, int n) = 0;
    /// Takes the tagged rows away; of a table these are deleted.
    virtual unsigned delete_tagged_records() = 0;

    /// How many rows and columns are shown.
    virtual unsigned get_num_records() const = 0;
    virtual unsigned get_num_fields() const = 0;

    /// The record of a row, or null. It is the table's.
    virtual dbrecord* get_record(unsigned row) const = 0;
    /// A record that stands in no row, with as many values as there are columns. The caller owns
    /// it; null where there is no table.
    virtual dbrecord* make_dummy_record() const = 0;
    /// A value, shared with the record. The null string where there is none.
    virtual LightweightString<char> getField(unsigned row, unsigned field) const = 0;

    /// A column's name, the length of its longest value in bytes, and its type. The name is the
    /// table's and lives until columns are named, added or removed.
    virtual const char* get_fieldname(unsigned field) const = 0;
    virtual unsigned get_fieldsize(unsigned field) const = 0;
    virtual DBFieldTypes::eType get_field_type(unsigned field) const = 0;
    /// Gives a column another type; false where there is no such column.
    virtual bool set_fieldtype(unsigned field, DBFieldTypes::eType type) = 0;
    /// `get_field_type` by its other name.
    virtual DBFieldTypes::eType get_fieldtype(unsigned field) const {
        return get_field_type(field);
    }
    /// The column of a name, its case ignored.
    virtual unsigned get_fieldnum(LightweightString<char> name) const = 0;
    /// Gives a column another name; false where that was not done.
    virtual bool set_fieldname(unsigned field, const char* name) = 0;

    /// The file that `save_text` writes.
    virtual void set_filename(LightweightString<wchar_t> name) = 0;
    virtual LightweightString<wchar_t> get_filename() const = 0;

    /// What `sort` compares by: a column, a list of columns that ends at a negative one and stays
    /// the caller's, and where in a value the comparison begins. They are the table's settings.
    virtual void set_sortfield(int field) = 0;
    virtual void set_sortfields(int* fields) = 0;
    virtual void set_sort_offset(int offset) = 0;
    /// Puts the rows in order, descending when `direction` is negative; `forceNormal` compares
    /// plainly instead of as people read. Rows that compare equal keep their order.
    virtual void sort(int direction, int forceNormal) = 0;

    /// A row's tag: 0 to 255, 0 for a row that is not tagged.
    virtual void set_tag(unsigned row, int value) = 0;
    virtual void invert_tag(unsigned row) = 0;
    virtual void set_all_tags(int value) = 0;
    virtual void invert_all_tags() = 0;
    /// Shows the tagged rows alone.
    virtual void set_show_tags_only(unsigned flag) = 0;
    virtual unsigned get_show_tags_only() const = 0;
    /// A row's tag, and how many rows have one that is not 0.
    virtual unsigned get_tag(unsigned row) const = 0;
    virtual unsigned get_num_tags() const = 0;

    /// What is asked of rows: a text for each column, empty for those that nothing is asked of.
    /// The record is not kept.
    virtual void set_query(dbrecord* query) = 0;
    /// Tags the rows that answer the query; how many.
    virtual unsigned tag_matching_records(int keepTags) = 0;
    /// Tags the first row of each value of a column; how many.
    virtual unsigned tag_all_different(int field) = 0;

    /// Stores an identity in the row's column "cookie". False where there is none.
    virtual bool set_field(unsigned row, const Cookie& cookie) = 0;
    /// Stores a value as a record does; false where there is no such row or column.
    virtual bool set_field(unsigned row, unsigned field, const char* text) = 0;
    virtual bool set_field(unsigned row, unsigned field, int value) = 0;
    virtual bool set_field(unsigned row, unsigned field, double value) = 0;
    virtual bool set_field(unsigned row, unsigned field, bool value) = 0;
    /// Reads a value: at most `length` characters into a buffer that holds one more, or as a
    /// number, or whether it begins with "t". False, and nothing written, where it is empty.
    virtual bool in_field(unsigned row, unsigned field, char* buffer, int length) const = 0;
    virtual bool in_field(unsigned row, unsigned field, int& value) const = 0;
    virtual bool in_field(unsigned row, unsigned field, double& value) const = 0;
    virtual bool in_field(unsigned row, unsigned field, bool& value) const = 0;

    /// Appends `n` blank records; the row of the first.
    virtual unsigned add_records(int n) = 0;

    /// Sets a parameter; 0, or 0xFFFFFFFF when it was refused.
    virtual unsigned add_param(const char* name, const char* value) = 0;
    virtual unsigned set_param_val(const char* name, const char* value) = 0;
    /// A parameter's text, which lives until it is next set.
    virtual const char* get_param_val(const char* name) = 0;

    /// The first row with this value in a column, or whose value begins with its first
    /// `prefixLength` characters where that is not 0.
    virtual unsigned findFirst(const char* field, const char* value, int prefixLength) = 0;
    /// Readies the comparison of `vekdb/sort.h`; the columns that it goes by.
    virtual int* sortPrepare(int direction, int forceNormal) = 0;
    /// Whether a row answers the query: 1 or 0.
    virtual unsigned match_record(int row) const = 0;
    /// The row of the table that stands behind a row.
    virtual unsigned baseIndex(unsigned row) const = 0;
    /// Whether there is a table with columns.
    virtual bool get_valid() const = 0;

    /// Text without an end of its own, and numbers of every width, through the operation for
    /// text. False also for a text with a NUL inside, which no log holds.
    bool set_field(unsigned row, unsigned field, std::string_view text);
    bool set_field(unsigned row, unsigned field, unsigned int value);
    bool set_field(unsigned row, unsigned field, long value);
    bool set_field(unsigned row, unsigned field, unsigned long value);
    bool set_field(unsigned row, unsigned field, long long value);
    bool set_field(unsigned row, unsigned field, unsigned long long value);

    /// A character would be stored as its number, a pointer to anything but `char` as "t".
    template <FieldCharacter C>
    bool set_field(unsigned row, unsigned field, C value) = delete;
    template <class T>
    bool set_field(unsigned row, unsigned field, const T* text) = delete;

private:
    friend class SourceLink;

    SourceLink* links_ = nullptr;
};

inline void SourceLink::unlink() noexcept {
    if (source_ == nullptr) {
        return;
    }
    *place_ = next_;
    if (next_ != nullptr) {
        next_->place_ = place_;
    }
}

inline void SourceLink::set(VDBBase* source) noexcept {
    unlink();
    source_ = source;
    if (source == nullptr) {
        return;
    }
    place_ = &source->links_;
    next_ = source->links_;
    if (next_ != nullptr) {
        next_->place_ = &next_;
    }
    source->links_ = this;
}
