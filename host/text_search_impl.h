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

// Whether the term stands in the text. All give the same answer: the first looks
// byte by byte; the others take steps of 16 and of 64 bytes on processors that
// have them, the last one only where canSearchBySixtyFour() says so; contains()
// is the fastest that this processor has.
bool containsPlain(std::string_view text, const Needle& needle);
bool containsBySixteen(std::string_view text, const Needle& needle);
bool containsBySixtyFour(std::string_view text, const Needle& needle);
bool canSearchBySixtyFour();
bool contains(std::string_view text, const Needle& needle);

}  // namespace TextSearch
