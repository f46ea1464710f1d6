#include "vekdb/query/value_match.h"

#include <ctime>

#include <vekdb/host/text_util.h>
#include <vekdb/host/timecode.h>

namespace {

constexpr std::size_t ctimeRoom = 64;  // of the 26 that any date of 32 bits takes

// What the C library prints for a date that is stored as a number of seconds.
std::string_view dateText(std::string_view value, char (&buffer)[ctimeRoom]) {
    const auto seconds = static_cast<std::time_t>(parseUInt(value, 0));
    const char* text = ctime_r(&seconds, buffer);
    return text != nullptr ? text : "";
}

}  // namespace

bool dateMatches(std::string_view value, const TextSearch::Criteria& criteria, unsigned flags) {
    char buffer[ctimeRoom];
    return TextSearch::match(dateText(value, buffer), criteria, flags);
}

bool digitsMatch(std::string_view value, const TextSearch::Criteria& criteria, unsigned flags) {
    char buffer[time_def::maxForm];
    return TextSearch::match(time_def::punctuatedForm(value, buffer), criteria, flags);
}
