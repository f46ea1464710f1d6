#include "formats/choosing/column_asking.h"

#include <ctime>

#include <vekdb/host/text_util.h>
#include <vekdb/host/timecode.h>
#include "formats/choosing/ranges.h"
#include "formats/log/column_names.h"

namespace vek::formats {

namespace {

bool hasOtherOfItsName(const Log& log, unsigned column) {
    return column != noColumn && repeatedNameOf(log, column) != nullptr;
}

// The table's own ranges have names that begin or end with these words.
RangeColumns rangeWithoutOther(const Log& log, unsigned column) {
    const std::string name = log.columnName(column);
    const bool isStart = name.find("tart") != std::string::npos;
    return isStart ? RangeColumns{column, noColumn} : RangeColumns{noColumn, column};
}

ColumnAsking askingOfRange(const Log& log, unsigned column) {
    RangeColumns range = rangeOf(log, column);
    if (range.start == noColumn) range = rangeWithoutOther(log, column);
    const bool isUnclear = hasOtherOfItsName(log, range.start) || hasOtherOfItsName(log, range.end);
    return {isUnclear ? ColumnAsking::Kind::unclear : ColumnAsking::Kind::range, range};
}

// What the C library prints for a date that is stored as a number of seconds.
std::string dateText(std::string_view value) {
    constexpr std::size_t room = 64;  // of the 26 that any date of 32 bits takes
    char buffer[room];
    const auto seconds = static_cast<std::time_t>(parseUInt(value, 0));
    const char* text = ctime_r(&seconds, buffer);
    return text != nullptr ? text : "";
}

}  // namespace

ColumnAsking askingOf(const Log& log, unsigned column) {
    if (log.table->isSpecialLabelField(column)) return askingOfRange(log, column);
    if (isOfLabelRange(log, column)) {
        return {ColumnAsking::Kind::labelRange, rangeOf(log, column)};
    }
    switch (log.table->get_field_type(column)) {
        case DBFieldTypes::timecode:
            return {ColumnAsking::Kind::timecode};
        case DBFieldTypes::timecode_s:
            return {ColumnAsking::Kind::asShown};
        case DBFieldTypes::dos_date:
            return {ColumnAsking::Kind::date};
        default:
            return {};
    }
}

std::string shownForm(ColumnAsking::Kind kind, std::string_view value) {
    if (kind == ColumnAsking::Kind::date) return dateText(value);
    if (kind != ColumnAsking::Kind::asShown) return std::string(value);
    char buffer[time_def::maxForm];
    return std::string(time_def::punctuatedForm(value, buffer));
}

}  // namespace vek::formats
