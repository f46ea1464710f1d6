#include "formats/timecode/range_names.h"

#include <utility>

#include <vekdb/host/text_util.h>
#include "formats/text/letters.h"
#include "formats/text/text_lines.h"

namespace vek::formats {

namespace {

constexpr RangeName sources[] = {{"Start time", "End time"},
                                 sourceOfExchange,
                                 sourceOfEvent,
                                 {"Mark IN", "Mark OUT"},
                                 {"Source Start", "Source End"},
                                 {"Src In", "Src Out"},
                                 {"TC In", "TC Out"},
                                 {"Start TC", "End TC"},
                                 {"In", "Out"}};

constexpr RangeName records[] = {recordOfEvent,
                                 {"Rec In", "Rec Out"},
                                 {"Record Start", "Record End"},
                                 {"Rec Start", "Rec End"},
                                 {"Master In", "Master Out"}};

constexpr RangeName keycodes[] = {{"start keycode", "end keycode"},
                                  {"KN Start", "KN End"},
                                  {"Keycode Start", "Keycode End"},
                                  {"Key Number Start", "Key Number End"},
                                  {"Key Start", "Key End"}};

// Words of a name that begins and of one that ends.
constexpr RangeName words[] = {{"start", "end"}, {"in", "out"}};

// A name with one of its words replaced, or "" when the word is not in it.
std::string withWord(const std::string& name, std::string_view word, const char* other) {
    for (std::size_t at = 0; at + word.size() <= name.size(); ++at) {
        std::size_t end = at + word.size();
        bool isWord = (at == 0 || !isAsciiLetterOrDigit(name[at - 1])) &&
                      (end == name.size() || !isAsciiLetterOrDigit(name[end]));
        if (isWord && sameText(std::string_view(name).substr(at, word.size()), word)) {
            return name.substr(0, at) + other + name.substr(end);
        }
    }
    return {};
}

// The other name of each pair in which `own` is one, then those that differ by a word.
std::vector<std::string> othersOf(std::string_view name, const char* RangeName::*own,
                                  const char* RangeName::*other) {
    std::vector<std::string> names;
    for (RangeKind kind : {RangeKind::source, RangeKind::record, RangeKind::keycode}) {
        for (const RangeName& pair : rangeNames(kind)) {
            if (sameText(name, pair.*own)) names.emplace_back(pair.*other);
        }
    }
    for (const RangeName& pair : words) {
        std::string made = withWord(std::string(name), pair.*own, pair.*other);
        if (!made.empty()) names.push_back(std::move(made));
    }
    return names;
}

}  // namespace

std::span<const RangeName> rangeNames(RangeKind kind) {
    if (kind == RangeKind::source) return sources;
    return kind == RangeKind::record ? std::span<const RangeName>(records) : keycodes;
}

std::vector<std::string> endNamesFor(std::string_view start) {
    return othersOf(start, &RangeName::start, &RangeName::end);
}

std::vector<std::string> startNamesFor(std::string_view end) {
    return othersOf(end, &RangeName::end, &RangeName::start);
}

}  // namespace vek::formats
