#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <map>
#include <set>
#include <utility>

#include <vekdb/host/text_util.h>
#include "formats/edl/edl_lines.h"
#include "formats/json/json_tree.h"
#include "formats/json/number_words.h"
#include "formats/text/encoding.h"
#include "formats/text/text_lines.h"
#include "formats/timecode/counting.h"
#include "formats/timecode/timecode_form.h"
#include "formats/timeline/edit_events.h"
#include "formats/timeline/time_warps.h"
#include "formats/timeline/timeline_rows.h"

namespace vek::formats {

namespace {

using Node = JsonTree::Node;
using Names = std::initializer_list<std::string_view>;

bool isOneOf(std::string_view text, Names names) {
    return std::any_of(names.begin(), names.end(),
                       [&](std::string_view name) { return sameText(text, name); });
}

std::string_view lastPart(std::string_view name) {
    return name.substr(name.rfind('.') + 1);
}

bool isReel(std::string_view name) {
    if (isOneOf(lastPart(name), {"reel", "reel name", "reel_name", "tape", "tape name"})) {
        return true;
    }
    return name.size() >= 10 && sameText(name.substr(name.size() - 10), ".reel.name");
}

// A range in the time of what it belongs to.
struct Range {
    ExactTime start;
    ExactTime length;
    std::optional<FrameRate> rate;  // that its start is counted in, where frames have it
};

// What stands around a thing: where it begins on the record, and what it is called there.
struct Around {
    ExactTime record;
    std::string place;
    std::string track;
    bool hasRecord = false;
    std::optional<Range> seen = {};  // of the record, where something around is cut

    // Keeps what is seen of a stretch of the record; false where nothing is.
    bool cut(ExactTime& from, ExactTime& to) const {
        if (!seen || !from.isKnown() || !to.isKnown()) return true;
        const bool isLong = from < to;
        from = std::max(from, seen->start);
        to = std::min(to, seen->start + seen->length);
        return isLong ? from < to : !(to < from);
    }
};

class OtioReader {
public:
    OtioReader(const JsonTree& tree, std::size_t bytes, Log& log)
        : tree_(tree), log_(log), rows_(log, bytes, true) {}

    void read() {
        findRate(tree_.root());
        if (!rate_) rate_ = FrameRate{24};
        if (schema(tree_.root()).empty()) refuse();
        Around around;
        readRoot(tree_.root(), around);
        tellCut();
        tellGaps();
        rows_.finish();
    }

private:
    [[noreturn]] void refuse() const {
        throw Failure{
            unreadable,
            worded(log_.name, {tree_.line(tree_.root()), "", "a JSON value without OTIO_SCHEMA",
                               "a timeline, as OpenTimelineIO writes it", ""})};
    }

    // "Clip" of "Clip.2".
    std::string schema(Node node) const {
        const Node at = tree_.find(node, "OTIO_SCHEMA");
        if (!tree_.isString(at)) return {};
        const std::string text = tree_.text(at);
        return text.substr(0, text.rfind('.'));
    }

    std::string textOf(Node node, std::string_view name) const {
        const Node at = tree_.find(node, name);
        return tree_.isString(at) ? tree_.text(at) : std::string();
    }

    // The rate of the timeline: that of its start, or else of the first range in it.
    void findRate(Node node) {
        const Node start = tree_.find(node, "global_start_time");
        if (start != JsonTree::none) rate_ = rateOf(start);
        std::vector<Node> todo = {node};
        while (!rate_ && !todo.empty()) {
            const Node at = todo.back();
            todo.pop_back();
            rate_ = rateOfItem(at);
            std::vector<Node> below = tree_.elements(tree_.find(at, "children"));
            if (Node tracks = tree_.find(at, "tracks"); tracks != JsonTree::none) {
                below.push_back(tracks);
            }
            todo.insert(todo.end(), below.rbegin(), below.rend());
        }
    }

    std::optional<FrameRate> rateOfItem(Node item) const {
        const Node range = tree_.find(item, "source_range");
        const Node start = tree_.find(range, "start_time");
        if (start == JsonTree::none) return {};
        return rateOf(start);
    }

