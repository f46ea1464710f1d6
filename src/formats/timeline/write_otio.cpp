#include <algorithm>
#include <cmath>
#include <map>
#include <queue>
#include <span>

#include <vekdb/host/text_util.h>
#include "formats/edl/laps.h"
#include "formats/input/progress.h"
#include "formats/json/json.h"
#include "formats/text/text_lines.h"
#include "formats/timecode/clip_columns.h"
#include "formats/timecode/counting.h"
#include "formats/timeline/edit_events.h"
#include "formats/timeline/time_warps.h"
#include "formats/timeline/timeline_rows.h"
#include "formats/writing/clip_lengths.h"
#include "formats/writing/sheet_facts.h"
#include "formats/writing/write_formats.h"

namespace vek::formats {

namespace {

constexpr std::size_t noNest = static_cast<std::size_t>(-1);
constexpr std::ptrdiff_t deepest = 32;

// A clip, a transition or what is nested, where it lies on the record. Frames.
struct Item {
    unsigned row = 0;
    std::int64_t start = 0;
    std::int64_t length = 0;
    bool isTransition = false;
    std::size_t nest = noNest;
    bool isMade = false;       // of an edit list's event, of which the clip is the row
    unsigned from = noColumn;  // a row of no length that the transition comes from
};

// A stack or track within a track, where it lies on the record. What stands in it begins so many
// frames before what is seen of it.
struct Nest {
    unsigned row = 0;
    bool isStack = false;
    std::int64_t start = 0;
    std::int64_t length = 0;
    std::optional<std::int64_t> hidden = {};  // nothing where all of it is seen
    std::vector<Item> items = {};
};

struct Track {
    std::string name;
    unsigned row = noColumn;  // of the track itself, where the log has one
    std::vector<Item> items;
};

bool comesBefore(const Item& a, const Item& b) {
    if (a.start != b.start) return a.start < b.start;
    const auto goesFirst = [](const Item& item) { return item.isTransition && !item.isMade; };
    return goesFirst(a) && !goesFirst(b);
}

// A track of sound, by its name: "A", "A2".
bool isSound(std::string_view track) {
    if (track.empty() || asciiLower(track[0]) != 'a') return false;
    return std::all_of(track.begin() + 1, track.end(), isAsciiDigit);
}

class OtioWriter {
public:
    OtioWriter(const Sheet& sheet, const WriteStyle& style, Output& out, Losses& losses)
        : sheet_(sheet),
          out_(out),
          losses_(losses),
          counting_(sheet.log, style.rate),
          isTimeline_(isTimeline(sheet.log)),
          events_(sheet),
          names_(distinctNames(sheet, losses)) {
        findColumns();
        require();
        lengths_.emplace(sheet_, counting_, source_, record_);
    }

    void write() {
        const std::string overruled = counting_.overruled();
        if (!overruled.empty()) losses_.addEach(concat(sheet_.log.name, ": ", overruled));
        findNests();
        for (unsigned row = 0; row < sheet_.rowCount(); ++row) place(row);
        for (auto& [name, track] : tracks_) addLanes(track);
        writeTimeline();
    }

private:
    unsigned find(std::initializer_list<const char*> names) const {
        return find(std::span(names.begin(), names.size()));
    }

    unsigned find(std::span<const char* const> names) const {
        for (const char* name : names) {
            const unsigned at = placeNamed(sheet_, name);
            if (at != noColumn) return at;
        }
        return noColumn;
    }

    RangeColumns onSheet(const RangeColumns& columns) const {
        RangeColumns pair{placeOnSheet(sheet_, columns.start), placeOnSheet(sheet_, columns.end)};
        if (pair.start == noColumn || pair.end == noColumn) return {noColumn, noColumn};
        return pair;
    }

    void findColumns() {
        source_ = onSheet(sourceColumns(sheet_.log));
        record_ = onSheet(recordColumns(sheet_.log));
        clipName_ = find({"Clip Name", "Name", "Clip"});
        reel_ = find(reelNames);
        track_ = find({"Track", "Tracks"});
        kind_ = isTimeline_ ? find({timeline::kind}) : noColumn;
        rate_ = find({timeline::rate});
    }

    void require() {
        if (source_.start == noColumn) {
            throw Failure{unwritable, sheet_.log.name +
                                          ": no pair of columns such as Start and End, expected "
                                          "source times for the clips of a timeline"};
        }
        if (counting_.nominal() != 0) return;
        throw Failure{wrongUsage, concat(sheet_.log.name,
                                         ": no frame rate for the times of a timeline; expected ",
                                         sheet_.log.opening.terms->rate)};
    }

    std::string_view cell(unsigned row, unsigned column) const {
        return column == noColumn ? std::string_view() : sheet_.cell(row, column);
    }

    const FrameRate& rate() const { return *counting_.rate(); }

    // One within a track; the timeline's own is no row.
    bool isStack(unsigned row) const {
        return sameText(cell(row, kind_), "Stack") &&
               placeOf(row).find('.') != std::string_view::npos;
    }

    TimelineKind kind(unsigned row) const {
        if (kind_ == noColumn) return TimelineKind::clip;
        return isStack(row) ? TimelineKind::track : timelineKind(cell(row, kind_));
    }

