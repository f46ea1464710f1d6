#include "formats/reading/source.h"

#include <algorithm>

#include "formats/reading/input.h"

namespace vek::formats {

namespace {

constexpr std::size_t windowSize = 1 << 18;

}  // namespace

void RowPlaces::add(Range row) {
    if (row.begin != last_ && gaps_.empty()) gaps_.resize(begins_.size());
    if (row.begin != last_ || !gaps_.empty()) gaps_.push_back(row.begin - last_);
    begins_.push_back(row.begin);
    last_ = row.end;
}

void RowPlaces::endAt(std::uint64_t size) {
    add({size, size});
    isEnded_ = true;
}

std::string_view SourceReader::read(Range range) {
    if (range.begin < got_.begin || range.end > got_.end) {
        const std::uint64_t end =
            std::max(range.end, std::min<std::uint64_t>(range.begin + windowSize, input_.size()));
        window_.resize(static_cast<std::size_t>(end - range.begin));
        got_ = {};
        input_.readAgain(range.begin, window_.data(), window_.size());
        got_ = {range.begin, end};
    }
    return {window_.data() + (range.begin - got_.begin), range.size()};
}

}  // namespace vek::formats
