#include <vekdb/host/row_numbers.h>

#include <algorithm>
#include <charconv>

RowNumbers::~RowNumbers() {
    if (rows_ != few_) OS()->allocator()->free(rows_);
}

void RowNumbers::reserve(std::size_t room) {
    if (room <= room_) return;
    auto* rows = static_cast<int*>(OS()->allocator()->allocate(room * sizeof(int)));
    std::copy_n(rows_, size_, rows);
    if (rows_ != few_) OS()->allocator()->free(rows_);
    rows_ = rows;
    room_ = room;
}

void RowNumbers::append(int row) {
    if (size_ == room_) reserve(2 * room_);
    rows_[size_++] = row;
}

void RowNumbers::appendRun(int first, int n) {
    reserve(size_ + static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) append(first + i);
}

LightweightString<char> RowNumbers::text() const {
    LightweightString<char> text;
    for (std::size_t i = 0; i < size_; ++i) {
        char digits[16];
        char* end = std::to_chars(digits, digits + sizeof digits, rows_[i]).ptr;
        *end++ = ' ';
        text.append(digits, static_cast<std::size_t>(end - digits));
    }
    return text;
}
