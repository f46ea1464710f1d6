#include <vekdb/host/text_search.h>

#include <vekdb/host/text_util.h>
#include "host/text_finder.h"

#include <algorithm>
#include <array>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace TextSearch {

namespace {

constexpr unsigned kFlags = eMatchCase | eMatchTimecode;

constexpr bool isLetter(unsigned char c) {
    return asciiLower(c) >= 'a' && asciiLower(c) <= 'z';
}

constexpr bool isSeparator(unsigned char c) {
    return c == ':' || c == ';' || c == '.' || c == ',';
}

constexpr unsigned char folded(unsigned char c, unsigned flags) {
    if ((flags & eMatchTimecode) != 0 && isSeparator(c)) {
        return ':';
    }
    return (flags & eMatchCase) != 0 ? c : asciiLower(c);
}

using FoldTable = std::array<unsigned char, 256>;

constexpr FoldTable foldTable(unsigned flags) {
    FoldTable table{};
    for (unsigned c = 0; c < table.size(); ++c) {
        table[c] = folded(static_cast<unsigned char>(c), flags);
    }
    return table;
}

constexpr std::array<FoldTable, 4> kFold{foldTable(0), foldTable(1), foldTable(2), foldTable(3)};

// With these bits set, a byte and all that it equals under the flags are one
// value. It may be the value of a few others too.
constexpr std::uint8_t bitsToSet(unsigned char c, unsigned flags) {
    if ((flags & eMatchTimecode) != 0 && isSeparator(c)) {
        return (':' ^ ';') | (':' ^ '.') | (':' ^ ',');
    }
    return (flags & eMatchCase) == 0 && isLetter(c) ? 'a' ^ 'A' : 0;
}

// How often a byte is to be expected in a log, most often first; what is not
// here is rare.
constexpr std::string_view kCommon = " 0e1taoinsr2lhd:345c6um7f8pgw9yb.,-/vk;_xjqz";

std::size_t rarity(char c) {
    const std::size_t place = kCommon.find(asciiLower(c));
    return place == std::string_view::npos ? kCommon.size() : place;
}

std::size_t rarestPlace(std::string_view term, std::size_t otherThan) {
    std::size_t best = otherThan == 0 && term.size() > 1 ? 1 : 0;
    for (std::size_t i = best + 1; i < term.size(); ++i) {
        if (i != otherThan && rarity(term[i]) > rarity(term[best])) {
            best = i;
        }
    }
    return best;
}

const Criterion::Filter& filterOf(const Needle& needle) {
    return needle.anchors.filters[needle.flags];
}

bool standsAt(std::string_view text, std::size_t place, const Needle& needle) {
    return equals(text.substr(place, needle.term.size()), needle.term, needle.flags);
}

#if defined(__x86_64__)

// Whether the term stands at one of the places, counted from this one on, whose
// bits are set.
bool standsAmong(std::string_view text, std::size_t from, std::uint64_t places,
                 const Needle& needle) {
    for (; places != 0; places &= places - 1) {
        const auto place = static_cast<unsigned>(__builtin_ctzll(places));
        if (standsAt(text, from + place, needle)) {
            return true;
        }
    }
    return false;
}

constexpr std::size_t kWide = 16;

template <class Word>
std::uint64_t loadWord(const char* from) {
    Word word;
    std::memcpy(&word, from, sizeof word);
    return word;
}

// Fewer than 8 bytes, zeros behind them; none behind the last is touched.
std::uint64_t loadShort(const char* from, std::size_t size) {
    if (size >= 4) {
        return loadWord<std::uint32_t>(from) | loadWord<std::uint32_t>(from + size - 4)
                                                   << (8 * (size - 4));
    }
    std::uint64_t bytes = 0;
    for (std::size_t i = size; i-- > 0;) {
        bytes = bytes << 8 | static_cast<unsigned char>(from[i]);
    }
    return bytes;
}

// The next 16 bytes, or as many as there are with zeros behind them.
__m128i load(const char* from, std::size_t size) {
    if (size >= kWide) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    }
    if (size < 8) {
        return _mm_cvtsi64_si128(static_cast<long long>(loadShort(from, size)));
    }
    const std::uint64_t low = loadWord<std::uint64_t>(from);
    const std::uint64_t last = loadWord<std::uint64_t>(from + size - 8);
    const std::uint64_t high = size == 8 ? 0 : last >> (8 * (kWide - size));
    return _mm_set_epi64x(static_cast<long long>(high), static_cast<long long>(low));
}

