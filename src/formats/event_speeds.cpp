#include "formats/event_speeds.h"

#include "formats/edl/edl_lines.h"

namespace vek::formats {

EventSpeeds::EventSpeeds(const Log& log)
    : sourceIn_(log.findColumn(edlColumnNames[edlSourceIn])),
      reel_(log.findColumn(edlColumnNames[edlReel])) {
    for (unsigned column = log.findColumn(edlCommentsName(0)); column != noColumn;
         column = log.findColumn(edlCommentsName(notes_.size()))) {
        notes_.push_back(column);
    }
}

std::string EventSpeeds::movedNote(std::string_view note, const Event& before, const Event& now) {
    if (before.sourceIn == now.sourceIn && before.reel == now.reel) return std::string(note);
    return movedEdlSpeeds(note, {before.sourceIn, now.sourceIn, 1, 1, before.reel, now.reel});
}

}  // namespace vek::formats
