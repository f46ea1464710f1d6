#include "arrow/owned_array.h"

#include <utility>

namespace {

// What a column points to. Buffers are never null, also those without a byte: not every reader of
// Arrow takes a null there.
struct ColumnParts {
    ColumnBytes bytes[2];
    const void* buffers[3] = {};
};

void releaseColumn(ArrowArray* array) {
    delete static_cast<ColumnParts*>(array->private_data);
    array->release = nullptr;
}

void makeColumnOf(ColumnParts* parts, int buffers, std::size_t rows, ArrowArray& out) {
    for (int i = 1; i < buffers; ++i) parts->buffers[i] = parts->bytes[i - 1].data();
    out = {};
    out.length = static_cast<std::int64_t>(rows);
    out.n_buffers = buffers;
    out.buffers = parts->buffers;
    out.release = releaseColumn;
    out.private_data = parts;
}

}  // namespace

void makeColumn(ColumnBytes first, ColumnBytes second, std::size_t rows, ArrowArray& out) {
    first.reserve(1);
    second.reserve(1);
    makeColumnOf(new ColumnParts{{std::move(first), std::move(second)}, {}}, 3, rows, out);
}

void makeColumn(ColumnBytes values, std::size_t rows, ArrowArray& out) {
    values.reserve(1);
    makeColumnOf(new ColumnParts{{std::move(values), {}}, {}}, 2, rows, out);
}

OwnedBatch::OwnedBatch(std::size_t columns) : columns_(columns), places_(columns) {
    for (std::size_t i = 0; i < columns; ++i) places_[i] = &columns_[i];
}

OwnedBatch::~OwnedBatch() {
    for (ArrowArray& column : columns_) {
        if (column.release != nullptr) column.release(&column);
    }
}

void OwnedBatch::release(ArrowArray* array) {
    delete static_cast<OwnedBatch*>(array->private_data);
    array->release = nullptr;
}

void OwnedBatch::handOver(OwnedBatch* batch, std::size_t rows, ArrowArray& out) noexcept {
    out = {};
    out.length = static_cast<std::int64_t>(rows);
    out.n_buffers = 1;
    out.n_children = static_cast<std::int64_t>(batch->columns_.size());
    out.buffers = &batch->noValidity_;
    out.children = batch->places_.empty() ? nullptr : batch->places_.data();
    out.release = release;
    out.private_data = batch;
}