    void place(unsigned row) {
        tellNoFrames(row);
        switch (kind(row)) {
            case TimelineKind::clip:
                return placeClip(row);
            case TimelineKind::marker:
            case TimelineKind::note:
                return markers_[owner_].push_back(row);
            case TimelineKind::transition:
                return placeTransition(row);
            case TimelineKind::track:
                return placeTrack(row);
            case TimelineKind::other:
                leaveOut(row, "a row of kind " + inQuotes(cell(row, kind_)),
                         "a clip, marker, transition or track");
        }
    }

    // What lies on the record within another one, by its place.
    void findNests() {
        for (unsigned row = 0; row < sheet_.rowCount(); ++row) {
            const std::string_view at = placeOf(row);
            const std::ptrdiff_t depth = std::count(at.begin(), at.end(), '.');
            const bool isNested = depth > 0 && depth <= deepest;
            if (!isNested || kind(row) != TimelineKind::track) continue;
            const std::optional<std::int64_t> length = lengths_->onRecord(row);
            if (!length || !nestAt_.try_emplace(std::string(at), nests_.size()).second) continue;
            Nest nest{row, isStack(row)};
            nest.start = *recordStart(row);
            nest.length = onTimeline(*length, row);
            if (const auto hidden = lengths_->timecode(row, source_.start)) {
                const int nominal = lengths_->sourceRate(row).nominal;
                nest.hidden = played(framesOf(*hidden, nominal), row);
            }
            nests_.push_back(std::move(nest));
        }
    }

    std::string_view placeOf(unsigned row) const {
        return kind_ == noColumn ? std::string_view() : cell(row, find({timeline::place}));
    }

    // Those among which a row lies.
    std::vector<Item>& itemsAround(unsigned row) {
        const std::string_view at = placeOf(row);
        const auto nest = nestAt_.find(at.substr(0, std::min(at.rfind('.'), at.size())));
        const bool isIn = nest != nestAt_.end() && at.find('.') != at.npos;
        return isIn ? nests_[nest->second].items : trackOf(row).items;
    }

    void placeTrack(unsigned row) {
        const std::string_view at = placeOf(row);
        const auto nest = nestAt_.find(at);
        const bool isNest = nest != nestAt_.end() && nests_[nest->second].row == row;
        if (isNest) {
            const Nest& own = nests_[nest->second];
            itemsAround(row).push_back({row, own.start, own.length, false, nest->second});
        } else if (at.find('.') != at.npos) {
            return leaveOut(row, "a stack or track within another without a place on the record",
                            "Record In and Record Out");
        } else if (trackOf(row).row != noColumn) {
            return leaveOut(row, concat("a second track ", inQuotes(trackOf(row).name)), "one");
        } else {
            trackOf(row).row = row;
        }
        owner_ = row;
    }

    void leaveOut(unsigned row, const std::string& found, const char* expected) {
        tell(row, found, expected, "the row is left out");
    }

    void leaveOutUntimed(unsigned row, const RangeColumns& pair, const char* where) {
        if (lengths_->endsBeforeStart(row, pair))
            leaveOut(row, concat("an end before its start ", where), "one that is not");
        else
            leaveOut(row, concat("no start and end ", where), "timecodes");
    }

    void tell(unsigned row, const std::string& found, const std::string& expected,
              const std::string& outcome) {
        losses_.addEach(
            worded(sheet_.source(row), {sheet_.line(row), "", found, expected, outcome}));
    }

    Track& trackOf(unsigned row) { return trackNamed(trackName(row)); }

    std::string trackName(unsigned row) const {
        const std::string_view own = trimmed(cell(row, track_));
        return own.empty() ? "V" : std::string(own);
    }

    Track& trackNamed(const std::string& name) {
        auto [at, isNew] = trackNumbers_.try_emplace(name, tracks_.size());
        if (isNew) tracks_.push_back({name, {name, noColumn, {}}});
        return tracks_[at->second].second;
    }

    // A timeline counts frames, and so has no others than are there.
    void tellNoFrames(unsigned row) {
        for (unsigned column : {source_.start, source_.end}) {
            tellNoFrame(row, column, lengths_->sourceRate(row));
        }
        for (unsigned column : {record_.start, record_.end}) {
            tellNoFrame(row, column, lengths_->recordRate(row));
        }
    }

    void tellNoFrame(unsigned row, unsigned column, const FrameRate& own) {
        const std::optional<Timecode> code = lengths_->timecode(row, column);
        if (!code || isCounted(*code, own.nominal)) return;
        const std::string made =
            timecodeText(framesOf(*code, own.nominal), own.nominal, code->dropFrame);
        losses_.addEach(worded(
            sheet_.source(row),
            {sheet_.line(row), sheet_.name(column), inQuotes(cell(row, column)),
             "a frame that is there at " + rateText(own), concat("it is written as ", made)}));
    }

    void placeClip(unsigned row) {
        const std::optional<std::int64_t> length = lengths_->inSource(row);
        if (!length) return leaveOutUntimed(row, source_, "in the source");
        Item item{row, 0, played(*length, row), false};
        if (record_.start == noColumn) {
            item.start = laid_;
            laid_ += item.length;
        } else if (!placeOnRecord(row, item)) {
            return;
        }
        const bool isSped = item.length != played(*length, row);
        if (!isSped) tellBetweenFrames(row, *length);
        owner_ = row;
        if (!events_.areThere()) return itemsAround(row).push_back(item);
        if (!isFolded(item)) return layEvent(item);
        from_ = row;
    }

