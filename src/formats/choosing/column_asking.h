#pragma once

#include <string>
#include <string_view>

#include "formats/log/log.h"
#include "formats/timecode/clip_columns.h"

namespace vek::formats {

/// How a "contains" condition on a column is answered, for whoever asks rows elsewhere.
struct ColumnAsking {
    enum class Kind {
        text,        ///< the text stands in the value, the case of A to Z ignored
        timecode,    ///< the same, and : ; . , are one
        asShown,     ///< the same as timecode, in the form that `shownForm` gives
        date,        ///< the same as text, in the form that `shownForm` gives
        range,       ///< the range from start to end holds the text
        labelRange,  ///< the same for film under other names: keycodes by their feet
        unclear      ///< several columns have the name of a range's end
    };
    Kind kind = Kind::text;
    RangeColumns range = {noColumn, noColumn};  ///< either may be missing
};

ColumnAsking askingOf(const Log& log, unsigned column);

/// The form in which a column's value is asked, where that is not the one in which it is stored.
std::string shownForm(ColumnAsking::Kind kind, std::string_view value);

}  // namespace vek::formats
