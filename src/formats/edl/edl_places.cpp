#include "formats/edl/edl_places.h"

#include <algorithm>
#include <iterator>

#include "formats/edl/blank_lines.h"
#include "formats/edl/edl_lines.h"
#include "formats/edl/kinds_on_sheet.h"
#include "formats/timecode/timeline_columns.h"
#include "formats/writing/sheet_facts.h"

namespace vek::formats {

namespace {

// What no event is without. Lengths, names and comments may be left out of what was one.
constexpr EdlColumn ofEveryEvent[] = {edlEvent,    edlReel,      edlTrack,    edlKind,
                                      edlSourceIn, edlSourceOut, edlRecordIn, edlRecordOut};

}  // namespace

EdlPlaces::EdlPlaces(const Sheet& sheet) : sheet_(sheet) {
    isEdl_ = std::all_of(std::begin(ofEveryEvent), std::end(ofEveryEvent),
                         [&](EdlColumn column) { return has(edlColumnNames[column]); });
    event = take({"Event"});
    reel = take(reelNames);
    track = take({"Track", "Tracks"});
    kind = isEdl_ || placeOfEdlKinds(sheet) != noColumn ? take({"Kind"}) : noColumn;
    length = kind != noColumn ? take({"Length"}) : noColumn;
    clipName = take({"Clip Name", "Name", "Clip"});
    toClipName = take({"To Clip Name"});
    counting = take({"FCM"});
    source = take(isEdl_ ? edlPair(sourceOfEvent) : sourceColumns(sheet.log));
    record = take(isEdl_ ? edlPair(recordOfEvent) : recordColumns(sheet.log));
    takeComments(edlCommentsName, comments);
    if (isEdl_) takeComments(edlCommentsBeforeName, before);
    blanks = isEdl_ ? take({blankLinesColumn}) : noColumn;
    if (!isEdl_ && isTimeline(sheet.log)) takeTimeline();
}

void EdlPlaces::takeTimeline() {
    rowKind = take({timeline::kind});
    take({timeline::place});
    marker = take({timeline::marker});
    color = take({timeline::color});
    note = placeNamed(sheet_, timeline::note);
    rate = placeNamed(sheet_, timeline::rate);
    transition = take({timeline::transition});
    enabled = placeNamed(sheet_, timeline::enabled);
}

std::vector<unsigned> EdlPlaces::others() const {
    std::vector<unsigned> out;
    for (unsigned i = 0; i < sheet_.columns.size(); ++i) {
        if (!taken_.contains(i)) out.push_back(i);
    }
    return out;
}

unsigned EdlPlaces::find(const std::string& name) const {
    return placeNamed(sheet_, name);
}

unsigned EdlPlaces::take(std::initializer_list<const char*> names) {
    return take(std::span(names.begin(), names.size()));
}

unsigned EdlPlaces::take(std::span<const char* const> names) {
    for (const char* name : names) {
        unsigned at = find(name);
        if (at == noColumn) continue;
        taken_.insert(at);
        return at;
    }
    return noColumn;
}

RangeColumns EdlPlaces::edlPair(const RangeName& names) const {
    return {sheet_.log.findColumn(names.start), sheet_.log.findColumn(names.end)};
}

RangeColumns EdlPlaces::take(const RangeColumns& columns) {
    RangeColumns pair{placeOnSheet(sheet_, columns.start), placeOnSheet(sheet_, columns.end)};
    if (pair.start == noColumn || pair.end == noColumn) return {noColumn, noColumn};
    taken_.insert({pair.start, pair.end});
    return pair;
}

void EdlPlaces::takeComments(std::string (*nameOf)(std::size_t), std::vector<unsigned>& to) {
    for (std::size_t piece = 0;; ++piece) {
        unsigned at = find(nameOf(piece));
        if (at == noColumn) return;
        taken_.insert(at);
        to.push_back(at);
    }
}

}  // namespace vek::formats