    // On each track that the event is of: the row itself, and copies for those who look there.
    void layEvent(Item item) {
        if (events_.isKey(item.row)) {
            tell(item.row, concat("a key ", inQuotes(events_.kind(item.row))),
                 "a cut, a dissolve or a wipe", "the timeline has a clip that says nothing of it");
        }
        const bool goesOver = events_.transition(item.row).has_value();
        unsigned from = std::exchange(from_, noColumn);
        for (const std::string& name : events_.tracks(trackName(item.row))) {
            std::vector<Item>& items = trackNamed(name).items;
            if (goesOver) items.push_back({item.row, item.start, 0, true, noNest, true, from});
            items.push_back(item);
            item.isMade = true;
            from = noColumn;
        }
    }

    // What an event comes from stands in front of it once more, without a length. Where the clip
    // before goes on so, a timeline has that clip alone, and the transition keeps the row.
    bool isFolded(const Item& item) {
        const unsigned next = item.row + 1;
        if (item.length != 0 || !events_.isContinued(next) || !events_.transition(next))
            return false;
        if (trackName(item.row) != trackName(next) || events_.isBlack(item.row)) return false;
        if (!lengths_->inSource(next) || !lengths_->onRecord(next)) return false;
        const std::vector<Item>& items =
            trackNamed(events_.tracks(trackName(item.row)).front()).items;
        if (items.empty() || items.back().isTransition) return false;
        const Item& last = items.back();
        return last.start + last.length == item.start && isSourceEnd(last, item.row) &&
               sameText(trimmed(cell(last.row, reel_)), trimmed(cell(item.row, reel_)));
    }

    bool isSourceEnd(const Item& last, unsigned row) const {
        const std::optional<Timecode> end = lengths_->timecode(last.row, source_.end);
        const std::optional<Timecode> start = lengths_->timecode(row, source_.start);
        const std::optional<Timecode> same = lengths_->timecode(row, source_.end);
        return end && start && same && end->order() == start->order() &&
               same->order() == start->order();
    }

    // Clips lie behind one another by how long they are, whatever their rates.
    void tellBetweenFrames(unsigned row, std::int64_t length) {
        const FrameRate own = lengths_->sourceRate(row);
        const auto frames = ExactTime::ofFrames(length, own).frames(rate());
        if (frames && frames->isExact) return;
        tell(row, concat(counted(static_cast<std::size_t>(length), "frame"), " at ", rateText(own)),
             concat("a length of whole frames at ", rateText(rate())),
             "it ends, and what is next to it begins, between two frames");
    }

    bool placeOnRecord(unsigned row, Item& item) {
        const std::optional<std::int64_t> own = lengths_->onRecord(row);
        if (!own) {
            leaveOutUntimed(row, record_, "in the record");
            return false;
        }
        item.start = *recordStart(row);
        const std::int64_t length = onTimeline(*own, row);
        if (length != item.length) {
            if (!saysSpeed(row)) {
                tell(row,
                     concat(std::to_string(item.length), " frames in the source and ",
                            std::to_string(length), " in the record"),
                     "as many", "the clip gets a change of speed");
            }
            item.length = length;
        }
        return true;
    }

    // Frames of a row's record as frames of the timeline, which has one rate.
    std::int64_t onTimeline(std::int64_t frames, unsigned row) const {
        const FrameRate own = lengths_->recordRate(row);
        if (own.isAsFastAs(rate())) return frames;
        const auto made = ExactTime::ofFrames(frames, own).frames(rate());
        return made ? made->whole : frames;
    }

    // How long frames of its source last there.
    std::int64_t played(std::int64_t frames, unsigned row) const {
        return onTimeline(lengths_->asRecord(frames, row), row);
    }

    std::optional<std::int64_t> recordStart(unsigned row) const {
        const std::optional<Timecode> start = lengths_->timecode(row, record_.start);
        if (!start) return {};
        return onTimeline(framesOf(*start, lengths_->recordRate(row).nominal), row);
    }

    // Whether it says itself why it runs for another time on the record.
    bool saysSpeed(unsigned row) const {
        return events_.isBlack(row) || events_.speed(row) || ownEffects(row) != "[]";
    }

    void placeTransition(unsigned row) {
        const std::optional<std::int64_t> start = recordStart(row);
        const std::optional<Offsets> offsets = start ? offsetsOf(row) : std::nullopt;
        if (!offsets) {
            return leaveOut(row, "a transition without its place",
                            "Record In and In Offset, or times around where its clips meet");
        }
        // What follows it lies on the clip in front of it, as a transition holds no markers.
        itemsAround(row).push_back({row, *start + offsets->before, 0, true});
    }

    // How far a transition reaches to both sides of where its clips meet.
    struct Offsets {
        std::int64_t before = 0;
        std::int64_t behind = 0;
    };