// Tells which of 16 neighbouring bytes pass one half of a filter.
class WideFilter {
public:
    WideFilter(const Criterion::Filter& filter, unsigned half)
        : setBits_(_mm_set1_epi8(static_cast<char>(filter.setBits[half]))),
          expected_(_mm_set1_epi8(static_cast<char>(filter.expected[half]))) {}

    __m128i operator()(__m128i bytes) const {
        return _mm_cmpeq_epi8(_mm_or_si128(bytes, setBits_), expected_);
    }

private:
    __m128i setBits_;
    __m128i expected_;
};

// Looks for the term at 16 places of a text in one step.
class WideSearch {
public:
    WideSearch(std::string_view text, const Needle& needle)
        : text_(text), needle_(needle), first_(filterOf(needle), 0), second_(filterOf(needle), 1) {}

    bool found() const {
        const std::size_t places = text_.size() - needle_.term.size() + 1;
        for (std::size_t i = 0; i < places; i += kWide) {
            if (standsAmong(text_, i, candidates(i, places - i), needle_)) {
                return true;
            }
        }
        return false;
    }

private:
    __m128i bytesFor(unsigned half, std::size_t place) const {
        const std::size_t at = place + needle_.anchors.places[half];
        return load(text_.data() + at, text_.size() - at);
    }

    // A bit for each place, from this one on, where the term may stand.
    unsigned candidates(std::size_t place, std::size_t places) const {
        const __m128i both = _mm_and_si128(first_(bytesFor(0, place)), second_(bytesFor(1, place)));
        const auto bits = static_cast<unsigned>(_mm_movemask_epi8(both));
        return places >= kWide ? bits : bits & ((1u << places) - 1);
    }

    std::string_view text_;
    const Needle& needle_;
    WideFilter first_;
    WideFilter second_;
};

#endif

}  // namespace

Criterion::Anchors anchorsOf(std::string_view term) {
    Criterion::Anchors anchors;
    const std::size_t rarest = rarestPlace(term, std::string_view::npos);
    const std::size_t places[2] = {rarest, rarestPlace(term, rarest)};
    for (unsigned half = 0; half < 2; ++half) {
        anchors.places[half] = static_cast<std::uint32_t>(places[half]);
        const auto c = static_cast<unsigned char>(term[places[half]]);
        for (unsigned flags = 0; flags <= kFlags; ++flags) {
            const std::uint8_t bits = bitsToSet(c, flags);
            anchors.filters[flags].setBits[half] = bits;
            anchors.filters[flags].expected[half] = c | bits;
        }
    }
    return anchors;
}

bool equals(std::string_view a, std::string_view b, unsigned flags) {
    const FoldTable& fold = kFold[flags];
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (fold[static_cast<unsigned char>(a[i])] != fold[static_cast<unsigned char>(b[i])]) {
            return false;
        }
    }
    return true;
}

bool containsPlain(std::string_view text, const Needle& needle) {
    for (std::size_t i = 0; i + needle.term.size() <= text.size(); ++i) {
        if (standsAt(text, i, needle)) {
            return true;
        }
    }
    return false;
}

#if defined(__x86_64__)

namespace {

// Before this is known the narrower steps are taken.
const bool hasMaskedLoads =
    __builtin_cpu_supports("avx512bw") != 0 && __builtin_cpu_supports("avx512vl") != 0 &&
    __builtin_cpu_supports("bmi2") != 0;

}  // namespace

bool canSearchBySixtyFour() {
    return hasMaskedLoads;
}

bool containsBySixteen(std::string_view text, const Needle& needle) {
    return text.size() >= needle.term.size() && WideSearch(text, needle).found();
}

