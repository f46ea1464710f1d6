#include "vekdb/bytes/marks_in_registers.h"

#include <bit>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace {

using Kinds = ByteMarks::Kinds;

constexpr std::size_t blockBytes = 64;

// The marks of a block of which only so many bytes belong to the text. Behind them stand copies of
// nothing that is looked for.
template <class FindIn>
inline std::uint64_t findShort(const char* block, std::size_t size, const Kinds& kinds,
                               FindIn find) {
    char padded[blockBytes] = {};
    std::memcpy(padded, block, size);
    return find(padded, kinds) & ((std::uint64_t{1} << size) - 1);
}

// The last block of a longer text overlaps the one before; its first bytes were counted there.
template <class FindIn>
inline std::size_t countBlocks(const char* at, std::size_t size, const Kinds& kinds, FindIn find) {
    std::size_t found = 0;
    const bool isShort = size < blockBytes;
    for (; size >= blockBytes; at += blockBytes, size -= blockBytes) {
        found += static_cast<std::size_t>(std::popcount(find(at, kinds)));
    }
    if (size == 0) return found;
    const std::uint64_t last = isShort ? findShort(at, size, kinds, find)
                                       : find(at + size - blockBytes, kinds) >> (blockBytes - size);
    return found + static_cast<std::size_t>(std::popcount(last));
}

#if defined(__x86_64__)

inline __m128i either(__m128i a, __m128i b) {
    return _mm_or_si128(a, b);
}

// SSE2, which every machine of this kind has.
std::uint64_t findNarrowly(const char* block, const Kinds& kinds) {
    std::uint64_t marks = 0;
    for (unsigned i = 0; i < 64; i += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(block + i));
        const auto equal = [&](char c) { return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(c)); };
        const __m128i found = either(either(equal(kinds[0]), equal(kinds[1])),
                                     either(equal(kinds[2]), equal(kinds[3])));
        marks |= std::uint64_t{static_cast<unsigned>(_mm_movemask_epi8(found))} << i;
    }
    return marks;
}

[[gnu::target("avx2")]] inline std::uint64_t findHalf(const char* half, const Kinds& kinds) {
    const __m256i bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(half));
    __m256i found = _mm256_cmpeq_epi8(bytes, _mm256_set1_epi8(kinds[0]));
    for (unsigned i = 1; i < 4; ++i) {
        const __m256i more = _mm256_cmpeq_epi8(bytes, _mm256_set1_epi8(kinds[i]));
        found = _mm256_or_si256(found, more);
    }
    return static_cast<unsigned>(_mm256_movemask_epi8(found));
}

[[gnu::target("avx2")]] std::uint64_t findWidely(const char* block, const Kinds& kinds) {
    return findHalf(block, kinds) | findHalf(block + 32, kinds) << 32;
}

[[gnu::target("avx2,popcnt")]] std::size_t countWidely(const char* at, std::size_t size,
                                                       const Kinds& kinds) {
    return countBlocks(at, size, kinds, findWidely);
}

bool isWide() {
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("popcnt");
}

FindMarks* findIn(unsigned registerBytes) {
    if (registerBytes == 32 && isWide()) return findWidely;
    return registerBytes == 16 ? findNarrowly : nullptr;
}

FindMarks* findInWidest() {
    return isWide() ? findWidely : findNarrowly;
}

std::size_t countInWidest(const char* at, std::size_t size, const Kinds& kinds) {
    return isWide() ? countWidely(at, size, kinds) : countBlocks(at, size, kinds, findNarrowly);
}

#else

std::uint64_t findPlainly(const char* block, const Kinds& kinds) {
    std::uint64_t marks = 0;
    for (unsigned i = 0; i < 64; ++i) {
        const char c = block[i];
        const bool is = c == kinds[0] || c == kinds[1] || c == kinds[2] || c == kinds[3];
        marks |= std::uint64_t{is} << i;
    }
    return marks;
}

FindMarks* findIn(unsigned registerBytes) {
    return registerBytes == 16 ? findPlainly : nullptr;
}

FindMarks* findInWidest() {
    return findPlainly;
}

std::size_t countInWidest(const char* at, std::size_t size, const Kinds& kinds) {
    return countBlocks(at, size, kinds, findPlainly);
}

#endif

}  // namespace

FindMarks* findMarksIn(unsigned registerBytes) {
    return findIn(registerBytes);
}

ByteMarks::ByteMarks(const char* begin, const char* end, const Kinds& kinds)
    : block_(begin), end_(end), kinds_(kinds), find_(findInWidest()) {
    marks_ = look();
}

std::uint64_t ByteMarks::look() const {
    const auto left = static_cast<std::size_t>(end_ - block_);
    return left >= blockSize ? find_(block_, kinds_) : findShort(block_, left, kinds_, find_);
}

std::size_t ByteMarks::count(const char* begin, const char* end, const Kinds& kinds) {
    return countInWidest(begin, static_cast<std::size_t>(end - begin), kinds);
}