    std::optional<FrameRate> rateOf(Node time) const {
        const Node at = tree_.find(time, "rate");
        if (at == JsonTree::none) return {};
        std::optional<FrameRate> rate = rateNear(std::strtod(tree_.text(at).c_str(), nullptr));
        if (rate && rate->nominal < slowestOfFrames) return {};
        return rate;
    }

    // Numbers come as "24", "24.0" and, where a program reckoned, "24.000000000001".
    static ExactTime numberOf(const std::string& text) {
        const double number = std::strtod(text.c_str(), nullptr);
        const double whole = std::nearbyint(number);
        const bool isWhole = std::abs(number - whole) <= 1e-9 * std::max(1.0, std::abs(whole));
        if (isWhole && std::abs(whole) < 1e15) return {static_cast<std::int64_t>(whole), 1};
        return ExactTime::of(text);
    }

    ExactTime timeOf(Node time) const {
        const Node value = tree_.find(time, "value");
        const Node rate = tree_.find(time, "rate");
        if (value == JsonTree::none || rate == JsonTree::none) return ExactTime::unknown();
        const ExactTime number = numberOf(tree_.text(value));
        const std::string text = tree_.text(rate);
        const std::optional<FrameRate> known = rateNear(std::strtod(text.c_str(), nullptr));
        const ExactTime each =
            known ? ExactTime(known->frames(), known->seconds()) : numberOf(text);
        return number / each;
    }

    std::optional<Range> rangeOf(Node node) const {
        const Node start = tree_.find(node, "start_time");
        const Node length = tree_.find(node, "duration");
        if (start == JsonTree::none || length == JsonTree::none) return {};
        return Range{timeOf(start), timeOf(length), rateOf(start)};
    }

    // What is seen of a clip, a gap or what is nested: its own range, or all there is.
    Range seen(Node item) {
        if (std::optional<Range> own = rangeOf(tree_.find(item, "source_range"))) return *own;
        if (std::optional<Range> all = rangeOf(tree_.find(media(item), "available_range"))) {
            return *all;
        }
        return {ExactTime(), lengthOfChildren(item), {}};
    }

    ExactTime lengthOfChildren(Node item) {
        const Node children = tree_.find(item, "children");
        if (children == JsonTree::none) return {};
        if (auto known = lengths_.find(item); known != lengths_.end()) return known->second;
        const bool isTrack = isTrackLike(schema(item));
        ExactTime length;
        for (Node child : tree_.elements(children)) {
            if (schema(child) == "Transition") continue;
            const ExactTime own = seen(child).length;
            length = isTrack ? length + own : std::max(length, own);
        }
        lengths_[item] = length;
        return length;
    }

    static bool isTrackLike(const std::string& schema) {
        return schema == "Track" || schema == "Sequence";
    }

    // The reference in use, of one or of several.
    Node media(Node clip) const {
        const Node several = tree_.find(clip, "media_references");
        if (several == JsonTree::none) return tree_.find(clip, "media_reference");
        return tree_.find(several, textOf(clip, "active_media_reference_key"));
    }

    void readRoot(Node node, Around around) {
        const std::string kind = schema(node);
        if (kind == "Timeline") return readTimeline(node, std::move(around));
        if (kind == "SerializableCollection" || kind == "SerializeableCollection") {
            return readCollection(node, around);
        }
        const Range range = seen(node);
        around.hasRecord = kind == "Stack" || isTrackLike(kind);
        if (kind == "Stack") return readTopStack(node, around);
        around.place = "1";
        readItem(node, range, around);
    }

    void readCollection(Node node, const Around& around) {
        readParameters(node, "collection.");
        std::size_t number = 0;
        for (Node child : tree_.elements(tree_.find(node, "children"))) {
            Around own = around;
            own.place = std::to_string(++number);
            if (schema(child) == "Timeline") {
                readTimeline(child, own);
            } else {
                readItem(child, seen(child), own);
            }
        }
    }

    void readTimeline(Node node, Around around) {
        tracksOf_.clear();
        restore(tree_.find(tree_.find(node, "metadata"), "vekdb"));
        if (isTitled_)
            tellHeading(node);
        else
            readHeading(node);
        isTitled_ = true;
        const Node start = tree_.find(node, "global_start_time");
        if (!tree_.isNull(start) && start != JsonTree::none) around.record = timeOf(start);
        around.hasRecord = true;
        const Node tracks = tree_.find(node, "tracks");
        if (schema(tracks) == "Stack") return readTopStack(tracks, around);
        rows_.problem(tree_.line(node), "a timeline without a stack of tracks", "one",
                      "nothing of it is read");
    }