namespace {

constexpr std::size_t kWidest = 64;

// Tells which of the bytes from here on pass one half of a filter. Bytes that
// are masked out are not touched, so nothing depends on where the text ends.
[[gnu::target("avx512bw,bmi2")]] __mmask64 passing(__mmask64 bytes, const char* from,
                                                   const Criterion::Filter& filter, unsigned half) {
    const __m512i setBits = _mm512_set1_epi8(static_cast<char>(filter.setBits[half]));
    const __m512i expected = _mm512_set1_epi8(static_cast<char>(filter.expected[half]));
    const __m512i loaded = _mm512_maskz_loadu_epi8(bytes, from);
    return _mm512_mask_cmpeq_epi8_mask(bytes, _mm512_or_si512(loaded, setBits), expected);
}

// As 16 bytes, which seldom reach into a cache line that the value does not.
[[gnu::target("avx512bw,avx512vl")]] __mmask16 fewPassing(__mmask16 bytes, const char* from,
                                                          const Criterion::Filter& filter,
                                                          unsigned half) {
    const __m128i setBits = _mm_set1_epi8(static_cast<char>(filter.setBits[half]));
    const __m128i expected = _mm_set1_epi8(static_cast<char>(filter.expected[half]));
    const __m128i loaded = _mm_maskz_loadu_epi8(bytes, from);
    return _mm_mask_cmpeq_epi8_mask(bytes, _mm_or_si128(loaded, setBits), expected);
}

[[gnu::target("avx512bw,avx512vl,bmi2")]] bool containsInFew(std::string_view text,
                                                             std::size_t places,
                                                             const Needle& needle) {
    const Criterion::Filter& filter = filterOf(needle);
    const auto here = static_cast<__mmask16>(_bzhi_u32(0xFFFF, static_cast<unsigned>(places)));
    const char* from = text.data();
    const __mmask16 first = fewPassing(here, from + needle.anchors.places[0], filter, 0);
    const __mmask16 both = fewPassing(first, from + needle.anchors.places[1], filter, 1);
    return standsAmong(text, 0, both, needle);
}

// Most long values are looked through in a single step.
[[gnu::target("avx512bw,bmi2")]] bool containsInMany(std::string_view text, std::size_t places,
                                                     const Needle& needle) {
    const Criterion::Filter& filter = filterOf(needle);
    for (std::size_t i = 0; i < places; i += kWidest) {
        const char* from = text.data() + i;
        const auto left = static_cast<unsigned>(std::min(places - i, kWidest));
        const __mmask64 here = _bzhi_u64(~std::uint64_t{0}, left);
        const __mmask64 first = passing(here, from + needle.anchors.places[0], filter, 0);
        const __mmask64 both = passing(first, from + needle.anchors.places[1], filter, 1);
        if (standsAmong(text, i, both, needle)) {
            return true;
        }
    }
    return false;
}

}  // namespace

bool containsBySixtyFour(std::string_view text, const Needle& needle) {
    if (text.size() < needle.term.size()) {
        return false;
    }
    const std::size_t places = text.size() - needle.term.size() + 1;
    return places <= kWide ? containsInFew(text, places, needle)
                           : containsInMany(text, places, needle);
}

bool contains(std::string_view text, const Needle& needle) {
    return hasMaskedLoads ? containsBySixtyFour(text, needle) : containsBySixteen(text, needle);
}

#else

bool canSearchBySixtyFour() {
    return false;
}

bool containsBySixteen(std::string_view text, const Needle& needle) {
    return containsPlain(text, needle);
}

bool containsBySixtyFour(std::string_view text, const Needle& needle) {
    return containsPlain(text, needle);
}

bool contains(std::string_view text, const Needle& needle) {
    return containsPlain(text, needle);
}

#endif

Criterion::Criterion(const LightweightString<char>& text, eMatchMethod method)
    : text_(text), method_(method), isEmpty_(isEssentiallyEmpty(text)) {
    if (!isEmpty_) {
        anchors_ = anchorsOf(text_.view());
    }
}

bool Criterion::isSatisfiedBy(std::string_view text, unsigned flags) const {
    const std::string_view term = text_.view();
    if (isEmpty_) {
        return true;
    }
    if (text.size() < term.size()) {
        return false;
    }
    switch (method_) {
        case eMatchWhole:
            return text.size() == term.size() && equals(text, term, flags & kFlags);
        case eMatchBegins:
            return equals(text.substr(0, term.size()), term, flags & kFlags);
        default:
            return contains(text, {term, anchors_, flags & kFlags});
    }
}

std::optional<Finder> Finder::of(const Criteria& criteria, unsigned flags) {
    if (criteria.size() != 1) {
        return std::nullopt;
    }
    const Criterion& criterion = criteria.getCriterion(0);
    const bool isForOne = criterion.method() == eMatchContains && !criterion.empty();
    return isForOne ? std::optional(Finder(criterion, flags & kFlags)) : std::nullopt;
}

Finder::Finder(const Criterion& criterion, unsigned flags)
    : needle_{criterion.text().view(), criterion.anchors(), flags},
      search_(canSearchBySixtyFour() ? containsBySixtyFour : containsBySixteen) {}

void Criteria::add(const Criterion& criterion) {
    criteria_.push_back(criterion);
    isEmpty_ = isEmpty_ && criterion.empty();
}

const Criterion& Criteria::getCriterion(unsigned short i) const {
    static const Criterion none;
    return i < criteria_.size() ? criteria_[i] : none;
}

}  // namespace TextSearch
