#include "formats/film_columns.h"

namespace vek {

namespace {

using Names = std::initializer_list<std::pair<const char*, const char*>>;

RangeColumns firstPair(const Log& log, Names names) {
    for (const auto& [start, end] : names) {
        RangeColumns pair{log.findColumn(start), log.findColumn(end)};
        if (pair.start != noColumn && pair.end != noColumn) return pair;
    }
    return {noColumn, noColumn};
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

}  // namespace vek
