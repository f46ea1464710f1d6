#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <vekdb/arrow/c_data.h>
#include "arrow/column_bytes.h"

/// A batch of so many rows with room for its columns. Each column that was filled in has a release
/// of its own, and the batch's releases those that nobody took.
class OwnedBatch {
public:
    explicit OwnedBatch(std::size_t columns);
    ~OwnedBatch();
    OwnedBatch(const OwnedBatch&) = delete;
    OwnedBatch& operator=(const OwnedBatch&) = delete;

    ArrowArray& column(std::size_t i) { return columns_[i]; }
    /// Gives the batch away; this ends with the release of `out`.
    static void handOver(OwnedBatch* batch, std::size_t rows, ArrowArray& out) noexcept;

private:
    static void release(ArrowArray* array);

    std::vector<ArrowArray> columns_;
    std::vector<ArrowArray*> places_;
    const void* noValidity_ = nullptr;
};

/// Fills a column without nulls in, with one buffer of values or with two.
void makeColumn(ColumnBytes first, ColumnBytes second, std::size_t rows, ArrowArray& out);
void makeColumn(ColumnBytes values, std::size_t rows, ArrowArray& out);
