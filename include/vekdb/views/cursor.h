#pragma once

#include <vekdb/host/visibility.h>
#include <vekdb/views/view.h>

class dbrecord;

/// Walks the rows of a view in both directions, stopping at every row or at the tagged rows
/// only, and finds rows by record or by a field's text.
///
/// The position is a row number, or -1, which stands both before the first row and behind the
/// last. It is not told of changes: rows that come or go under it leave the number as it is.
/// The cursor shares the view, as a handle does, but not the table. On a null handle, every
/// operation ends at -1. Not locked: one thread at a time.
class VEKDB_PUBLIC VDBViewCursor {
public:
    /// Starts at -1.
    explicit VDBViewCursor(const VDBView& view, bool tagsOnly = false);

    /// The current row's number, or -1.
    int index() const { return index_; }
    /// The record of the current row; null at -1 and for a row whose record is gone.
    dbrecord* record() const;
    /// Whether it stops at tagged rows alone from the next step on; it stays where it is.
    void setTagsOnly(bool tagsOnly) { tagsOnly_ = tagsOnly; }

    /// Goes to a row, or to -1 when there is no such row.
    VDBViewCursor& set_index(int row);
    /// To the next row, from -1 to the first, from the last to -1.
    VDBViewCursor& operator++();
    /// To the row before, from -1 to the last, from the first to -1.
    VDBViewCursor& operator--();

    /// Takes the current row out of the view, which issues its notice. The row behind it is
    /// then the current one; -1 when there is none.
    void remove();

    /// Goes to the first row that shows the record, tagged or not, and returns it; -1 when no
    /// row before the first one without a record does.
    int find(const dbrecord* record);

    /// From the current row on, this row included, goes to the first row whose field has the
    /// text, ignoring case, and returns it; -1 when there is none. Only rows the cursor stops
    /// at are looked at, and from -1 there are none: `set_index(0)` first.
    int findField(const char* field, const char* value);

    /// Halves the rows of a view sorted by the field and always ends at -1, finding nothing.
    /// When it meets the text, it does not return at all: it compares the same row for ever.
    /// Kept for what it has always done; `findField` is the operation that finds.
    int findFieldSorted(const char* field, const char* value);

private:
    int rows() const;
    int column(const char* field) const;
    int compareAt(int row, int column, const char* value) const;

    VDBView view_;
    int index_ = -1;
    bool tagsOnly_;
};
