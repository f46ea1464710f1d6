#include "formats/edl/blank_lines.h"

#include <algorithm>
#include <charconv>

#include <vekdb/host/text_util.h>
#include "formats/failure.h"
#include "formats/text/text_lines.h"

namespace vek::formats {

namespace {

constexpr std::size_t mostPlaces = 1000;
constexpr std::uint32_t mostAtEnd = 1000;

std::uint32_t numberOf(std::string_view word) {
    std::uint32_t number = 0;
    const char* end = word.data() + word.size();
    const auto [at, error] = std::from_chars(word.data(), end, number);
    return error == std::errc() && at == end ? number : 0;
}

// Words from `word` on, in pieces at the words of a layout.
std::string_view behind(std::string_view text, std::string_view word) {
    const std::size_t at = text.find(word);
    return at == text.npos ? std::string_view() : text.substr(at + word.size());
}

}  // namespace

// A cell that somebody wrote by hand makes no list of blank lines without end.
BlankLines::BlankLines(std::string_view text) {
    for (std::string_view word : split(text, ' ')) {
        const std::uint32_t place = numberOf(word);
        if (place != 0 && places_.size() < mostPlaces) places_.push_back(place);
    }
    std::sort(places_.begin(), places_.end());
}

void BlankLines::add(const BlankLines& others) {
    for (std::uint32_t place : others.places_) places_.push_back(lines_ + place);
    lines_ += others.lines_;
}

std::size_t BlankLines::before(std::uint32_t line) const {
    const auto [begin, end] = std::equal_range(places_.begin(), places_.end(), line);
    return static_cast<std::size_t>(end - begin);
}

std::size_t BlankLines::from(std::uint32_t line) const {
    return static_cast<std::size_t>(places_.end() -
                                    std::lower_bound(places_.begin(), places_.end(), line));
}

BlankLines BlankLines::withoutFirst() const {
    BlankLines others = *this;
    const auto end = std::upper_bound(others.places_.begin(), others.places_.end(), 1U);
    others.places_.erase(others.places_.begin(), end);
    return others;
}

std::string BlankLines::text() const {
    std::string out;
    for (std::uint32_t place : places_) {
        out += concat(out.empty() ? "" : " ", std::to_string(place));
    }
    return out.empty() ? "0" : out;
}

std::string ListLayout::text() const {
    std::string out;
    if (!heading.empty()) out = heading.text();
    if (!each.empty()) out += " each " + each.text();
    if (atEnd != 0) out += " end " + std::to_string(atEnd);
    return std::string(trimmed(out));
}

ListLayout ListLayout::of(std::string_view text) {
    const std::string_view each = behind(text, "each ");
    const std::string_view end = behind(text, "end ");
    const std::size_t heading = std::min(text.find("each "), text.find("end "));
    return {BlankLines(text.substr(0, std::min(heading, text.size()))),
            BlankLines(each.substr(0, std::min(each.find("end "), each.size()))),
            std::min(numberOf(trimmed(end)), mostAtEnd)};
}

}  // namespace vek::formats