    std::optional<Offsets> offsetsOf(unsigned row) {
        const std::string_view own = trimmed(cell(row, find({timeline::inOffset})));
        if (own.empty()) return offsetsByTimes(row);
        const ExactTime before = ExactTime::of(own);
        const ExactTime behind = ExactTime::of(cell(row, find({timeline::outOffset})));
        if (!before.isKnown() || before.under() != 1) return {};
        return Offsets{before.over(), behind.isKnown() ? behind.over() : 0};
    }

    // One that says no more than when it begins and ends has its clips beside it.
    std::optional<Offsets> offsetsByTimes(unsigned row) {
        if (!laps_) laps_.emplace(sheet_, kind_, source_, record_, counting_, *lengths_);
        const std::optional<std::int64_t> meet = laps_->meetingIn(row);
        if (!meet) return {};
        const std::int64_t length = onTimeline(*lengths_->onRecord(row), row);
        const std::int64_t before = onTimeline(*meet, row);
        return Offsets{before, length - before};
    }

    // Clips that lie over one another do not fit one track; the first free one takes each.
    std::vector<std::vector<Item>> spread(std::vector<Item> items, std::string_view track) {
        std::stable_sort(items.begin(), items.end(), comesBefore);
        using End = std::pair<std::int64_t, std::size_t>;
        std::priority_queue<End, std::vector<End>, std::greater<>> ends;
        std::vector<std::vector<Item>> lanes(1);
        for (const Item& item : items) {
            std::size_t lane = ends.empty() ? 0 : lanes.size();
            if (!ends.empty() && (ends.top().first <= item.start || item.isTransition)) {
                lane = ends.top().second;
                ends.pop();
            }
            if (lane == lanes.size()) lanes.emplace_back();
            if (lane != 0) tellOver(item, track);
            lanes[lane].push_back(item);
            ends.push({item.start + item.length, lane});
        }
        return lanes;
    }

    void addLanes(Track& track) {
        for (std::vector<Item>& items : spread(std::move(track.items), track.name)) {
            lanes_.push_back({track.name, track.row, std::move(items)});
            track.row = noColumn;
        }
    }

    void tellOver(const Item& item, std::string_view track) {
        tell(item.row, concat("a clip over another one on track ", inQuotes(track)),
             "one behind it", "it goes on a track of its own");
    }

    std::int64_t startOfAll() const {
        std::optional<std::int64_t> first;
        for (const Track& lane : lanes_) {
            if (lane.items.empty()) continue;
            const std::int64_t start = lane.items.front().start;
            first = first ? std::min(*first, start) : start;
        }
        if (record_.start == noColumn) return framesOf({1, 0, 0, 0, false}, rate().nominal);
        return first.value_or(0);
    }

    void writeTimeline() {
        const std::int64_t start = startOfAll();
        zero_ = record_.start == noColumn ? 0 : start;
        out_.write(
            "{\"OTIO_SCHEMA\": \"Timeline.1\", \"name\": " + string(title()) +
            ",\n\"metadata\": {\"vekdb\": {\"rate\": " + string(rateText(rateAndCounting())) +
            (events_.areThere() ? ",\n  \"editList\": true" : "") + ",\n  \"columns\": {" +
            columns() + "},\n  \"names\": {" + ownNames() + "},\n  \"parameters\": {" +
            parameters() + "}}},\n\"global_start_time\": " + time(start, rate()) +
            ",\n\"tracks\": {\"OTIO_SCHEMA\": \"Stack.1\", \"name\": "
            "\"tracks\", \"source_range\": null, \"metadata\": {}, \"effects\": [], "
            "\"enabled\": true, \"markers\": " +
            markersOf(noColumn, zero_) + ", \"children\": [\n");
        Progress progress(sheet_.log.opening.watcher, "writing", sheet_.rowCount());
        std::size_t done = 0;
        for (std::size_t i = 0; i < lanes_.size(); ++i) {
            if (i > 0) out_.write(",\n");
            writeTrack(lanes_[i]);
            progress.reach(done += lanes_[i].items.size());
        }
        out_.write("\n]}}\n");
        if (record_.start == noColumn) {
            losses_.addEach(out_.name() +
                            ": no record times, the clips are laid end to end from 01:00:00:00");
        }
    }

    FrameRate rateAndCounting() const {
        FrameRate own = rate();
        own.counting = counting_.countingOfAll();
        return own;
    }

    std::string title() {
        std::string name = sheet_.log.parameter("TITLE");
        if (name.empty()) name = sheet_.log.parameter("Project");
        return name.empty() ? titleOfFile(sheet_, out_.name(), losses_) : name;
    }

    std::string string(std::string_view text) {
        bool wasChanged = false;
        std::string out;
        addJsonString(out, text, wasChanged);
        if (wasChanged) losses_.add("texts that are no UTF-8", inQuotes(text));
        return out;
    }

    static void addMember(std::string& to, const std::string& name, const std::string& value) {
        to += (to.empty() ? "" : ", ") + name + ": " + value;
    }

    std::string columns() {
        std::string out;
        for (const std::string& name : names_) addMember(out, string(name), "\"\"");
        return out;
    }