    void readHeading(Node node) {
        const std::size_t line = tree_.line(node);
        if (rows_.isRestored()) return;
        rows_.parameter(line, "TITLE", textOf(node, "name"));
        rows_.parameter(line, "FPS", rateText(*rate_));
        readParameters(node, "");
        readParameters(tree_.find(node, "tracks"), "tracks.");
    }

    // What belongs to no row.
    void readParameters(Node node, const char* before) {
        if (rows_.isRestored()) return;
        for (const auto& [name, value] : tree_.members(tree_.find(node, "metadata"))) {
            rows_.parameter(tree_.line(value), concat(before, "metadata.", name),
                            tree_.text(value));
        }
        const Node effects = tree_.find(node, "effects");
        if (!isNothing(effects)) {
            rows_.parameter(tree_.line(effects), concat(before, "effects"), tree_.text(effects));
        }
    }

    bool isNothing(Node node) const {
        return node == JsonTree::none || tree_.isNull(node) || tree_.isEmpty(node);
    }

    void tellHeading(Node node) {
        if (rows_.isRestored()) return;
        rows_.problem(tree_.line(node), "a timeline behind another one", "one timeline",
                      "its tracks are read, its name and metadata are not");
    }

    // A timeline that was made of a log says which columns it had.
    void restore(Node own) {
        if (own == JsonTree::none || rows_.isRestored()) return;
        std::vector<std::string> columns;
        for (const auto& [name, unused] : tree_.members(tree_.find(own, "columns"))) {
            columns.push_back(name);
        }
        std::unordered_map<std::string, std::string> names;
        for (const auto& [name, value] : tree_.members(tree_.find(own, "names"))) {
            names[name] = tree_.text(value);
        }
        if (columns.empty()) return;
        rows_.restore(std::move(columns), std::move(names));
        isEditList_ = tree_.find(own, "editList") != JsonTree::none;
        for (const auto& [name, value] : tree_.members(tree_.find(own, "parameters"))) {
            rows_.restoreParameter(tree_.line(value), name, tree_.text(value));
        }
        restoreRate(own);
    }

    // The one that the log had, or was given where it became a timeline: its times were counted so.
    void restoreRate(Node own) {
        const std::optional<FrameRate> rate = parseFrameRate(textOf(own, "rate"));
        if (!rate) return;
        rate_ = rate;
        if (!log_.parameter("FPS").empty()) return;
        FrameRate said = *rate;
        if (said.counting == countingOfFcm(log_.parameter("FCM"))) said.counting = Counting::unsaid;
        rows_.restoreParameter(tree_.line(own), "FPS", rateText(said));
    }

    bool drops() const { return rate_->counting == Counting::dropFrame; }

    void readTopStack(Node stack, const Around& around) {
        const Range range = seen(stack);
        Around markers = around;
        markers.place = around.place.empty() ? "0" : around.place;
        readMarkers(stack, range, markers, {});
        readChildren(stack, range, inside(stack, range, around));
    }

    void readChildren(Node parent, const Range& range, const Around& around) {
        const bool isTrack = isTrackLike(schema(parent));
        const bool isTop = around.track.empty();
        ExactTime at;
        std::size_t number = 0;
        for (Node child : tree_.elements(tree_.find(parent, "children"))) {
            Around own = around;
            own.place += (own.place.empty() ? "" : ".") + std::to_string(++number);
            own.record = around.record + at - range.start;
            if (isTop) own.track = trackName(child);
            if (schema(child) == "Transition") {
                readTransition(child, own);
                continue;
            }
            const Range seenOfChild = seen(child);
            readItem(child, seenOfChild, own);
            if (isTrack) at = at + seenOfChild.length;
        }
    }

    // "V1", "A2": tracks of a kind are counted from the bottom up.
    std::string trackName(Node track) {
        if (!isTrackLike(schema(track))) return "V" + std::to_string(++tracksOf_["V"]);
        const std::string kind = textOf(track, "kind");
        const std::string name = sameText(kind, "Video") || kind.empty() ? "V"
                                 : sameText(kind, "Audio")               ? "A"
                                                                         : kind + " ";
        return name + std::to_string(++tracksOf_[name]);
    }

