#include "formats/summing/text_numbers.h"

#include <algorithm>
#include <cstring>

namespace vek::formats {

namespace {

constexpr std::size_t few = 4;
constexpr std::size_t firstPlaces = 16;

}  // namespace

TextNumbers::Text::Text(std::string_view text, std::uint64_t hash) : text(text), hash(hash) {
    if (!text.empty()) std::memcpy(&head, text.data(), std::min(text.size(), sizeof head));
}

std::size_t TextNumbers::of(std::string_view text, std::uint64_t hash) {
    const Text wanted(text, hash);
    if (places_.empty()) return numberAmongFew(wanted);
    std::uint32_t* place = placeOf(wanted);
    if (*place != 0) return *place - 1;
    if (2 * (texts_.size() + 1) > places_.size()) {
        grow();
        place = placeOf(wanted);
    }
    texts_.push_back(wanted);
    *place = static_cast<std::uint32_t>(texts_.size());
    return texts_.size() - 1;
}

std::size_t TextNumbers::numberAmongFew(const Text& text) {
    const auto known = std::find_if(texts_.begin(), texts_.end(),
                                    [&](const Text& other) { return other.is(text); });
    const auto number = static_cast<std::size_t>(known - texts_.begin());
    if (known != texts_.end()) return number;
    texts_.push_back(text);
    if (texts_.size() > few) grow();
    return number;
}

// The place of the text, or the free one where it belongs.
std::uint32_t* TextNumbers::placeOf(const Text& text) {
    const std::size_t mask = places_.size() - 1;
    std::size_t at = text.hash & mask;
    while (places_[at] != 0 && !texts_[places_[at] - 1].is(text)) at = (at + 1) & mask;
    return &places_[at];
}

void TextNumbers::grow() {
    places_.assign(std::max(firstPlaces, 4 * places_.size()), 0);
    const std::size_t mask = places_.size() - 1;
    for (std::size_t number = 0; number < texts_.size(); ++number) {
        std::size_t at = texts_[number].hash & mask;
        while (places_[at] != 0) at = (at + 1) & mask;
        places_[at] = static_cast<std::uint32_t>(number + 1);
    }
}

void TextNumbers::add(const TextNumbers& other) {
    for (const Text& text : other.texts_) of(text.text, text.hash);
}

}  // namespace vek::formats
