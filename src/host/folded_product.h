#pragma once

#include <cstdint>

/// Both halves of a product of 128 bits laid over each other, so that every bit of a factor counts.
/// This one needs no numbers wider than 64 bits.
constexpr std::uint64_t foldedProductByHalves(std::uint64_t a, std::uint64_t b) noexcept {
    constexpr std::uint64_t half = 0xFFFFFFFF;
    const std::uint64_t low = (a & half) * (b & half);
    const std::uint64_t crossed = (a >> 32) * (b & half);
    const std::uint64_t middle = (a & half) * (b >> 32) + (low >> 32) + (crossed & half);
    const std::uint64_t high = (a >> 32) * (b >> 32) + (crossed >> 32) + (middle >> 32);
    return high ^ (middle << 32 | (low & half));
}

constexpr std::uint64_t foldedProduct(std::uint64_t a, std::uint64_t b) noexcept {
#ifdef __SIZEOF_INT128__
    __extension__ using Wide = unsigned __int128;
    const Wide product = static_cast<Wide>(a) * b;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
#else
    return foldedProductByHalves(a, b);
#endif
}
