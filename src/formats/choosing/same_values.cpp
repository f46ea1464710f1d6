#include "formats/choosing/same_values.h"

#include <algorithm>

#include <vekdb/host/keyed_hash.h>
#include <vekdb/host/text_util.h>
#include "formats/text/letters.h"
#include "formats/text/text_lines.h"

namespace vek::formats {

namespace {

constexpr std::size_t firstPlaces = 1024;

bool isAscii(std::string_view text) {
    return std::none_of(text.begin(), text.end(), [](char c) { return (c & 0x80) != 0; });
}

// In lower case, whatever alphabet its letters are of.
void fold(std::string& to, std::string_view text) {
    to.clear();
    if (!isAscii(text)) return addLower(to, text);
    to.resize(text.size());
    std::transform(text.begin(), text.end(), to.begin(), asciiLower<char>);
}

}  // namespace

SameValues::SameValues(const Log& log, unsigned column)
    : log_(log), column_(column), places_(firstPlaces) {}

unsigned SameValues::firstOf(unsigned row) {
    if (2 * taken_ >= places_.size()) grow();
    const std::string_view value = log_.cell(row, column_);
    const std::uint32_t hash = hashOf(value);
    Place& place = find(hash, value);
    if (place.behindRow != 0) return place.behindRow - 1;
    place = {hash, row + 1};
    ++taken_;
    return row;
}

std::uint32_t SameValues::hashOf(std::string_view value) {
    fold(folded_, value);
    return static_cast<std::uint32_t>(Quor::keyedHash(folded_));
}

// The place of the value, or the free one where it belongs.
SameValues::Place& SameValues::find(std::uint32_t hash, std::string_view value) {
    for (std::size_t at = hash;; ++at) {
        Place& place = places_[at & (places_.size() - 1)];
        if (place.behindRow == 0) return place;
        if (place.hash == hash && isSame(log_.cell(place.behindRow - 1, column_), value)) {
            return place;
        }
    }
}

// The value is the one that was folded last.
bool SameValues::isSame(std::string_view other, std::string_view value) {
    if (sameText(other, value)) return true;
    if (isAscii(other)) return false;
    fold(other_, other);
    return other_ == folded_;
}

void SameValues::grow() {
    std::vector<Place> old(places_.size() * 4);
    old.swap(places_);
    for (const Place& place : old) {
        if (place.behindRow == 0) continue;
        std::size_t at = place.hash;
        while (places_[at & (places_.size() - 1)].behindRow != 0) ++at;
        places_[at & (places_.size() - 1)] = place;
    }
}

}  // namespace vek::formats