    void readItem(Node item, const Range& range, const Around& around) {
        const std::string kind = schema(item);
        if (kind == "Clip") {
            readClip(item, range, around);
        } else if (kind == "Stack" || isTrackLike(kind)) {
            readNested(item, kind == "Stack" ? "Stack" : "Track", range, around);
        } else if (kind == "Gap" || kind == "Filler") {
            if (isNoted(item, "row")) return readClip(item, range, around);
            noteGap(item);
            readMarkers(item, range, around, {});
        } else {
            const std::string found = kind.empty() ? "a value without OTIO_SCHEMA" : inQuotes(kind);
            rows_.problem(tree_.line(item), concat(found, " at ", around.place),
                          "a clip, gap, transition, stack or track", "it is not read");
        }
    }

    // A gap is no row.
    void noteGap(Node gap) {
        const bool saysNothing =
            isNothing(tree_.find(gap, "metadata")) && isNothing(tree_.find(gap, "effects"));
        if (saysNothing || gaps_++ > 0) return;
        firstGap_ = tree_.line(gap);
    }

    void tellGaps() {
        if (gaps_ == 0) return;
        rows_.problem(firstGap_,
                      counted(gaps_, "gap", "gaps") + " with metadata or effects, the first here",
                      "clips, which have rows", "these are not read");
    }

    // A row of a log that became a timeline has its number and its cells with it.
    void begin(Node item, const char* kind, const Around& around) {
        const Node own = tree_.find(tree_.find(item, "metadata"), "vekdb");
        const Node number = tree_.find(own, "row");
        if (number == JsonTree::none) {
            rows_.begin(tree_.line(item));
        } else {
            rows_.beginOwn(tree_.line(item), std::strtoul(tree_.text(number).c_str(), nullptr, 10));
            for (const auto& [name, value] : tree_.members(tree_.find(own, "cells"))) {
                rows_.setOwnCell(name, tree_.text(value));
            }
        }
        if (number != JsonTree::none && rows_.isRestored()) return;
        rows_.setIfEmpty(timeline::kind, isEditList_ ? "C" : kind);
        if (!isEditList_) rows_.setIfEmpty(timeline::place, around.place);
        rows_.setIfEmpty(timeline::track, around.track);
    }

    bool isNoted(Node item, const char* what) const {
        const Node own = tree_.find(tree_.find(item, "metadata"), "vekdb");
        return rows_.isRestored() && tree_.find(own, what) != JsonTree::none;
    }

    bool isMade(Node item) const { return isNoted(item, "made"); }

    // `played` is how much of the source that is, where it does not run at its own speed.
    void setTimes(const Range& range, const Around& around,
                  std::optional<ExactTime> played = std::nullopt) {
        const FrameRate rate = sourceRate(range);
        rows_.setTime(timeline::sourceIn, range.start, rate, drops() && rate.isAsFastAs(*rate_));
        rows_.setTime(timeline::sourceOut, range.start + played.value_or(range.length), rate,
                      drops() && rate.isAsFastAs(*rate_));
        rows_.setRate(rate);
        setRecord(around.record, range.length, around);
    }

    void setRecord(const ExactTime& start, const ExactTime& length, const Around& around) {
        ExactTime from = start;
        ExactTime to = start + length;
        if (!around.hasRecord || !around.cut(from, to)) return;
        rows_.setTime(timeline::recordIn, from, *rate_, drops());
        rows_.setTime(timeline::recordOut, to, *rate_, drops());
    }

    // Source and record times of a clip are those of the part that is seen of it.
    void setClipTimes(Node clip, const Range& range, Around around) {
        ExactTime from = around.record;
        ExactTime to = from + range.length;
        const bool isSeen = around.cut(from, to);
        if (isSeen && from == around.record && to == from + range.length) {
            return setTimes(range, around, played(clip, range));
        }
        if (cutClips_++ == 0) firstCut_ = tree_.line(clip);
        Range part = range;
        if (isSeen) {
            part = {range.start + (from - around.record), to - from, range.rate};
            around.record = from;
        }
        setTimes(part, around, played(clip, part));
    }

