#include "vekdb/bytes/value_cuts.h"

#include <bit>
#include <cstddef>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

std::uint16_t* cutValuesNarrowly(char* line, const std::uint64_t* openings, unsigned words,
                                 std::uint16_t* places) {
    for (unsigned word = 0; word < words; ++word) {
        for (std::uint64_t left = openings[word]; left != 0; left &= left - 1) {
            const std::size_t place =
                std::size_t{word} * 64 + static_cast<std::size_t>(std::countr_zero(left));
            line[place - 2] = '\0';
            *places++ = static_cast<std::uint16_t>(place);
        }
    }
    return places;
}

#if defined(__x86_64__)

namespace {

constexpr char countUp[64] = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15,
                              16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31,
                              32, 33, 34, 35, 36, 37, 38, 39, 40, 41, 42, 43, 44, 45, 46, 47,
                              48, 49, 50, 51, 52, 53, 54, 55, 56, 57, 58, 59, 60, 61, 62, 63};

// A word marks 22 openings at most, whose places fill half a register.
[[gnu::target("avx512bw,avx512vbmi2,popcnt")]] std::uint16_t* cutWidely(
    char* line, const std::uint64_t* openings, unsigned words, std::uint16_t* places) {
    const __m512i upwards = _mm512_loadu_si512(countUp);
    for (unsigned word = 0; word < words; ++word) {
        const std::uint64_t marks = openings[word];
        const auto first = static_cast<short>(word * 64);
        _mm512_mask_storeu_epi8(line + first - 2, marks, _mm512_setzero_si512());
        const auto count = static_cast<unsigned>(_mm_popcnt_u64(marks));
        const __mmask32 found = (1u << count) - 1;
        const __m512i picked = _mm512_maskz_compress_epi8(marks, upwards);
        const __m512i wide =
            _mm512_maskz_cvtepu8_epi16(found, _mm512_maskz_extracti64x4_epi64(0xF, picked, 0));
        _mm512_mask_storeu_epi16(places, found, _mm512_add_epi16(wide, _mm512_set1_epi16(first)));
        places += count;
    }
    return places;
}

}  // namespace

#endif

CutValues* cutValuesWidest() {
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx512vbmi2") && __builtin_cpu_supports("avx512bw")) {
        return cutWidely;
    }
#endif
    return nullptr;
}

namespace {

// Null before it is known.
CutValues* const best = cutValuesWidest();

}  // namespace

std::uint16_t* cutValues(char* line, const std::uint64_t* openings, unsigned words,
                         std::uint16_t* places) {
    return (best != nullptr ? best : cutValuesNarrowly)(line, openings, words, places);
}
