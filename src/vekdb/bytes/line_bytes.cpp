#include "vekdb/bytes/line_bytes.h"

#include <cstdint>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

unsigned classifyBlocksNarrowly(const char* at, unsigned blocks, ByteMasks* to) {
    for (unsigned i = 0; i < blocks; ++i) {
        to[i] = LineBytes::classify(at + 64 * i);
        if (to[i].others != 0) return i + 1;
    }
    return blocks;
}

#if defined(__x86_64__)

namespace {

// Starts to fetch what comes soon; behind the end of the text that does no harm. Another processor
// may just have written it.
inline void expect(const char* at) {
    constexpr std::uintptr_t ahead = 1024;
    _mm_prefetch(reinterpret_cast<const char*>(reinterpret_cast<std::uintptr_t>(at) + ahead),
                 _MM_HINT_T0);
}

struct Half {
    __m256i bytes;
};

[[gnu::target("avx2")]] inline Half loadHalf(const char* at) {
    return {_mm256_loadu_si256(reinterpret_cast<const __m256i*>(at))};
}

[[gnu::target("avx2")]] inline std::uint64_t bits(__m256i truths) {
    return static_cast<unsigned>(_mm256_movemask_epi8(truths));
}

[[gnu::target("avx2")]] inline std::uint64_t equal(Half half, char c) {
    return bits(_mm256_cmpeq_epi8(half.bytes, _mm256_set1_epi8(c)));
}

[[gnu::target("avx2")]] inline std::uint64_t others(Half half) {
    const __m256i mostBelow = _mm256_set1_epi8(' ' - 1);
    const __m256i below = _mm256_cmpeq_epi8(_mm256_min_epu8(half.bytes, mostBelow), half.bytes);
    const __m256i backslash = _mm256_cmpeq_epi8(half.bytes, _mm256_set1_epi8('\\'));
    return bits(_mm256_or_si256(below, backslash));
}

[[gnu::target("avx2")]] unsigned classifyBlocksWidely(const char* at, unsigned blocks,
                                                      ByteMasks* to) {
    for (unsigned i = 0; i < blocks; ++i, at += 64) {
        expect(at);
        const Half low = loadHalf(at);
        const Half high = loadHalf(at + 32);
        to[i] = {equal(low, '"') | equal(high, '"') << 32, equal(low, ',') | equal(high, ',') << 32,
                 equal(low, ' ') | equal(high, ' ') << 32, others(low) | others(high) << 32};
        if (to[i].others != 0) return i + 1;
    }
    return blocks;
}

[[gnu::target("avx512bw")]] unsigned classifyBlocksWidest(const char* at, unsigned blocks,
                                                          ByteMasks* to) {
    const __m512i blank = _mm512_set1_epi8(' ');
    for (unsigned i = 0; i < blocks; ++i, at += 64) {
        expect(at);
        const __m512i bytes = _mm512_loadu_si512(at);
        const std::uint64_t below = _mm512_cmplt_epu8_mask(bytes, blank);
        to[i] = {_mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8('"')),
                 _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8(',')),
                 _mm512_cmpeq_epi8_mask(bytes, blank),
                 below | _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8('\\'))};
        if (to[i].others != 0) return i + 1;
    }
    return blocks;
}

}  // namespace

#endif

ClassifyBlocks* classifyBlocksIn(unsigned registerBytes) {
#if defined(__x86_64__)
    if (registerBytes == 64 && __builtin_cpu_supports("avx512bw")) return classifyBlocksWidest;
    if (registerBytes == 32 && __builtin_cpu_supports("avx2")) return classifyBlocksWidely;
#endif
    return registerBytes == 16 ? classifyBlocksNarrowly : nullptr;
}

namespace {

ClassifyBlocks* widest() {
    if (ClassifyBlocks* way = classifyBlocksIn(64)) return way;
    if (ClassifyBlocks* way = classifyBlocksIn(32)) return way;
    return classifyBlocksNarrowly;
}

// Null before it is known.
ClassifyBlocks* const best = widest();

}  // namespace

unsigned classifyBlocks(const char* at, unsigned blocks, ByteMasks* to) {
    return (best != nullptr ? best : classifyBlocksNarrowly)(at, blocks, to);
}