    // What the log calls the columns that every timeline has.
    std::string ownNames() {
        std::string out;
        const std::pair<const char*, unsigned> known[] = {
            {timeline::sourceIn, source_.start}, {timeline::sourceOut, source_.end},
            {timeline::recordIn, record_.start}, {timeline::recordOut, record_.end},
            {timeline::clipName, clipName_},     {timeline::reel, reel_}};
        for (const auto& [name, column] : known) {
            if (column != noColumn) addMember(out, string(name), string(names_[column]));
        }
        return out;
    }

    std::string parameters() {
        std::string out;
        for (const ParameterText& parameter : ownParameters(sheet_.log)) {
            addMember(out, string(parameter.name), string(parameter.value));
        }
        return out;
    }

    static std::string rateNumber(const FrameRate& rate) {
        if (!rate.isSlowed) return std::to_string(rate.nominal) + ".0";
        char text[32];
        std::snprintf(text, sizeof text, "%.15g", rate.nominal * 1000 / 1001.0);
        return text;
    }

    static std::string time(std::int64_t frames, const FrameRate& rate) {
        return "{\"OTIO_SCHEMA\": \"RationalTime.1\", \"rate\": " + rateNumber(rate) +
               ", \"value\": " + std::to_string(frames) + ".0}";
    }

    static std::string range(std::int64_t start, std::int64_t length, const FrameRate& startRate,
                             const FrameRate& lengthRate) {
        return "{\"OTIO_SCHEMA\": \"TimeRange.1\", \"start_time\": " + time(start, startRate) +
               ", \"duration\": " + time(length, lengthRate) + "}";
    }

    void writeTrack(const Track& track) {
        const bool isMade = track.row == noColumn;
        const std::string name = isMade ? track.name : std::string(cell(track.row, clipName_));
        out_.write(
            "{\"OTIO_SCHEMA\": \"Track.1\", \"name\": " + string(name) + kindOfTrack(track.name) +
            ", \"source_range\": null, \"effects\": " + (isMade ? "[]" : ownEffects(track.row)) +
            ", \"enabled\": " + (isMade || !isDisabled(track.row) ? "true" : "false") +
            ", \"markers\": " + (isMade ? "[]" : markersOf(track.row, zero_)) + ", \"metadata\": " +
            (isMade ? madeMetadata : metadata(track.row, {clipName_})) + ", \"children\": [");
        writeItems(track.items, zero_);
        out_.write("]}");
    }

    static std::string kindOfTrack(std::string_view track) {
        return isSound(track) ? ", \"kind\": \"Audio\"" : ", \"kind\": \"Video\"";
    }

    // One behind the other from a frame on, with gaps where the record has none.
    void writeItems(const std::vector<Item>& items, std::int64_t at) {
        bool isFirst = true;
        for (const Item& item : items) {
            if (item.start > at) writeGap(item.start - at, isFirst);
            out_.write(isFirst ? "\n" : ",\n");
            isFirst = false;
            writeItem(item, nullptr);
            at = std::max(at, item.start + item.length);
        }
    }

    // In a stack all things begin at one frame.
    void writeItem(const Item& item, const std::int64_t* ofStack) {
        if (item.nest != noNest) return writeNest(nests_[item.nest], ofStack);
        if (!item.isTransition) return writeClip(item);
        item.isMade ? writeGoingOver(item) : writeTransition(item);
    }

    // Tracks lie in a stack, and what begins later than it lies in a track that is made.
    void writeLayer(const std::vector<Item>& items, std::int64_t begin) {
        const Item& first = items.front();
        const bool isTrack = first.nest != noNest && !nests_[first.nest].isStack;
        const bool isAlone = items.size() == 1 && !first.isTransition;
        if (isAlone && (isTrack || first.start == begin)) return writeItem(first, &begin);
        out_.write(concat("{\"OTIO_SCHEMA\": \"Track.1\", \"name\": \"\"",
                          kindOfTrack(cell(first.row, track_)),
                          ", \"source_range\": null, \"effects\": [], \"enabled\": true, "
                          "\"markers\": [], \"metadata\": ",
                          madeMetadata, ", \"children\": ["));
        writeItems(items, begin);
        out_.write("]}");
    }

    void writeNest(const Nest& nest, const std::int64_t* ofStack) {
        // A track in a stack begins where that does.
        const bool isLaid = ofStack != nullptr && !nest.isStack && nest.start != *ofStack;
        const std::int64_t begin = isLaid ? *ofStack : nest.start - nest.hidden.value_or(0);
        std::vector<std::vector<Item>> lanes;
        if (nest.isStack) {
            for (const Item& item : nest.items) lanes.push_back({item});
        } else {
            lanes = spread(nest.items, cell(nest.row, track_));
        }
        const bool isStack = nest.isStack || lanes.size() > 1;
        const std::string seen = isLaid ? "null" : rangeOf(nest, ofStack);
        const char* note = seen == "null" || nest.hidden ? "" : "\"madeRange\": true, ";
        out_.write(
            concat(isStack ? "{\"OTIO_SCHEMA\": \"Stack.1\"" : "{\"OTIO_SCHEMA\": \"Track.1\"",
                   ", \"name\": ", string(cell(nest.row, clipName_)),
                   isStack ? "" : kindOfTrack(cell(nest.row, track_)), ", \"source_range\": ", seen,
                   ", \"effects\": ", ownEffects(nest.row),
                   ", \"enabled\": ", isDisabled(nest.row) ? "false" : "true",
                   ", \"markers\": ", markersOf(nest.row, nest.hidden.value_or(0)),
                   ", \"metadata\": ", metadata(nest.row, {clipName_}, note), ", \"children\": ["));
        if (!isStack) writeItems(lanes.front(), begin);
        for (std::size_t i = 0; isStack && i < lanes.size(); ++i) {
            out_.write(i == 0 ? "\n" : ",\n");
            writeLayer(lanes[i], begin);
        }
        out_.write("]}");
    }

