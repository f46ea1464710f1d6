#include "formats/timecode/clip_columns.h"

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
    return firstPair(log, {{"start keycode", "end keycode"}, {"KN Start", "KN End"}});
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
