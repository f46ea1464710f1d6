#pragma once

#include <optional>
#include <string_view>

#include <vekdb/field_types.h>
#include "host/text_finder.h"

/// Whether a date stored as a number of seconds satisfies the criteria as it is printed.
bool dateMatches(std::string_view value, const TextSearch::Criteria& criteria, unsigned flags);
/// Whether a timecode stored as digits satisfies the criteria with its punctuation.
bool digitsMatch(std::string_view value, const TextSearch::Criteria& criteria, unsigned flags);

/// Whether a value of a column of this type satisfies the criteria; `flags` as `TextSearch::match`
/// takes them, to which a timecode adds its own.
inline bool valueMatches(std::string_view value, DBFieldTypes::eType type,
                         const TextSearch::Criteria& criteria, unsigned flags) {
    switch (type) {
        case DBFieldTypes::timecode:
            return TextSearch::match(value, criteria, flags | TextSearch::eMatchTimecode);
        case DBFieldTypes::timecode_s:
            return digitsMatch(value, criteria, flags | TextSearch::eMatchTimecode);
        case DBFieldTypes::dos_date:
            return dateMatches(value, criteria, flags);
        default:
            return TextSearch::match(value, criteria, flags);
    }
}

/// What finds the values of a column of this type that satisfy the criteria, where that is one
/// term that stands in the value as it is.
inline std::optional<TextSearch::Finder> finderFor(DBFieldTypes::eType type,
                                                   const TextSearch::Criteria& criteria,
                                                   unsigned flags) {
    switch (type) {
        case DBFieldTypes::timecode:
            return TextSearch::Finder::of(criteria, flags | TextSearch::eMatchTimecode);
        case DBFieldTypes::timecode_s:
        case DBFieldTypes::dos_date:
            return std::nullopt;
        default:
            return TextSearch::Finder::of(criteria, flags);
    }
}