    // What is seen of it, where that is not all that stands in it.
    std::string rangeOf(const Nest& nest, const std::int64_t* ofStack) const {
        if (nest.hidden) return range(*nest.hidden, nest.length, rate(), rate());
        std::int64_t end = nest.start;
        for (const Item& item : nest.items) end = std::max(end, item.start + item.length);
        const bool isAll = end - nest.start == nest.length || ofStack != nullptr;
        return isAll ? "null" : range(0, nest.length, rate(), rate());
    }

    void writeGap(std::int64_t length, bool& isFirst) {
        out_.write(std::string(isFirst ? "\n" : ",\n") +
                   "{\"OTIO_SCHEMA\": \"Gap.1\", \"name\": \"\", \"source_range\": " +
                   range(0, length, rate(), rate()) +
                   ", \"effects\": [], \"markers\": [], \"enabled\": true, \"metadata\": {}}");
        isFirst = false;
    }

    void writeClip(const Item& item) {
        const unsigned row = item.row;
        const FrameRate own = lengths_->sourceRate(row);
        const std::int64_t start = framesOf(*lengths_->timecode(row, source_.start), own.nominal);
        const std::int64_t length = *lengths_->inSource(row);
        const bool isSped = played(length, row) != item.length;
        const std::string effect = effects(row, isSped, length, item.length);
        const std::int64_t shown = isSped ? item.length : length;
        const std::int64_t inSource = playedLength(effect, shown);
        std::vector<unsigned> kept = keptTimes(item, start, inSource);
        const bool goesOver = events_.transition(row).has_value();
        if (clipName_ != noColumn && !goesOver) kept.push_back(clipName_);
        const bool isGap = events_.isBlack(row);
        out_.write(concat(isGap ? "{\"OTIO_SCHEMA\": \"Gap.1\"" : "{\"OTIO_SCHEMA\": \"Clip.2\"",
                          ", \"name\": ", string(nameOf(row, goesOver)),
                          ", \"source_range\": ", range(start, shown, own, isSped ? rate() : own),
                          ", \"effects\": ", effect,
                          ", \"enabled\": ", isDisabled(row) ? "false" : "true",
                          ", \"markers\": ", markersOn(item, start)));
        if (!isGap) {
            out_.write(concat(", \"media_references\": {\"DEFAULT_MEDIA\": ", reference(row),
                              "}, \"active_media_reference_key\": \"DEFAULT_MEDIA\""));
        }
        out_.write(concat(", \"metadata\": ",
                          item.isMade ? madeMetadata : metadata(row, kept, noteOf(row).c_str()),
                          "}"));
    }

    // What is gone over to has the second name of its event.
    std::string_view nameOf(unsigned row, bool goesOver) const {
        const std::string_view to = goesOver ? cell(row, find({"To Clip Name"})) : "";
        return to.empty() ? cell(row, clipName_) : to;
    }

    // As a reader finds it.
    static std::int64_t playedLength(const std::string& effects, std::int64_t length) {
        if (effects == "[]") return length;
        JsonTree tree;
        if (tree.parse(effects)) return length;
        const std::optional<double> scalar = timeScalar(tree, tree.root());
        return scalar ? playedFrames(length, *scalar) : length;
    }

    // What a reader has to find beside the clip of an event.
    std::string noteOf(unsigned row) const {
        std::string lines;
        for (const EventMark& mark : events_.marks(row)) {
            if (!timeOf(row, mark)) continue;
            lines += concat(lines.empty() ? "" : " ", std::to_string(mark.line));
        }
        return concat(events_.transition(row) ? "\"goesOver\": true, " : "",
                      lines.empty() ? "" : concat("\"marked\": \"", lines, "\", "));
    }

    // The frame of the clip that a marker stands on; nothing outside of it.
    std::optional<std::int64_t> timeOf(unsigned row, const EventMark& mark) const {
        if (record_.start == noColumn) return {};
        const std::optional<Timecode> start = lengths_->timecode(row, record_.start);
        const std::optional<std::int64_t> length = lengths_->onRecord(row);
        std::optional<Timecode> code = parseTimecode(mark.time);
        if (!start || !code || !length) return {};
        code->dropFrame = code->dropFrame || start->dropFrame;
        const std::int64_t at = framesOf(*code, rate().nominal) - framesOf(*start, rate().nominal);
        const bool isWithin = isCounted(*code, rate().nominal) && at >= 0 && at <= *length;
        return isWithin ? std::optional(at) : std::nullopt;
    }

