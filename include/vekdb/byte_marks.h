#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#include <vekdb/host/visibility.h>

/// Finds the few bytes of a text that mean something among the many that do not: separators,
/// quotes, ends of lines. Looks at 64 bytes at once, in the widest registers that the machine has.
class VEKDB_PUBLIC ByteMarks {
public:
    using Kinds = std::array<char, 4>;  ///< fewer kinds: one of them more than once

    /// Looks from `begin` up to `end` for bytes of these kinds. The text is borrowed.
    ByteMarks(const char* begin, const char* end, const Kinds& kinds);

    /// Looks for the same kinds in another text.
    void goOn(const char* begin, const char* end) {
        block_ = begin;
        end_ = end;
        marks_ = look();
    }

    /// How many bytes of a text are of these kinds.
    static std::size_t count(const char* begin, const char* end, const Kinds& kinds);

    /// The first marked byte from `at` on, or the text's end. `at` is never before that of an
    /// earlier call. What stands before it may have been changed since, but nothing behind.
    const char* next(const char* at) {
        for (;;) {
            const auto passed = static_cast<std::size_t>(at - block_);
            if (passed < blockSize) {
                const std::uint64_t left = marks_ >> passed;
                if (left != 0) return at + std::countr_zero(left);
                at = block_ + blockSize;
            }
            if (at >= end_) return end_;
            block_ = at;
            marks_ = look();
        }
    }

private:
    static constexpr std::size_t blockSize = 64;

    std::uint64_t look() const;

    const char* block_;
    const char* end_;
    Kinds kinds_;
    std::uint64_t marks_ = 0;  // a bit for each byte of the block
    std::uint64_t (*find_)(const char* block, const Kinds& kinds);
};
