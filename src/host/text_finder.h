#pragma once

#include <vekdb/host/text_search.h>

#include <cstddef>
#include <optional>
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

// Looks for one term in many texts, with all that does not depend on the text decided before. The
// criteria that it was made of stay as they are meanwhile.
class Finder {
public:
    // None for criteria that ask for anything but that one term stands in the text.
    static std::optional<Finder> of(const Criteria& criteria, unsigned flags);

    // The same as criteria.areSatisfiedBy(text, flags).
    bool finds(std::string_view text) const {
        return text.size() >= needle_.term.size() && search_(text, needle_);
    }

private:
    Finder(const Criterion& criterion, unsigned flags);

    Needle needle_;
    bool (*search_)(std::string_view, const Needle&);
};

}  // namespace TextSearch