    // Those of the rows behind it, and those of its notes.
    std::string markersOn(const Item& item, std::int64_t start) {
        std::string marks;
        for (const EventMark& mark : events_.marks(item.row)) {
            const std::optional<std::int64_t> at = timeOf(item.row, mark);
            if (!at && !item.isMade) {
                tell(item.row, concat("a marker at ", mark.time),
                     "a time within the record of its event", "it stays a note");
            }
            if (at)
                marks += concat(marks.empty() ? "" : ",\n  ", markOf(item.row, mark, start + *at));
        }
        if (marks.empty()) return item.isMade ? "[]" : markersOf(item.row, start);
        return concat("[\n  ", marks, "]");
    }

    std::string markOf(unsigned row, const EventMark& mark, std::int64_t at) {
        const FrameRate own = lengths_->sourceRate(row);
        return concat("{\"OTIO_SCHEMA\": \"Marker.2\", \"name\": ", string(mark.text),
                      ", \"color\": ", string(mark.color), ", \"comment\": \"\"",
                      ", \"marked_range\": ", range(at, 0, own, own),
                      ", \"metadata\": {\"vekdb\": {\"made\": true, \"line\": ",
                      std::to_string(mark.line), "}}}");
    }

    // The transition that an event begins with, from its first frame on.
    void writeGoingOver(const Item& item) {
        const std::string kind(events_.kind(item.row));
        std::string own = madeMetadata;
        if (item.from != noColumn) {
            const FrameRate sourceRate = lengths_->sourceRate(item.from);
            const std::int64_t at =
                framesOf(*lengths_->timecode(item.from, source_.start), sourceRate.nominal);
            Item from = item;
            from.row = item.from;
            from.length = 0;
            own = metadata(item.from, keptTimes(from, at, 0), "\"from\": true, ");
        }
        out_.write(concat("{\"OTIO_SCHEMA\": \"Transition.1\", \"name\": ", string(kind),
                          ", \"transition_type\": ", string(transitionTypeOf(kind)),
                          ", \"in_offset\": ", time(0, rate()),
                          ", \"out_offset\": ", time(*events_.transition(item.row), rate()),
                          ", \"metadata\": ", own, "}"));
    }

    bool isDisabled(unsigned row) const {
        return isTimeline_ && sameText(cell(row, find({timeline::enabled})), "false");
    }

    // Those times of a row that a reader finds in the ranges, in the very form they have.
    std::vector<unsigned> keptTimes(const Item& item, std::int64_t start, std::int64_t length) {
        std::vector<unsigned> kept;
        const bool dropsAll = counting_.countingOfAll() == Counting::dropFrame;
        const FrameRate own = lengths_->sourceRate(item.row);
        const bool drops = dropsAll && own.isAsFastAs(rate());
        const auto keep = [&](unsigned column, std::int64_t frames, int nominal, bool isDrop) {
            if (column == noColumn) return;
            if (cell(item.row, column) == timecodeText(frames, nominal, isDrop)) {
                kept.push_back(column);
            }
        };
        keep(source_.start, start, own.nominal, drops);
        keep(source_.end, start + length, own.nominal, drops);
        keep(record_.start, item.start, rate().nominal, dropsAll);
        keep(record_.end, item.start + item.length, rate().nominal, dropsAll);
        return kept;
    }

    // Those that the row came with.
    std::string ownEffects(unsigned row) const {
        const std::string_view own = isTimeline_ ? cell(row, find({timeline::effects})) : "";
        if (!own.starts_with('[')) return "[]";
        const std::optional<CompactJson> compact = compactJson(own);
        return compact && compact->size == own.size() ? std::string(own) : "[]";
    }

    std::string effects(unsigned row, bool isSped, std::int64_t length, std::int64_t made) {
        std::string own = ownEffects(row);
        const std::optional<std::int64_t> tenths = events_.speed(row);
        if (own != "[]" || events_.isBlack(row)) return own;
        if (tenths) return speedEffect(*tenths, played(length, row), made);
        if (!isSped || made == 0) return own;
        return warp(static_cast<double>(played(length, row)) / static_cast<double>(made));
    }

    // The speed that an edit list says, as exact as the lengths of its event say it.
    std::string speedEffect(std::int64_t tenths, std::int64_t length, std::int64_t made) const {
        if (tenths == 0) {
            return "[{\"OTIO_SCHEMA\": \"FreezeFrame.1\", \"name\": \"\", \"effect_name\": "
                   "\"FreezeFrame\", \"metadata\": {}, \"time_scalar\": 0}]";
        }
        const int nominal = rate().nominal;
        const double said = static_cast<double>(tenths) / (10.0 * nominal);
        if (made <= 0 || length <= 0 || length > mostLength) return warp(said);
        const std::int64_t own = (length * nominal * 20 + made) / (2 * made);
        const double ratio = static_cast<double>(length) / static_cast<double>(made);
        return warp(own == std::abs(tenths) ? std::copysign(ratio, said) : said);
    }

    static std::string warp(double scalar) {
        char text[32];
        std::snprintf(text, sizeof text, "%.15g", scalar);
        return concat(
            "[{\"OTIO_SCHEMA\": \"LinearTimeWarp.1\", \"name\": \"\", \"effect_name\": "
            "\"LinearTimeWarp\", \"metadata\": {}, \"time_scalar\": ",
            text, "}]");
    }

