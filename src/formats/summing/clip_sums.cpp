#include "formats/summing/clip_sums.h"

#include <algorithm>

#include <vekdb/host/strxcmp.h>
#include "formats/text/text_lines.h"
#include "formats/timecode/exact_time.h"
#include "formats/timecode/timeline_columns.h"

namespace vek::formats {

namespace {

bool isBefore(const ClipGroup& a, const ClipGroup& b) {
    int order = strxcmp(std::string_view(a.name), std::string_view(b.name));
    return order != 0 ? order < 0 : a.name < b.name;
}

// The groups of one column. They are found by hash, and put in order once: where a value is a
// number of many digits, to compare each row with it would take their square.
class GroupsOfColumn {
public:
    explicit GroupsOfColumn(unsigned column) : column_(column) {}

    // Rows of one group often stand together.
    void add(const Log& log, unsigned row, const ClipFacts& clip) {
        const std::string_view value = log.cell(row, column_);
        if (groups_.empty() || groups_[last_].name != value) last_ = placeOf(value, clip);
        addTo(groups_[last_].sums, clip);
    }

    ClipGroups sorted() && {
        std::sort(groups_.begin(), groups_.end(), isBefore);
        return std::move(groups_);
    }

private:
    std::size_t placeOf(std::string_view value, const ClipFacts& clip) {
        const bool isScene = !value.empty() && value.data() == clip.scene.data() &&
                             value.size() == clip.scene.size();
        const std::size_t place = isScene ? places_.of(value, clip.sceneHash) : places_.of(value);
        if (place == groups_.size()) groups_.push_back({std::string(value), {}});
        return place;
    }

