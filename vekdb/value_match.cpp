#include "vekdb/value_match_impl.h"

#include <ctime>

#include "host/text_util.h"
#include "host/timecode.h"
#include "vekdb/record_access_impl.h"

namespace {

constexpr std::size_t ctimeRoom = 64;  // of the 26 that any date of 32 bits takes

// What the C library prints for a date that is stored as a number of seconds.
std::string_view dateText(std::string_view value, char (&buffer)[ctimeRoom]) {
    const auto seconds = static_cast<std::time_t>(parseUInt(value, 0));
    const char* text = ctime_r(&seconds, buffer);
    return text != nullptr ? text : "";
}

// As strncmp over the length of the text.
int compareFront(std::string_view value, std::string_view text) {
    return value.substr(0, text.size()).compare(text);
}

}  // namespace

bool valueMatches(std::string_view value, DBFieldTypes::eType type,
                  const TextSearch::Criteria& criteria, unsigned flags) {
    switch (type) {
        case DBFieldTypes::timecode:
            return TextSearch::match(value, criteria, flags | TextSearch::eMatchTimecode);
        case DBFieldTypes::timecode_s: {
            char buffer[time_def::maxForm];
            return TextSearch::match(time_def::punctuatedForm(value, buffer), criteria,
                                     flags | TextSearch::eMatchTimecode);
        }
        case DBFieldTypes::dos_date: {
            char buffer[ctimeRoom];
            return TextSearch::match(dateText(value, buffer), criteria, flags);
        }
        default:
            return TextSearch::match(value, criteria, flags);
    }
}

std::string_view rangeText(const TextSearch::Criteria& criteria) {
    return criteria.getCriterion(0).text().c_str();
}

bool rangeHolds(const dbrecord& record, LabelColumns columns, std::string_view text) {
    if (columns.start == LabelColumns::missing) return false;
    const std::string_view start = RecordAccess::view(record, columns.start);
    if (start.empty()) return false;
    const int startOrder = compareFront(start, text);
    if (startOrder == 0) return true;
    if (columns.end == LabelColumns::missing) return false;
    const std::string_view end = RecordAccess::view(record, columns.end);
    return !end.empty() && startOrder < 0 && compareFront(end, text) >= 0;
}
