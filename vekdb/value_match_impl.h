#pragma once

#include <string_view>

#include "host/text_search.h"
#include "vekdb/field_types.h"

class dbrecord;

/// Whether a value of a column of this type satisfies the criteria; `flags` as `TextSearch::match`
/// takes them, to which a timecode adds its own.
bool valueMatches(std::string_view value, DBFieldTypes::eType type,
                  const TextSearch::Criteria& criteria, unsigned flags);

/// Two columns that hold the start and the end of a range; either may be missing.
struct LabelColumns {
    static constexpr unsigned missing = 0xFFFFFFFF;
    unsigned start = missing;
    unsigned end = missing;
};

/// The text that a range column is asked for: that of the first criterion, as a C string.
std::string_view rangeText(const TextSearch::Criteria& criteria);

/// Whether the record's start begins with the text, or its range from start to end holds it,
/// comparing as many characters as the text has.
bool rangeHolds(const dbrecord& record, LabelColumns columns, std::string_view text);
