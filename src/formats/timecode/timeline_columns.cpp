#include "formats/timecode/timeline_columns.h"

#include "formats/text/text_lines.h"

namespace vek::formats {

bool isTimeline(const Log& log) {
    const unsigned place = log.findColumn(timeline::place);
    if (log.findColumn(timeline::kind) == noColumn || place == noColumn) return false;
    for (unsigned row = 0; row < log.rowCount(); ++row) {
        const std::string_view text = log.cell(row, place);
        if (text.empty() || text.find_first_not_of("0123456789.") != text.npos) return false;
    }
    return true;
}

TimelineKind timelineKind(std::string_view text) {
    struct Entry {
        const char* text;
        TimelineKind kind;
    };
    static constexpr Entry entries[] = {
        {"Marker", TimelineKind::marker},         {"To Do", TimelineKind::marker},
        {"Chapter", TimelineKind::marker},        {"Keyword", TimelineKind::note},
        {"Transition", TimelineKind::transition}, {"Track", TimelineKind::track},
        {"Stack", TimelineKind::other},           {"Part", TimelineKind::other},
        {"Rating", TimelineKind::note},           {"Caption", TimelineKind::other},
    };
    for (const Entry& entry : entries) {
        if (sameText(text, entry.text)) return entry.kind;
    }
    return TimelineKind::clip;
}

}  // namespace vek::formats
