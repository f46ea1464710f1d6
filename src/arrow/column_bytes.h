#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

/// A buffer of a column: bytes behind each other in memory that begins where processors like it to,
/// at a multiple of 64. What was not written is not cleared.
class ColumnBytes {
public:
    static constexpr std::size_t alignment = 64;

    ColumnBytes() = default;
    ColumnBytes(ColumnBytes&& other) noexcept { swap(other); }
    ColumnBytes& operator=(ColumnBytes&& other) noexcept {
        ColumnBytes taken(std::move(other));
        swap(taken);
        return *this;
    }

    /// Never null once there was room for anything.
    char* data() const { return data_; }
    std::size_t size() const { return size_; }
    std::string_view view() const { return {data_, size_}; }

    void reserve(std::size_t bytes) {
        if (bytes > room_) grow(bytes);
    }
    void append(std::string_view bytes) {
        if (bytes.empty()) return;
        if (room_ - size_ < bytes.size()) grow(size_ + bytes.size());
        std::memcpy(data_ + size_, bytes.data(), bytes.size());
        size_ += bytes.size();
    }
    template <class Number>
    void appendNumber(Number number) {
        append({reinterpret_cast<const char*>(&number), sizeof number});
    }
    void clear() { size_ = 0; }

private:
    void swap(ColumnBytes& other) noexcept;
    void grow(std::size_t atLeast);

    std::unique_ptr<char[]> block_;
    char* data_ = nullptr;  // in it
    std::size_t size_ = 0;
    std::size_t room_ = 0;
};