    unsigned column_;
    std::size_t last_ = 0;
    ClipGroups groups_;
    TextNumbers places_;
};

}  // namespace

ClipCounter::ClipCounter(const Log& log, const ClipRates& rates)
    : log_(log),
      rates_(rates),
      places_(log),
      kind_(isTimeline(log) ? log.findColumn(timeline::kind) : noColumn) {}

ClipPlaces::ClipPlaces(const Log& log)
    : scene(firstColumn(log, {"Scene"})),
      take(firstColumn(log, {"Take"})),
      time(sourceColumns(log)),
      keycode(keycodeColumns(log)) {}

void RunningFrames::add(std::int64_t frames, const FrameRate& own, const FrameRate& ofLog) {
    rate_ = ofLog;
    const auto isSame = [&](const Part& part) { return part.rate.isAsFastAs(own); };
    const auto known = std::find_if(parts_.begin(), parts_.end(), isSame);
    if (known == parts_.end())
        parts_.push_back({own, frames});
    else
        known->frames += frames;
}

void RunningFrames::add(const RunningFrames& other) {
    for (const Part& part : other.parts_) add(part.frames, part.rate, other.rate_);
}

RunningFrames::operator std::int64_t() const {
    if (parts_.size() == 1 && parts_[0].rate.isAsFastAs(rate_)) return parts_[0].frames;
    ExactTime sum;
    std::int64_t begun = 0;
    for (const Part& part : parts_) {
        const auto time = ExactTime::ofFrames(part.frames, part.rate);
        const std::optional<ExactTime::Frames> frames = time.frames(rate_);
        begun += frames ? frames->whole : 0;
        sum = sum + time;
    }
    // Rates that are many and odd have no sum that is exact.
    const std::optional<ExactTime::Frames> frames = sum.frames(rate_);
    return frames ? frames->whole : begun;
}

void addTo(ClipSums& sums, const ClipFacts& clip) {
    ++sums.clips;
    if (!clip.scene.empty()) sums.scenes.of(clip.scene, clip.sceneHash);
    sums.takes += clip.isTake ? 1 : 0;
    if (clip.rate.nominal != 0) sums.frames.add(clip.frames, clip.rate, clip.rateOfLog);
    sums.untimed += clip.isUntimed ? 1 : 0;
    sums.noFrames += clip.hasNoFrame ? 1 : 0;
    sums.dropFrame = sums.dropFrame || clip.dropFrame;
    sums.perforations += clip.perforations;
    sums.unfilmed += clip.isUnfilmed ? 1 : 0;
}

void addTo(ClipSums& total, const ClipSums& sums) {
    total.clips += sums.clips;
    total.scenes.add(sums.scenes);
    total.takes += sums.takes;
    total.frames.add(sums.frames);
    total.untimed += sums.untimed;
    total.noFrames += sums.noFrames;
    total.dropFrame = total.dropFrame || sums.dropFrame;
    total.perforations += sums.perforations;
    total.unfilmed += sums.unfilmed;
}

bool ClipCounter::isClip(unsigned row) const {
    return kind_ == noColumn || timelineKind(log_.cell(row, kind_)) == TimelineKind::clip;
}

ClipFacts ClipCounter::clip(unsigned row) const {
    const dbrecord& cells = recordOf(log_, row);
    ClipFacts clip;
    if (places_.scene != noColumn) clip.scene = cells.fieldView(places_.scene);
    if (!clip.scene.empty()) clip.sceneHash = Quor::keyedHash(clip.scene);
    clip.isTake = places_.take != noColumn && !cells.fieldView(places_.take).empty();
    readTime(row, cells, clip);
    readFilm(cells, clip);
    return clip;
}

void ClipCounter::readTime(unsigned row, const dbrecord& cells, ClipFacts& clip) const {
    if (places_.time.start == noColumn || rates_.nominal() == 0) return;
    const auto timeIn = [&](unsigned column) {
        return rates_.counting.timecode(row, column, cells.fieldView(column));
    };
    const std::optional<Timecode> start = timeIn(places_.time.start);
    const std::optional<Timecode> end = timeIn(places_.time.end);
    const FrameRate rate = *rates_.counting.rate(row, places_.time.start);
    std::optional<std::int64_t> frames;
    clip.hasNoFrame =
        (start && !isCounted(*start, rate.nominal)) || (end && !isCounted(*end, rate.nominal));
    if (start && end && !clip.hasNoFrame) frames = framesBetween(*start, *end, rate.nominal);
    clip.isUntimed = !frames;
    if (!frames) return;
    clip.frames = *frames;
    clip.rate = rate;
    clip.rateOfLog = *rates_.counting.rate();
    clip.dropFrame = start->dropFrame || end->dropFrame;
}

// Clips without film have no keycodes, and nothing that could be left out.
void ClipCounter::readFilm(const dbrecord& cells, ClipFacts& clip) const {
    if (places_.keycode.start == noColumn) return;
    const std::string_view head = cells.fieldView(places_.keycode.start);
    const std::string_view tail = cells.fieldView(places_.keycode.end);
    if (trimmed(head).empty() && trimmed(tail).empty()) return;
    std::optional<Keycode> start = parseKeycode(head);
    std::optional<Keycode> end = parseKeycode(tail);
    std::optional<std::int64_t> length;
    if (start && end) length = perforationsBetween(*start, *end, rates_.gauge);
    clip.perforations = length.value_or(0);
    clip.isUnfilmed = !length;
}

// What a row adds is worked out once for all columns.
ClipTables tablesOf(const ClipCounter& counter, const Log& log, const std::vector<unsigned>& rows,
                    const std::vector<unsigned>& columns) {
    std::vector<GroupsOfColumn> groups(columns.begin(), columns.end());
    for (unsigned row : rows) {
        if (!counter.isClip(row)) continue;
        const ClipFacts clip = counter.clip(row);
        for (GroupsOfColumn& each : groups) each.add(log, row, clip);
    }
    ClipTables tables;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        tables.emplace_back(log.columnName(columns[i]), std::move(groups[i]).sorted());
    }
    return tables;
}

std::vector<unsigned> clipGroupColumns(const Log& log) {
    std::vector<unsigned> columns;
    for (unsigned column : {reelColumn(log), firstColumn(log, {"Scene"})}) {
        if (column != noColumn) columns.push_back(column);
    }
    return columns;
}

}  // namespace vek::formats
