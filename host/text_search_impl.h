#pragma once

#include "host/text_search.h"

#include <cstddef>
#include <string_view>

namespace TextSearch {

// A term made ready for one set of flags. The term has at least one byte.
struct Needle {
    std::string_view term;
    const Criterion::Anchors& anchors;
    unsigned flags;  // of eMatchFlags, no other bits
};

Criterion::Anchors anchorsOf(std::string_view term);

// Whether both texts, of the same length, are the same under the flags.
bool equals(std::string_view a, std::string_view b, unsigned flags);

// Whether the term stands in the text: the two give the same answer, the first
// byte by byte, the second in wide steps where the processor has them.
bool containsPlain(std::string_view text, const Needle& needle);
bool contains(std::string_view text, const Needle& needle);

}  // namespace TextSearch
