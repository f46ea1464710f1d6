#pragma once

#include <vekdb/host/cookie.h>
#include <vekdb/host/cookie_containers.h>
#include <vekdb/host/visibility.h>
#include <vekdb/table.h>

/// Container files: tables that list the objects of one container (a bin or a log of clips).
/// A record stands for an item; its column "Cookie" names the object, its other columns are the
/// item's attributes. The table's parameters are the container's attributes, among them "Name"
/// and "Permanent".
class VEKDB_PUBLIC QuorContainerFile {
public:
    class Writer;
    class Reader;

    /// The parameters that hold a container's name and whether it is permanent: "Name" and
    /// "Permanent".
    static LightweightString<char> getNameParamKey();
    static LightweightString<char> getPermanentParamKey();
    /// The cookie of the container stored at the path: that of the file's name, made one of type
    /// M where the path ends in "sg" and of type B where it ends in "rak", in any case of letters.
    /// No dot is asked for: "foosg" is of type M, too.
    static Cookie getCookieFromFilename(const LightweightString<wchar_t>& path);
};

/// Builds a container file and saves it. It is the table that it writes, so its records live as
/// those of any table do. Used by one thread at a time.
class QuorContainerFile::Writer : public vekdb {
public:
    /// Columns as `vekdb` takes them; items can only be named where "Cookie" is among them.
    explicit Writer(DBFieldDesc* schema);

    /// Appends an item and returns its record, for the caller to fill its other columns; the
    /// table owns it. Null, and nothing appended, for a cookie that names no object (type code I)
    /// and while only tagged rows are shown. Without a "Cookie" column the record stays empty.
    dbrecord* addItem(const Cookie& cookie);

    /// Sets an attribute, which is a parameter of the table, and the two that have names of their
    /// own. Where a table takes no more parameters nothing happens.
    void setName(LightweightString<char> name);
    void setAttrib(LightweightString<char> key, LightweightString<char> value);
    void setPermanent(bool flag);

    /// Writes the file.
    ///
    /// CAUTION: this reports nothing, and IT CAN LOSE THE OLD FILE. Where there is a file at the
    /// path, the new one is written to path + ".tmp", then the old one is DELETED, WHETHER OR NOT
    /// THE NEW ONE COULD BE WRITTEN, and then the new one is moved to its place. When writing
    /// fails (a full disk, a folder of that name), NOTHING is at the path afterwards. Callers who
    /// cannot afford that keep a copy until they have seen the new file load, or use
    /// `set_filename` and `save_text`, which replace a file whole or not at all and say so.
    ///
    /// A container without any attribute is written, but its file cannot be loaded: give it a
    /// name first.
    ///
    /// Afterwards the table's file name is the one written to: path + ".tmp" where there was a
    /// file.
    void save(const LightweightString<wchar_t>& path);

private:
    int cookieColumn_;
};

/// Loads a container file and answers questions about it. A file that could not be loaded, or
/// that has no "Cookie" column, has no attributes and no items to give. A damaged record line
/// ends the loading and leaves a valid container of fewer items: ask `read_error_info` before
/// saving it back. Used by one thread at a time.
class QuorContainerFile::Reader : public vekdb {
public:
    class Item;

    /// With `headerOnly`, parameters and columns only.
    Reader(LightweightString<wchar_t> path, bool headerOnly);

    /// Whether the file could be loaded and has a column "Cookie".
    bool valid() const;
    /// The container's own cookie, made of its file's name.
    const Cookie& getCookie() const { return cookie_; }

    /// An attribute of the container; null when there is none, or the container is not valid.
    LightweightString<char> getAttrib(LightweightString<char> key) const;
    /// As `atoi` and `atof` read it; the default when the attribute is absent or empty.
    int getAttrib(LightweightString<char> key, int otherwise) const;
    double getAttrib(LightweightString<char> key, double otherwise) const;
    LightweightString<char> getName() const;
    LightweightString<wchar_t> getNameW() const;
    /// False also for a value that is no boolean.
    bool isPermanent() const;

    /// The number of records, also of a container that is not valid.
    unsigned getNumItems() const;
    /// An item without a record, and of the default cookie, where there is none.
    Item getItem(unsigned i) const;
    /// The column of an attribute of items, or -1.
    int getItemAttribIndex(const char* name) const;
    bool contains(const Cookie& cookie) const;
    /// The cookies of all items; none of a container that is not valid.
    CookieSet getContents() const;

private:
    const char* cookieText(unsigned row, unsigned column) const;

    Cookie cookie_;
};

/// An item of a container: a value, good for as long as the reader's table has the record.
class QuorContainerFile::Reader::Item {
public:
    /// Of no record, and of the default cookie.
    Item() = default;
    /// Refers to a record, which it does not own; null for none.
    Item(const dbrecord* record, const Cookie& cookie) : record_(record), cookie_(cookie) {}

    /// What names the object. Lives as long as this item.
    const Cookie& getCookie() const { return cookie_; }

    /// The text of a cell, null where there is no such column. Columns count modulo 65,536.
    LightweightString<char> getAttrib(unsigned column) const;
    /// As `atoi` and `atof` read the cell, 0 for an empty one; the default only where there is
    /// no such column.
    int getAttrib(unsigned column, int otherwise) const;
    double getAttrib(unsigned column, double otherwise) const;

private:
    const char* cell(unsigned column) const;

    const dbrecord* record_ = nullptr;
    Cookie cookie_;
};
