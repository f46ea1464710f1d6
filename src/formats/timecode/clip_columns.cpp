#include "formats/timecode/clip_columns.h"

#include <algorithm>
#include <string>
#include <string_view>

#include <vekdb/host/text_util.h>
#include "formats/log/column_names.h"
#include "formats/text/letters.h"
#include "formats/text/text_lines.h"
#include "formats/timecode/range_names.h"

namespace vek::formats {

namespace {

RangeColumns firstPair(const Log& log, RangeKind kind) {
    for (const auto& [start, end] : rangeNames(kind)) {
        RangeColumns pair{log.findColumn(start), log.findColumn(end)};
        if (pair.start != noColumn && pair.end != noColumn) return pair;
    }
    return {noColumn, noColumn};
}

bool isOneOf(std::string_view word, std::initializer_list<const char*> words) {
    return std::any_of(words.begin(), words.end(),
                       [&](const char* other) { return sameText(word, other); });
}

std::vector<std::string_view> wordsOf(std::string_view name) {
    std::vector<std::string_view> words;
    while (!name.empty()) {
        const auto end = std::find_if_not(name.begin(), name.end(), isAsciiLetterOrDigit);
        const auto size = static_cast<std::size_t>(end - name.begin());
        if (size > 0) words.push_back(name.substr(0, size));
        name.remove_prefix(std::min(size + 1, name.size()));
    }
    return words;
}

// The other column of a pair: of several that have its name the one of the same turn, so that the
// second Start goes with the second End.
unsigned otherOf(const Log& log, unsigned column, const std::vector<std::string>& names) {
    const std::size_t turn = turnOf(log, column);
    for (const std::string& name : names) {
        const unsigned other = columnOfTurn(log, name, turn);
        if (other != noColumn) return other;
    }
    return noColumn;
}

}  // namespace

// "Key" and "edge" are words of other things, too, and say it by what stands beside them.
bool namesFilmCode(std::string_view name) {
    const auto isNumber = [](std::string_view word) {
        return isOneOf(word, {"number", "numbers", "num", "no", "nr", "code", "codes", "kode"});
    };
    const auto isEnd = [](std::string_view word) {
        return isOneOf(word, {"start", "end", "in", "out"});
    };
    const std::vector<std::string_view> words = wordsOf(name);
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (isOneOf(words[i], {"kn", "keycode", "keykode", "keynumber", "ink", "inkcode",
                               "inknumber", "edgecode", "edgenumber"})) {
            return true;
        }
        if (!isOneOf(words[i], {"key", "edge"})) continue;
        const bool isLast = i + 1 == words.size();
        if (isLast ? i > 0 && isEnd(words[i - 1]) : isNumber(words[i + 1])) return true;
        if (i + 2 == words.size() && isEnd(words.back())) return true;
    }
    return false;
}

unsigned firstColumn(const Log& log, std::initializer_list<const char*> names) {
    return firstColumn(log, std::span(names.begin(), names.size()));
}

unsigned reelColumn(const Log& log) {
    return firstColumn(log, reelNames);
}

unsigned firstColumn(const Log& log, std::span<const char* const> names) {
    for (const char* name : names) {
        unsigned column = log.findColumn(name);
        if (column != noColumn) return column;
    }
    return noColumn;
}

RangeColumns sourceColumns(const Log& log) {
    return firstPair(log, RangeKind::source);
}

RangeColumns recordColumns(const Log& log) {
    return firstPair(log, RangeKind::record);
}

RangeColumns keycodeColumns(const Log& log) {
    return firstPair(log, RangeKind::keycode);
}

RangeColumns rangeOf(const Log& log, unsigned column) {
    const std::string name = log.columnName(column);
    const unsigned end = otherOf(log, column, endNamesFor(name));
    if (end != noColumn) return {column, end};
    const unsigned start = otherOf(log, column, startNamesFor(name));
    return start == noColumn ? RangeColumns{noColumn, noColumn} : RangeColumns{start, column};
}

std::vector<RangeColumns> rangeColumns(const Log& log) {
    std::vector<RangeColumns> pairs;
    for (unsigned column = 0; column < log.columnCount(); ++column) {
        unsigned end = otherOf(log, column, endNamesFor(log.columnName(column)));
        if (end != noColumn && end != column) pairs.push_back({column, end});
    }
    return pairs;
}

}  // namespace vek::formats
