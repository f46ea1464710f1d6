#include <algorithm>
#include <utility>

#include "host/posix/large_pages.h"
#include "vekdb/record/line_store.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace {

constexpr std::size_t largestChunk = std::size_t{16} << 20;

#if defined(__SSE2__)

constexpr unsigned wide = 8;  // lengths in a register

__m128i load(const std::uint16_t* from) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}

// Raises as many lengths as a register has to those of the values that end here.
void raiseWide(std::uint16_t* lengths, const std::uint16_t* ends, unsigned gap) {
    const __m128i fromEndToEnd = _mm_sub_epi16(load(ends), load(ends - 1));
    const __m128i found = _mm_sub_epi16(fromEndToEnd, _mm_set1_epi16(static_cast<short>(gap)));
    const __m128i known = load(lengths);
    const __m128i larger = _mm_add_epi16(known, _mm_subs_epu16(found, known));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(lengths), larger);
}

#endif

void raiseTo(std::uint16_t& length, unsigned found) {
    length = std::max(length, static_cast<std::uint16_t>(found));
}

}  // namespace

// The last wide step may see lengths a second time, which changes nothing.
void LineSlices::raiseLengths(std::uint16_t* lengths, unsigned values) const {
    if (values == 0) return;
    const std::uint16_t* const ends = next();
    raiseTo(lengths[0], ends[0] - gap());
#if defined(__SSE2__)
    if (values > wide) {
        for (unsigned i = 1; i + wide < values; i += wide) raiseWide(lengths + i, ends + i, gap());
        return raiseWide(lengths + values - wide, ends + values - wide, gap());
    }
#endif
    for (unsigned i = 1; i < values; ++i) raiseTo(lengths[i], ends[i] - ends[i - 1] - gap());
}

void LineSlices::views(std::string_view* values, unsigned count) const {
    const char* const base = first();
    const std::uint16_t* const ends = next();
    const std::size_t apart = gap();
    std::size_t from = 0;
    for (unsigned i = 0; i < count; ++i) {
        const std::size_t behind = ends[i];
        values[i] = {base + from, behind - from - apart};
        from = behind;
    }
}

LineStore::LineStore(Quor::Ptr<TextBlock> text) : block_(std::move(text)), text_(block_->data()) {}

LineStore::~LineStore() {
    while (chunks_ != nullptr) {
        FillingBlock* next = chunks_->next();
        FillingBlock::free(chunks_);
        chunks_ = next;
    }
}

void LineStore::expect(std::size_t bytes) noexcept {
    nextChunk_ = std::clamp(bytes, nextChunk_, largestChunk);
}

void LineStore::addChunk(std::size_t atLeast) {
    chunks_ = FillingBlock::allocate(std::max(atLeast, nextChunk_), chunks_);
    free_ = chunks_->begin();
    end_ = chunks_->end();
    nextChunk_ = std::min(nextChunk_ * 2, largestChunk);
}