    // What a clip takes of its source where an effect plays it faster or slower.
    std::optional<ExactTime> played(Node clip, const Range& range) const {
        const std::optional<double> scalar = timeScalar(tree_, tree_.find(clip, "effects"));
        const FrameRate rate = sourceRate(range);
        const std::optional<ExactTime::Frames> frames = range.length.frames(rate);
        if (!scalar || !frames || frames->whole < 0) return {};
        return ExactTime::ofFrames(playedFrames(frames->whole, *scalar), rate);
    }

    void tellCut() {
        if (cutClips_ == 0) return;
        rows_.problem(firstCut_,
                      counted(cutClips_, "clip that reaches", "clips that reach") +
                          " beyond the range of a stack or track around, the first here",
                      "clips within it",
                      "times are those of the part that is seen; a clip of which nothing is seen "
                      "has no record times");
    }

    // What is outside the range of something nested is not seen of its children. A range that
    // begins before the first of them says where on the record they begin, and cuts nothing.
    Around inside(Node item, const Range& range, const Around& around) const {
        Around own = around;
        const bool isCut = tree_.isObject(tree_.find(item, "source_range"));
        if (!isCut || range.start.isNegative() || rows_.isRestored()) return own;
        ExactTime from = around.record;
        ExactTime to = from + range.length;
        if (!around.cut(from, to)) to = from = around.record;
        own.seen = Range{from, to - from, {}};
        return own;
    }

    FrameRate sourceRate(const Range& range) const { return range.rate ? *range.rate : *rate_; }

    void readClip(Node clip, const Range& range, const Around& around) {
        sourceEnd_ = {range.start + played(clip, range).value_or(range.length), {}, range.rate};
        if (isMade(clip)) return goingOver_.reset();
        begin(clip, "Clip", around);
        setEvent(clip, range, around);
        if (!isNoted(clip, "goesOver")) rows_.setIfEmpty(timeline::clipName, textOf(clip, "name"));
        setClipTimes(clip, range, around);
        readMedia(clip);
        readRest(clip, "", {"media_reference", "media_references", "active_media_reference_key"});
        rows_.end();
        if (!isEditList_) readMarkers(clip, range, around, textOf(clip, "name"));
    }

    // What an edit list says in its own words stands in the timeline as things of that, which
    // others may have changed: the transition that the event begins with, and the markers on its
    // clip.
    void setEvent(Node clip, const Range& range, const Around& around) {
        const std::optional<GoingOver> comes = std::exchange(goingOver_, std::nullopt);
        if (!isEditList_) return;
        const Node cells = tree_.find(tree_.find(tree_.find(clip, "metadata"), "vekdb"), "cells");
        const std::string& lengthName = edlColumnNames[edlLength];
        if (comes) {
            const std::string text = textOf(cells, lengthName);
            const bool isSame = std::strtoll(text.c_str(), nullptr, 10) == comes->frames;
            const std::string frames = std::to_string(comes->frames);
            const std::size_t zeros = frames.size() < 3 ? 3 - frames.size() : 0;
            rows_.set(edlColumnNames[edlKind], comes->kind);
            if (!isSame) rows_.set(lengthName, std::string(zeros, '0') + frames);
        } else if (isNoted(clip, "goesOver")) {
            rows_.set(edlColumnNames[edlKind], "C");
            rows_.clear(lengthName);
        }
        setMarks(clip, textOf(cells, edlCommentsName(0)), range, around);
    }

