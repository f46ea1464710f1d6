#include "tools/vek/timecode/markers.h"

#include <algorithm>
#include <iterator>

namespace vek::timecode {

Markers::Markers(Work& work)
    : work_(work),
      record_(recordColumns(work.log)),
      source_(sourceColumns(work.log)),
      isWhole_(work.rows.size() == work.log.rowCount()) {
    if (record_.start == noColumn) return;
    notes_ = noteColumns(work.log, edlCommentsName);
    std::ranges::copy(noteColumns(work.log, edlCommentsBeforeName), std::back_inserter(notes_));
}

bool Markers::goWith(const std::vector<unsigned>& columns) const {
    const auto has = [&](unsigned column) {
        return std::ranges::find(columns, column) != columns.end();
    };
    return record_.start != noColumn && has(record_.start) && has(record_.end);
}

std::optional<Timecode> Markers::timeOf(unsigned row, std::string_view text) const {
    std::optional<Timecode> code = work_.counting.timecode(row, record_.start, text);
    if (code && isCounted(*code, work_.nominal(row, record_.start))) return code;
    return {};
}

// One behind the last event is of the record too, as far as the whole record moves; one that
// the event has in its source may be meant so.
bool Markers::isOfRecord(unsigned row, const Timecode& code) const {
    if (isWithin(row, record_, code)) return true;
    return isWhole_ && !isWithin(row, source_, code);
}

bool Markers::isWithin(unsigned row, const RangeColumns& pair, const Timecode& code) const {
    if (pair.start == noColumn) return false;
    const std::optional<Timecode> start = work_.counting.timecode(row, pair.start);
    const std::optional<Timecode> end = work_.counting.timecode(row, pair.end);
    if (!start || !end) return false;
    const std::int64_t at = framesOf(code, work_.nominal(row, record_.start));
    const int nominal = work_.nominal(row, pair.start);
    return framesOf(*start, nominal) <= at && at <= framesOf(*end, nominal);
}

}  // namespace vek::timecode
