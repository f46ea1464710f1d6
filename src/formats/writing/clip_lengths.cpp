#include "formats/writing/clip_lengths.h"

#include "formats/text/text_lines.h"
#include "formats/timecode/exact_time.h"
#include "formats/timecode/timeline_columns.h"
#include "formats/writing/sheet_facts.h"

namespace vek::formats {

ClipLengths::ClipLengths(const Sheet& sheet, const LogCounting& counting,
                         const RangeColumns& source, const RangeColumns& record)
    : sheet_(sheet),
      counting_(counting),
      source_(source),
      record_(record),
      rate_(placeNamed(sheet, timeline::rate)),
      recordRate_(placeNamed(sheet, timeline::recordRate)) {}

std::optional<Timecode> ClipLengths::timecode(unsigned row, unsigned column) const {
    if (column == noColumn) return {};
    std::optional<Timecode> code = parseTimecode(trimmed(sheet_.cell(row, column)));
    if (!code) return code;
    const Counting said = counting_.counting(sheet_.view->baseIndex(row), sheet_.columns[column]);
    code->dropFrame = code->dropFrame || said == Counting::dropFrame;
    return code;
}

FrameRate ClipLengths::rateIn(unsigned row, unsigned column) const {
    if (column == noColumn) return rate();
    const std::optional<FrameRate> own = parseFrameRate(sheet_.cell(row, column));
    return own ? *own : rate();
}

FrameRate ClipLengths::sourceRate(unsigned row) const {
    return rateIn(row, rate_);
}

FrameRate ClipLengths::recordRate(unsigned row) const {
    return rateIn(row, recordRate_);
}

std::optional<std::int64_t> ClipLengths::inSource(unsigned row) const {
    return between(row, source_, sourceRate(row).nominal);
}

std::optional<std::int64_t> ClipLengths::onRecord(unsigned row) const {
    return between(row, record_, recordRate(row).nominal);
}

std::optional<std::int64_t> ClipLengths::between(unsigned row, const RangeColumns& pair,
                                                 int nominal) const {
    const std::optional<Timecode> start = timecode(row, pair.start);
    const std::optional<Timecode> end = timecode(row, pair.end);
    if (!start || !end) return {};
    return framesBetween(*start, *end, nominal);
}

std::int64_t ClipLengths::asRecord(std::int64_t frames, unsigned row) const {
    const FrameRate own = sourceRate(row);
    const FrameRate record = recordRate(row);
    if (own.isAsFastAs(record)) return frames;
    const auto made = ExactTime::ofFrames(frames, own).frames(record);
    return made ? made->whole : frames;
}

bool ClipLengths::endsBeforeStart(unsigned row, const RangeColumns& pair) const {
    const std::optional<Timecode> start = timecode(row, pair.start);
    const std::optional<Timecode> end = timecode(row, pair.end);
    return start && end && end->order() < start->order() && !isOverMidnight(*start, *end);
}

}  // namespace vek::formats
