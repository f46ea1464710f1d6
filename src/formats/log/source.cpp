#include "formats/log/source.h"

#include <algorithm>

#include "formats/input/input.h"

namespace vek::formats {

namespace {

constexpr std::size_t windowSize = 1 << 18;
constexpr unsigned mostJumps = 64;

}  // namespace

void RowPlaces::add(Range row) {
    if (row.begin != last_ && gaps_.empty()) gaps_.resize(begins_.size());
    if (row.begin != last_ || !gaps_.empty()) gaps_.push_back(row.begin - last_);
    wraps_.resize(static_cast<std::size_t>(row.begin >> 32), begins_.size());
    begins_.push_back(static_cast<std::uint32_t>(row.begin));
    last_ = row.end;
}

std::uint64_t RowPlaces::wrapsUpTo(std::size_t row) const {
    return static_cast<std::uint64_t>(std::upper_bound(wraps_.begin(), wraps_.end(), row) -
                                      wraps_.begin());
}

void RowPlaces::endAt(std::uint64_t size) {
    add({size, size});
    isEnded_ = true;
}

// What is held for another reader is there for this one, too.
SourceReader::SourceReader(const Input& input)
    : input_(input), jumps_(input.holdsTextAgain() ? mostJumps : 0) {}

std::string_view SourceReader::read(Range range) {
    if (range.begin < got_.begin || range.end > got_.end) get(windowOf(range));
    return {text_ + (range.begin - got_.begin), range.size()};
}

// Who goes back and forth gets the whole file at last: a window for each piece would read it over
// and over again.
Range SourceReader::windowOf(Range range) {
    const bool isJump = range.begin < got_.begin || range.begin > got_.end + windowSize;
    jumps_ += isJump ? 1 : 0;
    const std::uint64_t size = input_.size();
    if (jumps_ >= mostJumps && range.end <= size) return {0, size};
    return {range.begin, std::max(range.end, std::min(range.begin + windowSize, size))};
}

void SourceReader::get(Range window) {
    got_ = {};
    if (jumps_ >= mostJumps && window.begin == 0) {
        text_ = input_.textAgain().data();
        got_ = {0, input_.textAgain().size()};
        return;
    }
    window_.resize(window.size());
    input_.readAgain(window.begin, window_.data(), window_.size());
    text_ = window_.data();
    got_ = window;
}

}  // namespace vek::formats
