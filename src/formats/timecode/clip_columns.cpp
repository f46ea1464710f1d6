#include "formats/timecode/clip_columns.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

#include <vekdb/host/text_util.h>
#include "formats/text/text_lines.h"

namespace vek::formats {

namespace {

using Names = std::initializer_list<std::pair<const char*, const char*>>;

RangeColumns firstPair(const Log& log, Names names) {
    for (const auto& [start, end] : names) {
        RangeColumns pair{log.findColumn(start), log.findColumn(end)};
        if (pair.start != noColumn && pair.end != noColumn) return pair;
    }
    return {noColumn, noColumn};
}

bool isLetterOrDigit(char c) {
    char small = asciiLower(c);
    return (small >= 'a' && small <= 'z') || isAsciiDigit(c);
}

// A name with one of its words replaced, or "" when the word is not in it.
std::string withWord(const std::string& name, std::string_view word, const char* other) {
    for (std::size_t at = 0; at + word.size() <= name.size(); ++at) {
        std::size_t end = at + word.size();
        bool isWord = (at == 0 || !isLetterOrDigit(name[at - 1])) &&
                      (end == name.size() || !isLetterOrDigit(name[end]));
        if (isWord && sameText(std::string_view(name).substr(at, word.size()), word)) {
            return name.substr(0, at) + other + name.substr(end);
        }
    }
    return {};
}

bool isOneOf(std::string_view word, std::initializer_list<const char*> words) {
    return std::any_of(words.begin(), words.end(),
                       [&](const char* other) { return sameText(word, other); });
}

std::vector<std::string_view> wordsOf(std::string_view name) {
    std::vector<std::string_view> words;
    while (!name.empty()) {
        const auto end = std::find_if_not(name.begin(), name.end(), isLetterOrDigit);
        const auto size = static_cast<std::size_t>(end - name.begin());
        if (size > 0) words.push_back(name.substr(0, size));
        name.remove_prefix(std::min(size + 1, name.size()));
    }
    return words;
}

constexpr std::pair<const char*, const char*> ends[] = {{"start", "end"}, {"in", "out"}};

unsigned columnWithWord(const Log& log, const std::string& name, const char* word,
                        const char* other) {
    const std::string wanted = withWord(name, word, other);
    return wanted.empty() ? noColumn : log.findColumn(wanted);
}

unsigned endColumnFor(const Log& log, const std::string& name) {
    for (auto [start, end] : ends) {
        const unsigned column = columnWithWord(log, name, start, end);
        if (column != noColumn) return column;
    }
    return noColumn;
}

unsigned startColumnFor(const Log& log, const std::string& name) {
    for (auto [start, end] : ends) {
        const unsigned column = columnWithWord(log, name, end, start);
        if (column != noColumn) return column;
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
    for (const char* name : names) {
        unsigned column = log.findColumn(name);
        if (column != noColumn) return column;
    }
    return noColumn;
}

RangeColumns sourceColumns(const Log& log) {
    return firstPair(log, {{"Start time", "End time"},
                           {"Start", "End"},
                           {"Source In", "Source Out"},
                           {"Mark IN", "Mark OUT"}});
}

RangeColumns recordColumns(const Log& log) {
    return firstPair(log, {{"Record In", "Record Out"},
                           {"Rec In", "Rec Out"},
                           {"Record Start", "Record End"},
                           {"Master In", "Master Out"}});
}

RangeColumns keycodeColumns(const Log& log) {
    return firstPair(log, {{"start keycode", "end keycode"},
                           {"KN Start", "KN End"},
                           {"Keycode Start", "Keycode End"},
                           {"Key Number Start", "Key Number End"},
                           {"Key Start", "Key End"}});
}

bool isTimeline(const Log& log) {
    const unsigned place = log.findColumn("Place");
    if (log.findColumn("Kind") == noColumn || place == noColumn) return false;
    for (unsigned row = 0; row < log.rowCount(); ++row) {
        const std::string_view text = log.cell(row, place);
        if (text.empty() || text.find_first_not_of("0123456789.") != text.npos) return false;
    }
    return true;
}

RangeColumns rangeOf(const Log& log, unsigned column) {
    const std::string name = log.columnName(column);
    const unsigned end = endColumnFor(log, name);
    if (end != noColumn) return {column, end};
    const unsigned start = startColumnFor(log, name);
    return start == noColumn ? RangeColumns{noColumn, noColumn} : RangeColumns{start, column};
}

std::vector<RangeColumns> rangeColumns(const Log& log) {
    std::vector<RangeColumns> pairs;
    for (unsigned column = 0; column < log.columnCount(); ++column) {
        unsigned end = endColumnFor(log, log.columnName(column));
        if (end != noColumn && end != column) pairs.push_back({column, end});
    }
    return pairs;
}

}  // namespace vek::formats
