#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

/// The bytes of a record line that mean something, found byte by byte or, where the machine has
/// wide registers, many at a time. All ways give the same results.

/// Which of 64 bytes are of which kind, a bit each.
struct ByteMasks {
    std::uint64_t quotes = 0;
    std::uint64_t commas = 0;
    std::uint64_t blanks = 0;
    std::uint64_t others = 0;  // backslashes and the control characters below the blank
};

class PlainBytes {
public:
    /// Sorts 64 bytes.
    static ByteMasks classify(const char* at) {
        ByteMasks found;
        for (unsigned i = 0; i < 64; ++i) {
            found.quotes |= std::uint64_t{at[i] == '"'} << i;
            found.commas |= std::uint64_t{at[i] == ','} << i;
            found.blanks |= std::uint64_t{at[i] == ' '} << i;
            found.others |= std::uint64_t{at[i] == '\\' || isBelowBlank(at[i])} << i;
        }
        return found;
    }

    /// Copies bytes, at most `n`, up to one that ends a run of ordinary ones: a backslash, a
    /// double quote or, outside quotes, a comma. How many were copied. `to` may stand in the
    /// same text, not behind `from`.
    static std::size_t copyRun(const char* from, std::size_t n, char* to, bool quoted) {
        std::size_t i = 0;
        for (; i < n && !endsRun(from[i], quoted); ++i) {
            to[i] = from[i];
        }
        return i;
    }

    /// How many of `n` bytes stand before the first that cannot be written as it is: a double
    /// quote or a character below the blank.
    static std::size_t writableRun(const char* from, std::size_t n) {
        std::size_t i = 0;
        while (i < n && from[i] != '"' && !isBelowBlank(from[i])) ++i;
        return i;
    }

private:
    static bool isBelowBlank(char c) { return static_cast<unsigned char>(c) < ' '; }
    static bool endsRun(char c, bool quoted) {
        return c == '"' || c == '\\' || (c == ',' && !quoted);
    }
};

#if defined(__SSE2__)

class WideBytes {
public:
    static ByteMasks classify(const char* at) {
        ByteMasks found;
        for (unsigned i = 0; i < 64; i += width) {
            const __m128i bytes = load(at + i);
            const __m128i others = _mm_or_si128(equal(bytes, '\\'), belowBlank(bytes));
            found.quotes |= std::uint64_t{bits(equal(bytes, '"'))} << i;
            found.commas |= std::uint64_t{bits(equal(bytes, ','))} << i;
            found.blanks |= std::uint64_t{bits(equal(bytes, ' '))} << i;
            found.others |= std::uint64_t{bits(others)} << i;
        }
        return found;
    }

    static std::size_t copyRun(const char* from, std::size_t n, char* to, bool quoted) {
        std::size_t done = 0;
        for (; done + width <= n; done += width) {
            const __m128i bytes = load(from + done);
            if (const unsigned ends = runEnds(bytes, quoted)) {
                n = done + static_cast<std::size_t>(std::countr_zero(ends));
                break;
            }
            _mm_storeu_si128(reinterpret_cast<__m128i*>(to + done), bytes);
        }
        return done + PlainBytes::copyRun(from + done, n - done, to + done, quoted);
    }

    // The last look may see bytes a second time; they hold nothing then.
    static std::size_t writableRun(const char* from, std::size_t n) {
        if (n < width) return PlainBytes::writableRun(from, n);
        for (std::size_t done = 0;; done += width) {
            if (done + width > n) done = n - width;
            if (const unsigned found = escapes(load(from + done))) {
                return done + static_cast<std::size_t>(std::countr_zero(found));
            }
            if (done + width == n) return n;
        }
    }

private:
    static constexpr unsigned width = 16;

    static __m128i load(const char* at) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
    }
    static __m128i equal(__m128i bytes, char c) { return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(c)); }
    static __m128i belowBlank(__m128i bytes) {
        return _mm_cmpeq_epi8(_mm_min_epu8(bytes, _mm_set1_epi8(' ' - 1)), bytes);
    }
    static unsigned bits(__m128i truths) {
        return static_cast<unsigned>(_mm_movemask_epi8(truths));
    }
    static unsigned runEnds(__m128i bytes, bool quoted) {
        const __m128i ends = _mm_or_si128(equal(bytes, '"'), equal(bytes, '\\'));
        return quoted ? bits(ends) : bits(_mm_or_si128(ends, equal(bytes, ',')));
    }
    static unsigned escapes(__m128i bytes) {
        return bits(_mm_or_si128(equal(bytes, '"'), belowBlank(bytes)));
    }
};

using LineBytes = WideBytes;

#else

using LineBytes = PlainBytes;

#endif

/// Sorts blocks of 64 bytes, one behind the other, up to the first that holds one of the others.
/// How many blocks were sorted.
using ClassifyBlocks = unsigned(const char* at, unsigned blocks, ByteMasks* to);
/// In the widest registers that the machine has.
ClassifyBlocks classifyBlocks;
/// In the registers that every machine of its kind has.
ClassifyBlocks classifyBlocksNarrowly;
/// In registers of 16, 32 or 64 bytes; null where the machine has none of these.
ClassifyBlocks* classifyBlocksIn(unsigned registerBytes);
