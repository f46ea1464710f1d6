#pragma once

#include <vekdb/host/visibility.h>

class GrowString;

/// What an Array holds: a record that knows its order and how to print itself.
class VEKDB_PUBLIC ArrayRec {
public:
    /// Records of a derived class are copied as that class says.
    ArrayRec() = default;
    ArrayRec(const ArrayRec&) = default;
    ArrayRec& operator=(const ArrayRec&) = default;
    virtual ~ArrayRec() = default;

    /// Negative, 0 or positive. Only records of one kind meet in an array.
    virtual int compare(const ArrayRec& other) const = 0;
    /// Appends its text.
    virtual void printOn(GrowString& out) const = 0;
};

/// An array that owns its records. It takes over every record it is handed, also
/// when it refuses it or an exception leaves the call: a record that is not kept
/// is deleted. Null records are ignored.
///
/// After sort() the array is in sorted mode, where intern() finds its place by
/// halving. It stays there until a record is put where the order does not hold.
/// Pointers to records live until the record is replaced or the array emptied.
class VEKDB_PUBLIC Array {
public:
    Array() noexcept = default;
    Array(const Array&) = delete;
    Array& operator=(const Array&) = delete;
    virtual ~Array();

    /// Deletes all records, leaves sorted mode and makes room for this many.
    void init(unsigned room = 0);

    /// Puts the records in the order of their comparison, equal ones in the order
    /// they stood in.
    void sort();

    /// Keeps the record unless an equal one is there, and tells the index of the
    /// one that is kept. Answers whether it is the given record.
    bool intern(ArrayRec* record, unsigned& index);

    /// Puts the record behind all others.
    void appendDatum(ArrayRec* record);

    /// Puts the record before the one at the index; at the end when there is none.
    void insertDatum(ArrayRec* record, unsigned index);

    /// False, changing nothing, when there is no record at the index.
    bool replaceDatum(unsigned index, ArrayRec* record);

    /// Each record in turn, a comma and a blank between them.
    void printOn(GrowString& out) const;

    /// How many records there are, and whether it is in sorted mode.
    unsigned size() const noexcept { return count_; }
    bool isSorted() const noexcept { return sorted_; }

    /// Null when there is no record at the index.
    ArrayRec* datum(unsigned index) const noexcept {
        return index < count_ ? records_[index] : nullptr;
    }

    /// Finds an equal record; index is its place, or in sorted mode the place
    /// where it would go.
    bool find(const ArrayRec& record, unsigned& index) const;

private:
    class Owned;

    void reserve(unsigned room);
    void put(Owned& record, unsigned index);
    bool isInOrderAt(unsigned index) const;
    void deleteRecords() noexcept;

    ArrayRec** records_ = nullptr;
    unsigned count_ = 0;
    unsigned capacity_ = 0;
    bool sorted_ = false;
};

/// An array that is always sorted and has no two equal records.
class VEKDB_PUBLIC Set : private Array {
public:
    Set() { init(); }

    /// Deletes all records and makes room for this many.
    void init(unsigned room = 0);

    using Array::datum;
    using Array::find;
    using Array::intern;
    using Array::printOn;
    using Array::size;

protected:
    /// Puts a record behind all others; requires that it is greater than they are.
    void appendGreatest(ArrayRec* record) { appendDatum(record); }
};
