#include "arrow/column_bytes.h"

#include <algorithm>
#include <cstdint>

namespace {

constexpr std::size_t least = 1024;

char* alignedUp(char* at) {
    const auto place = reinterpret_cast<std::uintptr_t>(at);
    return at + (-place & (ColumnBytes::alignment - 1));
}

}  // namespace

void ColumnBytes::swap(ColumnBytes& other) noexcept {
    std::swap(block_, other.block_);
    std::swap(data_, other.data_);
    std::swap(size_, other.size_);
    std::swap(room_, other.room_);
}

void ColumnBytes::grow(std::size_t atLeast) {
    const std::size_t room = std::max({atLeast, room_ * 2, least});
    std::unique_ptr<char[]> block(new char[room + alignment]);
    char* const data = alignedUp(block.get());
    if (size_ > 0) std::memcpy(data, data_, size_);
    block_ = std::move(block);
    data_ = data;
    room_ = room;
}