    // A marker that was a note has its line, and one that others set gets a new one.
    void setMarks(Node clip, const std::string& came, const Range& range, const Around& around) {
        const std::vector<Node> markers = tree_.elements(tree_.find(clip, "markers"));
        const std::string marked =
            textOf(tree_.find(tree_.find(clip, "metadata"), "vekdb"), "marked");
        if (markers.empty() && marked.empty()) return;
        std::vector<std::string> lines;
        for (std::string_view line : split(came, '\n')) lines.emplace_back(line);
        std::set<std::size_t> gone;
        for (std::string_view number : split(marked, ' ')) {
            if (!number.empty())
                gone.insert(std::strtoul(std::string(number).c_str(), nullptr, 10));
        }
        for (Node marker : markers) {
            const Node own = tree_.find(tree_.find(marker, "metadata"), "vekdb");
            const Node number = tree_.find(own, "line");
            const std::size_t at = std::strtoul(tree_.text(number).c_str(), nullptr, 10);
            const bool isOwn = number != JsonTree::none && at < lines.size();
            const std::string line = isOwn ? lines[at] : "* LOC: 00:00:00:00";
            gone.erase(isOwn ? at : lines.size());
            const std::string made = markLine(marker, line, range, around);
            if (isOwn)
                lines[at] = made;
            else
                lines.push_back(made);
        }
        std::string text;
        for (std::size_t i = 0; i < lines.size(); ++i) {
            if (gone.contains(i) || (i == 0 && came.empty())) continue;
            text += concat(text.empty() ? "" : "\n", lines[i]);
        }
        if (text == came) return;
        rows_.clear(edlCommentsName(0));
        rows_.set(edlCommentsName(0), text);
    }

    std::string markLine(Node marker, const std::string& line, const Range& range,
                         const Around& around) const {
        const std::optional<EventMark> came = eventMark(line);
        const std::optional<Range> marked = rangeMarked(marker);
        if (!came || !marked) return line;
        const auto frames = (around.record + marked->start - range.start).frames(*rate_);
        if (!frames || frames->whole < 0) return line;
        std::optional<Timecode> code = parseTimecode(came->time);
        if (code) code->dropFrame = code->dropFrame || drops();
        const bool isSame = code && framesOf(*code, rate_->nominal) == frames->whole;
        const std::string now = timecodeText(frames->whole, rate_->nominal, drops());
        const std::string time = isSame ? std::string(came->time) : inFormOf(came->time, now);
        const std::string color = colorOf(marker);
        const std::string text = textOf(marker, "name");
        return withEventMark(line, {0, time, color, text});
    }

    void readMedia(Node clip) {
        const Node reference = media(clip);
        rows_.setIfEmpty(timeline::file, fileOf(reference));
        readRest(reference, "media.",
                 {"target_url", "target_url_base", "name_prefix", "name_suffix"});
        const Node several = tree_.find(clip, "media_references");
        for (const auto& [name, value] : tree_.members(several)) {
            if (value == reference) continue;
            rows_.set(concat("media ", name), tree_.text(value));
        }
    }

    std::string fileOf(Node reference) const {
        if (schema(reference) != "ImageSequenceReference") return textOf(reference, "target_url");
        const std::string folder = textOf(reference, "target_url_base");
        const bool isOpen = !folder.empty() && !folder.ends_with('/');
        return concat(folder, isOpen ? "/" : "", textOf(reference, "name_prefix"),
                      firstFrame(reference), textOf(reference, "name_suffix"));
    }

    // The number of the first picture, with as many digits as all have.
    std::string firstFrame(Node sequence) const {
        constexpr std::size_t mostDigits = 32;
        std::string number = tree_.text(tree_.find(sequence, "start_frame"));
        const std::string padding = tree_.text(tree_.find(sequence, "frame_zero_padding"));
        const std::size_t digits = std::strtoul(padding.c_str(), nullptr, 10);
        const std::size_t sign = number.starts_with('-') ? 1 : 0;
        const std::size_t own = number.size() - sign;
        if (number.empty() || own >= digits || digits > mostDigits) return number;
        return number.insert(sign, digits - own, '0');
    }

    void readNested(Node item, const char* kind, const Range& range, const Around& around) {
        if (!isMade(item)) {
            begin(item, kind, around);
            rows_.setIfEmpty(timeline::clipName, textOf(item, "name"));
            setRecord(around.record, range.length, around);
            const bool isSaid = tree_.isObject(tree_.find(item, "source_range"));
            if (isSaid && !isNoted(item, "madeRange")) setTimes(range, around);
            readRest(item, "", {"children", "kind"});
            rows_.end();
        }
        readMarkers(item, range, around, textOf(item, "name"));
        readChildren(item, range, inside(item, range, around));
    }

