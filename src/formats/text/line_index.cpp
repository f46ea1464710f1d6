#include "formats/text/line_index.h"

#include <algorithm>
#include <bit>

namespace vek::formats {

namespace {

constexpr std::size_t bitsOfWord = 64;
constexpr std::size_t wordsOfStep = 64;

}  // namespace

LineIndex::LineIndex(std::string_view text) : ends_(text.size() / bitsOfWord + 1) {
    for (std::size_t at = text.find('\n'); at != text.npos; at = text.find('\n', at + 1)) {
        ends_[at / bitsOfWord] |= std::uint64_t{1} << at % bitsOfWord;
    }
    std::uint32_t lines = 0;
    for (std::size_t word = 0; word < ends_.size(); ++word) {
        if (word % wordsOfStep == 0) before_.push_back(lines);
        lines += static_cast<std::uint32_t>(std::popcount(ends_[word]));
    }
}

std::size_t LineIndex::line(std::size_t offset) const {
    const std::size_t last = std::min(offset / bitsOfWord, ends_.size() - 1);
    std::size_t lines = 1 + before_[last / wordsOfStep];
    for (std::size_t word = last / wordsOfStep * wordsOfStep; word < last; ++word) {
        lines += static_cast<std::size_t>(std::popcount(ends_[word]));
    }
    const std::uint64_t inFront = (std::uint64_t{1} << offset % bitsOfWord) - 1;
    return lines + static_cast<std::size_t>(std::popcount(ends_[last] & inFront));
}

}  // namespace vek::formats