    std::string reference(unsigned row) {
        const std::string_view file = cell(row, find({timeline::file}));
        const std::string rest =
            concat("\"metadata\": {}, \"name\": \"\", \"available_range\": ", available(row),
                   ", \"available_image_bounds\": null");
        if (file.empty()) return "{\"OTIO_SCHEMA\": \"MissingReference.1\", " + rest + "}";
        return "{\"OTIO_SCHEMA\": \"ExternalReference.1\", " + rest +
               ", \"target_url\": " + string(file) + "}";
    }

    // How much there is of a clip's file, where a timeline said it.
    std::string available(unsigned row) const {
        if (!isTimeline_) return "null";
        const FrameRate own = lengths_->sourceRate(row);
        const std::string_view start = cell(row, find({timeline::mediaStart}));
        const std::string_view length = cell(row, find({timeline::mediaFrames}));
        const std::optional<Timecode> code = parseTimecode(start);
        const ExactTime frames = ExactTime::of(length);
        const bool isWhole = frames.isKnown() && frames.under() == 1 && !frames.isNegative();
        if (!code || !isWhole || !isCounted(*code, own.nominal)) return "null";
        return range(framesOf(*code, own.nominal), frames.over(), own, own);
    }

    // A row's number and all cells that stand nowhere else, and what is to be noted beside them.
    std::string metadata(unsigned row, const std::vector<unsigned>& kept, const char* note = "") {
        std::string cells;
        for (unsigned column = 0; column < sheet_.columns.size(); ++column) {
            const std::string_view text = cell(row, column);
            const bool isKept = std::find(kept.begin(), kept.end(), column) != kept.end();
            if (text.empty() || isKept) continue;
            addMember(cells, string(names_[column]), string(text));
        }
        std::string out = "{";
        if (const std::string_view reel = cell(row, reel_); !reel.empty()) {
            out += "\"cmx_3600\": {\"reel\": " + string(reel) + "}, ";
        }
        return out + "\"vekdb\": {\"row\": " + std::to_string(row) + ", " + note + "\"cells\": {" +
               cells + "}}}";
    }

    void writeTransition(const Item& item) {
        const unsigned row = item.row;
        const Offsets offsets = *offsetsOf(row);
        std::string_view type = cell(row, find({timeline::transition}));
        if (type.empty()) type = "SMPTE_Dissolve";
        out_.write("{\"OTIO_SCHEMA\": \"Transition.1\", \"name\": " + string(cell(row, clipName_)) +
                   ", \"transition_type\": " + string(type) +
                   ", \"in_offset\": " + time(offsets.before, rate()) + ", \"out_offset\": " +
                   time(offsets.behind, rate()) + ", \"metadata\": " + metadata(row, {}) + "}");
    }

    // The markers on a row; those in front of all rows are the timeline's own.
    std::string markersOf(unsigned owner, std::int64_t start) {
        auto found = markers_.find(owner);
        if (found == markers_.end()) return "[]";
        std::string out = "[";
        for (unsigned row : found->second) {
            out += (out.size() > 1 ? ",\n  " : "\n  ") + marker(row, start);
        }
        return out + "]";
    }

    std::string marker(unsigned row, std::int64_t otherwise) {
        const FrameRate own = lengths_->sourceRate(row);
        const std::optional<Timecode> start = lengths_->timecode(row, source_.start);
        const std::optional<std::int64_t> length = lengths_->inSource(row);
        const std::int64_t at = start ? framesOf(*start, own.nominal) : otherwise;
        return "{\"OTIO_SCHEMA\": \"Marker.2\", \"name\": " +
               string(cell(row, find({timeline::marker}))) +
               ", \"color\": " + string(cell(row, find({timeline::color}))) +
               ", \"comment\": " + string(cell(row, find({timeline::note}))) +
               ", \"marked_range\": " + range(at, length.value_or(0), own, own) +
               ", \"metadata\": " + metadata(row, {}) + "}";
    }

    static constexpr std::int64_t mostLength = 1'000'000'000'000;  // frames
    static constexpr const char* madeMetadata = "{\"vekdb\": {\"made\": true}}";

    const Sheet& sheet_;
    Output& out_;
    Losses& losses_;
    LogCounting counting_;
    std::optional<ClipLengths> lengths_;
    std::optional<Laps> laps_;
    bool isTimeline_;
    EditEvents events_;
    std::vector<std::string> names_;
    RangeColumns source_, record_;
    unsigned clipName_ = noColumn, reel_ = noColumn, track_ = noColumn, kind_ = noColumn,
             rate_ = noColumn;
    std::vector<std::pair<std::string, Track>> tracks_;  // in the order of their first rows
    std::map<std::string, std::size_t, std::less<>> trackNumbers_;
    std::vector<Track> lanes_;
    std::vector<Nest> nests_;
    std::map<std::string, std::size_t, std::less<>> nestAt_;  // by place
    std::map<unsigned, std::vector<unsigned>> markers_;       // rows, by the row that they are on
    unsigned owner_ = noColumn;
    unsigned from_ = noColumn;  // the row that the next event comes from
    std::int64_t laid_ = 0;
    std::int64_t zero_ = 0;
};

}  // namespace

void writeOtio(const Sheet& sheet, const WriteStyle& style, Output& out, Losses& losses) {
    OtioWriter(sheet, style, out, losses).write();
}

}  // namespace vek::formats