    // Of an edit list it is how the next event begins, and may keep the row that this comes from.
    void readGoingOver(Node item, const Around& around) {
        const auto frames =
            (timeOf(tree_.find(item, "in_offset")) + timeOf(tree_.find(item, "out_offset")))
                .frames(*rate_);
        const std::string name = textOf(item, "name");
        const bool isKind = isEdlTransition(name);
        const bool isWipe = sameText(textOf(item, "transition_type"), transitionTypeOf("W001"));
        goingOver_ = GoingOver{isKind ? name : isWipe ? "W001" : "D", frames ? frames->whole : 0};
        if (!isNoted(item, "from")) return;
        begin(item, "Clip", around);
        setTimes(sourceEnd_, around);
        rows_.end();
    }

    void readTransition(Node item, const Around& around) {
        if (isEditList_) return readGoingOver(item, around);
        begin(item, "Transition", around);
        const ExactTime before = timeOf(tree_.find(item, "in_offset"));
        const ExactTime behind = timeOf(tree_.find(item, "out_offset"));
        rows_.setIfEmpty(timeline::clipName, textOf(item, "name"));
        rows_.setIfEmpty(timeline::transition, textOf(item, "transition_type"));
        setFrames(timeline::inOffset, before);
        setFrames(timeline::outOffset, behind);
        setRecord(around.record - before, before + behind, around);
        readRest(item, "", {"in_offset", "out_offset", "transition_type"});
        rows_.end();
    }

    void setFrames(const char* column, const ExactTime& time) {
        const std::optional<ExactTime::Frames> frames = time.frames(*rate_);
        if (frames && frames->isExact) rows_.setIfEmpty(column, std::to_string(frames->whole));
    }

    void readMarkers(Node item, const Range& range, const Around& around,
                     const std::string& clipName) {
        std::size_t number = 0;
        for (Node marker : tree_.elements(tree_.find(item, "markers"))) {
            Around own = around;
            own.place += (own.place.empty() ? "" : ".") + std::to_string(++number);
            readMarker(marker, range, own, clipName);
        }
    }

    void readMarker(Node marker, const Range& range, const Around& around,
                    const std::string& clipName) {
        begin(marker, "Marker", around);
        // One that was a row has all of its own, whatever it lies on here.
        const bool isOwn = isNoted(marker, "row");
        if (!isOwn) rows_.setIfEmpty(timeline::clipName, clipName);
        rows_.setIfEmpty(timeline::marker, textOf(marker, "name"));
        rows_.setIfEmpty(timeline::color, colorOf(marker));
        rows_.setIfEmpty(timeline::note, textOf(marker, "comment"));
        const std::optional<Range> marked = isOwn ? std::nullopt : rangeMarked(marker);
        if (marked) {
            Around own = around;
            own.record = around.record + marked->start - range.start;
            // Outside what is seen of a clip a marker is nowhere on the record.
            const bool isSeen =
                !(marked->start < range.start) && !(range.start + range.length < marked->start);
            own.hasRecord = around.hasRecord && isSeen;
            setTimes(*marked, own);
        }
        readRest(marker, "", {"marked_range", "range", "color", "comment"});
        rows_.end();
    }

    // The first markers had a range.
    std::optional<Range> rangeMarked(Node marker) const {
        const std::optional<Range> marked = rangeOf(tree_.find(marker, "marked_range"));
        return marked ? marked : rangeOf(tree_.find(marker, "range"));
    }

    std::string colorOf(Node item) const {
        const Node color = tree_.find(item, "color");
        if (color == JsonTree::none || !tree_.isObject(color)) return tree_.text(color);
        const std::string name = textOf(color, "name");
        return name.empty() ? tree_.text(color) : name;
    }

    // What has no column of its own makes one.
    void readRest(Node item, const std::string& before, Names known) {
        for (const auto& [name, value] : tree_.members(item)) {
            const bool isKnown = isOneOf(name, known) || (before.empty() && name == "name") ||
                                 isOneOf(name, {"OTIO_SCHEMA", "source_range", "markers"});
            if (isKnown || tree_.isNull(value) || tree_.isEmpty(value)) continue;
            readMember(name, value, before);
        }
    }

