#pragma once

#include <cstddef>

#include <vekdb/host/lightweight_string.h>
#include <vekdb/host/visibility.h>

/// The row numbers that a notice of deletion tells, in the order in which they are told.
class VEKDB_PUBLIC RowNumbers {
public:
    RowNumbers() noexcept {}
    RowNumbers(const RowNumbers&) = delete;
    RowNumbers& operator=(const RowNumbers&) = delete;
    ~RowNumbers();

    /// Makes room for this many numbers in all. Throws BadAlloc and stays as it was.
    void reserve(std::size_t room);
    /// Appends one. Throws BadAlloc and stays as it was.
    void append(int row);
    /// Appends n numbers from `first` up, all or none.
    void appendRun(int first, int n);

    /// How many there are, and each, which must be below that.
    std::size_t size() const noexcept { return size_; }
    int operator[](std::size_t i) const noexcept { return rows_[i]; }

    /// Each number in decimal with a blank behind it.
    LightweightString<char> text() const;

private:
    int* rows_ = few_;
    std::size_t size_ = 0;
    std::size_t room_ = sizeof few_ / sizeof few_[0];
    int few_[16];
};
