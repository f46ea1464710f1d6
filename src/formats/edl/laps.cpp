#include "formats/edl/laps.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>

#include <vekdb/host/text_util.h>
#include "formats/edl/edl_lines.h"
#include "formats/text/letters.h"
#include "formats/text/text_lines.h"
#include "formats/timecode/timeline_columns.h"
#include "formats/writing/sheet_facts.h"

namespace vek::formats {

namespace {

const Lap none;

// The place of the thing before or behind, "1.4" for "1.3"; "" where there is none.
std::string placeBeside(std::string_view place, int by) {
    const std::size_t point = place.rfind('.');
    if (point == place.npos) return {};
    int number = 0;
    const auto [end, error] =
        std::from_chars(place.data() + point + 1, place.data() + place.size(), number);
    if (error != std::errc() || end != place.data() + place.size() || number >= 1 << 30) return {};
    return concat(place.substr(0, point + 1), std::to_string(number + by));
}

}  // namespace

TransitionKind transitionKindOf(std::string_view type, std::string_view name) {
    std::string small;
    addLower(small, type);
    const bool isNumbered = name.size() == 4 && asciiLower(name[0]) == 'w' && isEdlKind(name);
    if (isNumbered) return {std::string(name)};
    if (small.find("dissolve") != small.npos) return {"D"};
    if (small.find("wipe") != small.npos) return {"W001"};
    return {"D", false};
}

Laps::Laps(const Sheet& sheet, unsigned kind, const RangeColumns& source,
           const RangeColumns& record, const LogCounting& counting, const ClipLengths& lengths)
    : sheet_(sheet), source_(source), record_(record), lengths_(lengths) {
    const unsigned place = placeNamed(sheet, timeline::place);
    if (kind == noColumn || place == noColumn || record.start == noColumn) return;
    if (counting.nominal() == 0) return;
    const auto isOf = [&](unsigned row, TimelineKind wanted) {
        return timelineKind(sheet_.cell(row, kind)) == wanted;
    };
    for (unsigned row = 0; row < sheet.rowCount(); ++row) {
        const bool isClip = isOf(row, TimelineKind::clip) && lengths.onRecord(row);
        clips_.emplace(sheet.cell(row, place), isClip ? row : noColumn);
    }
    for (unsigned row = 0; row < sheet.rowCount(); ++row) {
        if (isOf(row, TimelineKind::transition)) add(row, sheet.cell(row, place));
    }
}

const Lap& Laps::of(unsigned row) const {
    const auto at = laps_.find(row);
    return at == laps_.end() ? none : at->second;
}

bool Laps::isOfClip(unsigned transition) const {
    return toClips_.contains(transition);
}

const Lap* Laps::toBlack(unsigned transition) const {
    const auto at = blacks_.find(transition);
    return at == blacks_.end() ? nullptr : &at->second;
}

std::optional<std::int64_t> Laps::meetingIn(unsigned transition) const {
    const auto at = meetings_.find(transition);
    return at == meetings_.end() ? std::nullopt : std::optional(at->second);
}

unsigned Laps::clipAt(const std::string& place) const {
    const auto at = clips_.find(place);
    return at == clips_.end() ? noColumn : at->second;
}

// A stack, a track or another transition is neither an event nor black.
bool Laps::isOther(const std::string& place) const {
    const auto at = clips_.find(place);
    return at != clips_.end() && at->second == noColumn;
}

std::int64_t Laps::startOf(unsigned row) const {
    return framesOf(*lengths_.timecode(row, record_.start), lengths_.recordRate(row).nominal);
}

// Where the clips meet is within the transition, as its own times say.
void Laps::add(unsigned transition, std::string_view place) {
    const std::string before = placeBeside(place, -1);
    const std::string behind = placeBeside(place, 1);
    if (isOther(before) || isOther(behind)) return;
    const unsigned from = clipAt(before);
    const unsigned to = clipAt(behind);
    const std::optional<std::int64_t> length = lengths_.onRecord(transition);
    if (!length || (from == noColumn && to == noColumn)) return;
    const std::int64_t begin = startOf(transition);
    const std::int64_t cut =
        to != noColumn ? startOf(to) : startOf(from) + *lengths_.onRecord(from);
    const std::int64_t lap = cut - begin;
    if (lap < 0 || lap > *length) return;
    meetings_[transition] = lap;
    const bool moves = (from == noColumn || canMove(from)) && (to == noColumn || canMove(to)) &&
                       (from == noColumn || lap <= *lengths_.onRecord(from));
    const std::optional<Timecode> start =
        to == noColumn ? std::nullopt : lengths_.timecode(to, source_.start);
    const bool hasRoom = !start || framesOf(*start, lengths_.sourceRate(to).nominal) >= lap;
    const std::int64_t lead = moves && hasRoom ? lap : 0;
    if (from != noColumn) laps_[from].tail = lead;
    Lap& own = to == noColumn ? blacks_[transition] : laps_[to];
    own.transition = transition;
    own.from = from;
    own.length = *length;
    own.lead = lead;
    own.late = lap - lead;
    if (to != noColumn) toClips_[transition] = to;
}

// Clips that run at the speed of the record.
bool Laps::canMove(unsigned row) const {
    const std::optional<std::int64_t> source = lengths_.inSource(row);
    const std::optional<std::int64_t> record = lengths_.onRecord(row);
    return source && record && std::abs(*source - *record) <= 1 &&
           lengths_.sourceRate(row).isAsFastAs(lengths_.recordRate(row));
}

}  // namespace vek::formats
