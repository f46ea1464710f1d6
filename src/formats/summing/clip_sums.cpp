#include "formats/summing/clip_sums.h"

#include <algorithm>
#include <unordered_map>

#include <vekdb/host/strxcmp.h>
#include <vekdb/views/view_rep.h>
#include "formats/text/text_lines.h"

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
        if (groups_.empty() || groups_[last_].name != value) last_ = placeOf(value);
        addTo(groups_[last_].sums, clip);
    }

    ClipGroups sorted() && {
        std::sort(groups_.begin(), groups_.end(), isBefore);
        return std::move(groups_);
    }

private:
    std::size_t placeOf(std::string_view value) {
        auto [known, isNew] = places_.try_emplace(value, groups_.size());
        if (isNew) groups_.push_back({std::string(value), {}});
        return known->second;
    }

    unsigned column_;
    std::size_t last_ = 0;
    ClipGroups groups_;
    std::unordered_map<std::string_view, std::size_t, Quor::KeyedHash> places_;
};

}  // namespace

ClipPlaces::ClipPlaces(const Log& log)
    : scene(firstColumn(log, {"Scene"})),
      take(firstColumn(log, {"Take"})),
      time(sourceColumns(log)),
      keycode(keycodeColumns(log)) {}

void addTo(ClipSums& sums, const ClipFacts& clip) {
    ++sums.clips;
    if (!clip.scene.empty()) sums.scenes.insert(clip.scene);
    sums.takes += clip.isTake ? 1 : 0;
    sums.frames += clip.frames;
    sums.untimed += clip.isUntimed ? 1 : 0;
    sums.dropFrame = sums.dropFrame || clip.dropFrame;
    sums.perforations += clip.perforations;
    sums.unfilmed += clip.isUnfilmed ? 1 : 0;
}

void addTo(ClipSums& total, const ClipSums& sums) {
    total.clips += sums.clips;
    total.scenes.insert(sums.scenes.begin(), sums.scenes.end());
    total.takes += sums.takes;
    total.frames += sums.frames;
    total.untimed += sums.untimed;
    total.dropFrame = total.dropFrame || sums.dropFrame;
    total.perforations += sums.perforations;
    total.unfilmed += sums.unfilmed;
}

ClipFacts ClipCounter::clip(unsigned row) const {
    ClipFacts clip;
    if (places_.scene != noColumn) clip.scene = log_.cell(row, places_.scene);
    clip.isTake = places_.take != noColumn && !log_.cell(row, places_.take).empty();
    readTime(row, clip);
    readFilm(row, clip);
    return clip;
}

void ClipCounter::readTime(unsigned row, ClipFacts& clip) const {
    if (places_.time.start == noColumn || rates_.nominal() == 0) return;
    std::optional<Timecode> start = rates_.counting.timecode(row, places_.time.start);
    std::optional<Timecode> end = rates_.counting.timecode(row, places_.time.end);
    std::optional<std::int64_t> frames;
    if (start && end) frames = framesBetween(*start, *end, rates_.nominal());
    clip.isUntimed = !frames;
    if (!frames) return;
    clip.frames = *frames;
    clip.dropFrame = start->dropFrame || end->dropFrame;
}

// Clips without film have no keycodes, and nothing that could be left out.
void ClipCounter::readFilm(unsigned row, ClipFacts& clip) const {
    if (places_.keycode.start == noColumn) return;
    std::string_view head = log_.cell(row, places_.keycode.start);
    std::string_view tail = log_.cell(row, places_.keycode.end);
    if (trimmed(head).empty() && trimmed(tail).empty()) return;
    std::optional<Keycode> start = parseKeycode(head);
    std::optional<Keycode> end = parseKeycode(tail);
    std::optional<std::int64_t> length;
    if (start && end) length = perforationsBetween(*start, *end, rates_.gauge);
    clip.perforations = length.value_or(0);
    clip.isUnfilmed = !length;
}

// What a row adds is worked out once for all columns.
ClipTables tablesOf(const ClipCounter& counter, const Log& log, const VDBView& view,
                    const std::vector<unsigned>& columns) {
    std::vector<GroupsOfColumn> groups(columns.begin(), columns.end());
    const unsigned count = view->get_num_records();
    for (unsigned i = 0; i < count; ++i) {
        const unsigned row = view->baseIndex(i);
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
    for (unsigned column :
         {firstColumn(log, {"Reel", "Tape", "Camroll"}), firstColumn(log, {"Scene"})}) {
        if (column != noColumn) columns.push_back(column);
    }
    return columns;
}

}  // namespace vek::formats
