#include "tools/vek/timecode/frame_counts.h"

#include <algorithm>

#include "formats/edl/edl_lines.h"

namespace vek::timecode {

unsigned transitionColumn(const Log& log) {
    for (EdlColumn needed : {edlEvent, edlTrack, edlKind, edlRecordIn}) {
        if (log.findColumn(edlColumnNames[needed]) == noColumn) return noColumn;
    }
    return log.findColumn(edlColumnNames[edlLength]);
}

FrameCounts::FrameCounts(const Work& work) : work_(work), pairs_(rangeColumns(work.log)) {
    const unsigned duration = work.log.findColumn("Duration");
    for (unsigned column = 0; column < work.log.columnCount(); ++column) {
        if (isKnown(column)) continue;
        const std::optional<RangeColumns> times =
            column == duration ? std::nullopt : timesOfAll(column);
        if (column == duration || times) columns_.push_back(column);
        if (!times) continue;
        notes_.push_back(
            concat(ownNameOf(work.log, column), " goes along, as lengths in frames between ",
                   ownNameOf(work.log, times->start), " and ", ownNameOf(work.log, times->end)));
    }
}

// What timelines and edit lists count in frames has a meaning of its own, as rates have.
bool FrameCounts::isKnown(unsigned column) const {
    if (column == transitionColumn(work_.log)) return true;
    if (column == work_.log.findColumn(timeline::rate)) return true;
    const bool isTimeline = work_.counting.rateColumn() != noColumn;
    return isTimeline && std::ranges::any_of(timeline::frameColumns, [&](const char* name) {
               return column == work_.log.findColumn(name);
           });
}

bool FrameCounts::has(unsigned column) const {
    return std::ranges::find(columns_, column) != columns_.end();
}

std::optional<std::int64_t> FrameCounts::frames(unsigned row, unsigned column) const {
    constexpr std::size_t compactTimecode = 8;
    const std::string_view text = trimmed(work_.log.cell(row, column));
    return text.size() < compactTimecode ? wholeNumber(text) : std::nullopt;
}

std::optional<std::int64_t> FrameCounts::between(const RangeColumns& pair, unsigned row) const {
    const std::optional<Timecode> start = work_.counting.timecode(row, pair.start);
    const std::optional<Timecode> end = work_.counting.timecode(row, pair.end);
    if (!start || !end) return {};
    return framesBetween(*start, *end, work_.nominal(row, pair.start));
}

FrameCounts::Found FrameCounts::timesWith(std::int64_t frames, unsigned row) const {
    Found found;
    for (const RangeColumns& pair : pairs_) {
        const std::optional<std::int64_t> length = between(pair, row);
        if (!length) continue;
        if (!found.areTimed) found.length = *length;
        found.areTimed = true;
        if (*length != frames) continue;
        found.times = pair;
        found.start =
            framesOf(*work_.counting.timecode(row, pair.start), work_.nominal(row, pair.start));
        return found;
    }
    return found;
}

// One number in all rows may be any other thing.
std::optional<RangeColumns> FrameCounts::timesOfAll(unsigned column) const {
    std::vector<RangeColumns> left = pairs_;
    std::optional<std::int64_t> first;
    bool areSeveral = false;
    for (unsigned row = 0; row < work_.log.rowCount() && !left.empty(); ++row) {
        if (trimmed(work_.log.cell(row, column)).empty()) continue;
        const std::optional<std::int64_t> number = frames(row, column);
        if (!number) return {};
        areSeveral = areSeveral || (first && first != number);
        first = number;
        std::erase_if(left, [&](const RangeColumns& pair) { return between(pair, row) != number; });
    }
    if (!areSeveral || left.empty()) return {};
    return left.front();
}

}  // namespace vek::timecode