    void readMember(const std::string& name, Node value, const std::string& before) {
        if (name == "metadata") return readMetadata(value, before);
        if (name == "enabled" && before.empty()) {
            if (tree_.text(value) != "true") {
                rows_.setIfEmpty(timeline::enabled, tree_.text(value));
            }
        } else if (name == "effects" && before.empty()) {
            rows_.setIfEmpty(timeline::effects, tree_.text(value));
        } else if (name == "color" && before.empty()) {
            rows_.setIfEmpty(timeline::color, colorOf(value));
        } else if (name == "available_range") {
            readAvailable(value);
        } else {
            setOwn(before + name, tree_.text(value));
        }
    }

    void readAvailable(Node node) {
        const std::optional<Range> range = rangeOf(node);
        if (!range) return;
        const FrameRate rate = sourceRate(*range);
        rows_.setTime(timeline::mediaStart, range->start, rate, drops() && rate.isAsFastAs(*rate_));
        if (const std::optional<ExactTime::Frames> frames = range->length.frames(rate)) {
            rows_.set(timeline::mediaFrames, std::to_string(frames->whole));
        }
    }

    // Names of what is nested one behind the other, with a point between.
    void readMetadata(Node object, const std::string& before) {
        for (const auto& [name, value] : tree_.members(object)) {
            const std::string column = before + name;
            if (before.empty() && name == "vekdb" && rows_.isRestored()) continue;
            if (tree_.isObject(value)) {
                readMetadata(value, column + ".");
            } else if (!tree_.isEmpty(value)) {
                setMetadata(column, tree_.text(value));
            }
        }
    }

    void setMetadata(const std::string& column, const std::string& text) {
        if (isReel(column) && rows_.setIfEmpty(timeline::reel, text)) return;
        if (sameText(lastPart(column), "comment") && rows_.setIfEmpty(timeline::note, text)) return;
        setOwn(column, text);
    }

    void setOwn(const std::string& column, const std::string& text) {
        if (!rows_.setIfEmpty(column, text)) rows_.set(concat("metadata.", column), text);
    }

    static constexpr int slowestOfFrames = 6;  // no picture runs slower

    const JsonTree& tree_;
    Log& log_;
    TimelineRows rows_;
    std::size_t cutClips_ = 0;
    std::size_t firstCut_ = 0;  // its line
    std::size_t gaps_ = 0;      // that say more than their length
    std::size_t firstGap_ = 0;  // its line
    std::optional<FrameRate> rate_;
    std::map<std::string, std::size_t> tracksOf_;
    std::unordered_map<Node, ExactTime> lengths_;
    bool isTitled_ = false;
    bool isEditList_ = false;  // that became a timeline
    struct GoingOver {
        std::string kind;
        std::int64_t frames;
    };
    std::optional<GoingOver> goingOver_;  // to the next clip
    Range sourceEnd_;                     // of the clip before, without a length
};

void reportNumberWords(std::size_t line, Log& log) {
    log.report([&]() -> Problem {
        return {line, "", "numbers such as NaN and Infinity, the first here",
                "numbers that JSON has", "they are read as texts"};
    });
}

// Whether a string ends at bytes that are no UTF-8.
bool isOtherEncoding(std::string_view found, std::string_view text) {
    const bool isAtByte = found.size() > 1 && static_cast<unsigned char>(found[1]) >= 0x80;
    return isAtByte && !isWellFormedUtf8(text);
}

[[noreturn]] void refuseEncoding(const JsonTree::Fault& fault, const Log& log) {
    throw Failure{unreadable,
                  log.name,
                  {fault.line, "", concat("bytes that are no UTF-8 in ", fault.found), "UTF-8",
                   concat("say what the file is with ", log.opening.terms->encoding)}};
}

}  // namespace

void readOtio(Text text, Log& log) {
    JsonTree tree;
    std::string_view view = text.view();
    std::optional<JsonTree::Fault> fault = tree.parse(view);
    std::optional<std::string> quoted;
    if (fault) quoted = withNumberWordsQuoted(view);
    if (quoted) {
        const std::size_t line = fault->line;
        view = *quoted;
        fault = (tree = JsonTree()).parse(view);
        if (!fault) reportNumberWords(line, log);
    }
    if (fault && isOtherEncoding(fault->found, view)) refuseEncoding(*fault, log);
    if (fault) {
        throw Failure{unreadable,
                      worded(log.name, {fault->line, "", fault->found, "a timeline in JSON", ""})};
    }
    OtioReader(tree, view.size(), log).read();
}

}  // namespace vek::formats
