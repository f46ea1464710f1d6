#include <algorithm>
#include <map>
#include <set>

#include "formats/text/line_index.h"
#include "formats/timeline/timeline_rows.h"
#include "formats/xml/xml.h"
#include "formats/xml/xml_entities.h"

namespace vek::formats {

namespace {

using Names = std::initializer_list<std::string_view>;

bool isOneOf(std::string_view text, Names names) {
    return std::find(names.begin(), names.end(), text) != names.end();
}

bool isMarker(std::string_view name) {
    return isOneOf(name, {"marker", "chapter-marker", "analysis-marker"});
}

bool isClip(std::string_view name) {
    return isOneOf(name, {"asset-clip", "clip", "ref-clip", "sync-clip", "mc-clip", "video",
                          "audio", "title", "caption"});
}

// What may lie on a time line of its own.
bool isStory(std::string_view name) {
    return isClip(name) || isOneOf(name, {"gap", "audition", "spine", "transition"});
}

void addToList(std::string& list, std::string_view text) {
    if (text.empty()) return;
    if (!list.empty()) list += ", ";
    list += text;
}

// How the frames of something are counted.
struct Frames {
    FrameRate rate;
    bool drops = false;
};

// What stands around an element. A time in it lies on the record so much later.
struct Around {
    ExactTime shift;
    Frames frames;  // of the record
    std::string place;
    std::string track;
    std::string_view event;
    std::string_view project;
    bool hasRecord = false;
    bool isPart = false;  // of a clip that is made of others
    std::size_t depth = 0;
};

class FcpxmlReader {
public:
    FcpxmlReader(const XmlDocument& document, const LineIndex& lines, std::size_t bytes, Log& log)
        : lines_(lines),
          log_(log),
          root_(document.root()),
          rows_(log, bytes, hasProject(root_, 0)) {}

    void read() {
        if (root_.name() != "fcpxml") refuse();
        noteResources(root_.child("resources"));
        Around around;
        readFolder(root_, around);
        readMedia(root_.child("resources"));
        tellUnread();
        rows_.finish();
    }

private:
    static constexpr std::size_t deepest = 200;

    [[noreturn]] void refuse() const {
        throw Failure{unreadable,
                      worded(log_.name, {lineOf(root_), "", "an element " + inQuotes(root_.name()),
                                         "fcpxml", ""})};
    }

    static bool hasProject(XmlElement folder, std::size_t depth) {
        for (XmlElement at = folder.firstChild(); at; at = at.next()) {
            if (isOneOf(at.name(), {"project", "sequence"})) return true;
            const bool isFolder = isOneOf(at.name(), {"library", "event"});
            if (isFolder && depth < deepest && hasProject(at, depth + 1)) return true;
        }
        return false;
    }

    std::size_t lineOf(XmlElement element) const {
        const std::ptrdiff_t offset = element.offset();
        return offset < 0 ? 0 : lines_.line(static_cast<std::size_t>(offset));
    }

    void problem(XmlElement element, std::string found, std::string expected, std::string outcome) {
        rows_.problem(lineOf(element), std::move(found), std::move(expected), std::move(outcome));
    }

    void noteResources(XmlElement resources) {
        for (XmlElement at = resources.firstChild(); at; at = at.next()) {
            resources_.emplace(at.attribute("id"), at);
            if (!rate_ && at.name() == "format") rate_ = rateOfFormat(at);
        }
        if (!rate_) rate_ = FrameRate{24};
    }

    XmlElement resource(std::string_view id) const {
        auto found = resources_.find(id);
        return found == resources_.end() ? XmlElement() : found->second;
    }

    // Formats that every editing system knows may have no more than a name.
    static std::optional<FrameRate> rateOfFormat(XmlElement format) {
        const std::optional<FrameRate> rate =
            rateOfFrame(ExactTime::of(format.attribute("frameDuration")));
        return rate ? rate : rateOfFormatName(format.attribute("name"));
    }

    // "FFVideoFormat1080p2398", "FFVideoFormatDV720x480i5994_16x9": behind p come the frames,
    // behind i two fields for each of them, in hundredths where there are four digits.
    static std::optional<FrameRate> rateOfFormatName(std::string_view name) {
        const std::size_t end = std::min(name.find('_'), name.size());
        std::size_t at = end;
        while (at > 0 && isAsciiDigit(name[at - 1])) --at;
        const bool isScan = at > 0 && (name[at - 1] == 'p' || name[at - 1] == 'i');
        const std::size_t digits = end - at;
        if (!isScan || digits < 2 || digits > 4 || digits == 3) return {};
        const auto number = static_cast<double>(ExactTime::of(name.substr(at, digits)).over());
        const double each = digits == 4 ? 100.0 : 1.0;
        return rateNear(number / each / (name[at - 1] == 'i' ? 2 : 1));
    }

    std::optional<FrameRate> rateNamed(std::string_view id) const {
        const XmlElement format = resource(id);
        return format ? rateOfFormat(format) : std::nullopt;
    }

    // A time of an element; `otherwise` where it has none, and where it cannot be read.
    ExactTime time(XmlElement element, const char* name, const ExactTime& otherwise) {
        const std::string_view text = element.attribute(name);
        if (text.empty()) return otherwise;
        const ExactTime time = ExactTime::of(text);
        if (time.isKnown()) return time;
        problem(element, concat(name, "=", inQuotes(text)), "seconds such as 1001/30000s",
                "the element is read without it");
        return otherwise;
    }

    void readFolder(XmlElement folder, const Around& around) {
        for (XmlElement at = folder.firstChild(); at; at = at.next()) {
            Around own = around;
            ++own.depth;
            const std::string_view name = at.name();
            if (isOneOf(name, {"library", "event"}) && own.depth < deepest) {
                if (name == "event") own.event = at.attribute("name");
                readFolder(at, own);
            } else if (name == "project") {
                own.project = at.attribute("name");
                readSequence(at.child("sequence"), own);
            } else if (name == "sequence") {
                readSequence(at, own);
            } else if (isStory(name)) {
                readLoose(at, own);
            } else if (name != "resources") {
                noteUnread(at);
            }
        }
    }

    // A clip that lies in an event and on no record.
    void readLoose(XmlElement clip, Around around) {
        around.place = std::to_string(++tops_);
        around.frames = {*rate_, false};
        readItem(clip, around, ExactTime());
    }

    Frames framesOfSequence(XmlElement sequence) {
        std::optional<FrameRate> rate = rateNamed(sequence.attribute("format"));
        if (!rate) {
            problem(sequence, "a sequence whose format has no frameDuration", "one",
                    "its times are counted at " + rateText(*rate_));
        }
        return {rate.value_or(*rate_), sequence.attribute("tcFormat") == "DF"};
    }

    void readSequence(XmlElement sequence, Around around) {
        if (!sequence) return;
        around.frames = framesOfSequence(sequence);
        around.hasRecord = true;
        around.place = std::to_string(++tops_);
        noteHeading(sequence, around);
        readSpine(sequence.child("spine"), around, startOfSequence(sequence));
        for (XmlElement at = sequence.firstChild(); at; at = at.next()) {
            if (at.name() != "spine") noteUnread(at);
        }
    }

    void noteHeading(XmlElement sequence, const Around& around) {
        const std::string rate = rateText(around.frames.rate);
        if (!isTitled_) {
            rows_.parameter(lineOf(sequence), "TITLE", around.project);
            rows_.parameter(lineOf(sequence), "FPS", rate);
            heading_ = around.frames.rate;
        } else if (!around.frames.rate.isAsFastAs(*heading_)) {
            problem(sequence, concat("a project at ", rate, " behind one at ", rateText(*heading_)),
                    "one rate in a log",
                    concat("its record times count at its own rate, as column ",
                           timeline::recordRate, " says"));
        }
        isTitled_ = true;
    }

    // Compound and multicam clips, which lie on no record of their own.
    void readMedia(XmlElement resources) {
        for (XmlElement at = resources.firstChild(); at; at = at.next()) {
            if (at.name() != "media") continue;
            Around around;
            around.project = at.attribute("name");
            around.isPart = true;
            around.frames = {*rate_, false};
            around.place = std::to_string(++tops_);
            if (const XmlElement sequence = at.child("sequence")) {
                around.frames = framesOfSequence(sequence);
                readSpine(sequence.child("spine"), around, startOfSequence(sequence));
            }
            readAngles(at.child("multicam"), around);
        }
    }

    void readAngles(XmlElement multicam, Around around) {
        if (!multicam) return;
        around.frames = framesOfSequence(multicam);
        const ExactTime start = startOfSequence(multicam);
        std::size_t number = 0;
        for (XmlElement at = multicam.firstChild(); at; at = at.next()) {
            if (at.name() != "mc-angle") continue;
            Around own = around;
            own.place += "." + std::to_string(++number);
            ++own.depth;
            readSpine(at, own, start);
        }
    }

    ExactTime startOfSequence(XmlElement sequence) { return time(sequence, "tcStart", {}); }

    // What a compound or multicam clip is made of.
    static XmlElement sequenceOf(XmlElement media) {
        const XmlElement sequence = media.child("sequence");
        return sequence ? sequence : media.child("multicam");
    }

    // What follows one another; an element says where it lies, or follows the one before.
    void readSpine(XmlElement spine, const Around& around, ExactTime behind) {
        std::size_t number = 0;
        for (XmlElement at = spine.firstChild(); at; at = at.next()) {
            if (!isStory(at.name())) {
                noteUnread(at);
                continue;
            }
            Around own = around;
            own.place += "." + std::to_string(++number);
            ++own.depth;
            if (own.track.empty()) own.track = "V1";
            const ExactTime offset = time(at, "offset", behind);
            readItem(at, own, offset);
            if (at.name() != "transition") behind = offset + lengthOf(at);
        }
    }

    void readItem(XmlElement item, const Around& around, const ExactTime& offset) {
        const std::string_view name = item.name();
        if (around.depth > deepest) {
            return problem(item, "more than 200 elements in one another", "fewer",
                           "what is in them is not read");
        }
        if (name == "audition") return readAudition(item, around, offset);
        if (name == "transition") return readTransition(item, around, offset);
        if (name == "spine") return readStoryline(item, around, offset);
        const ExactTime start = startOf(item);
        Around inside = around;
        inside.shift = around.shift + offset - start;
        if (name != "gap") readClip(item, around, inside, start);
        readInside(item, inside);
    }

    // The first is in use.
    void readAudition(XmlElement audition, const Around& around, const ExactTime& offset) {
        Around own = around;
        std::size_t number = 0;
        for (XmlElement at = audition.firstChild(); at; at = at.next()) {
            if (!isStory(at.name())) continue;
            own.place = around.place + "." + std::to_string(++number);
            ++own.depth;
            readItem(at, own, offset);
            own.isPart = true;
            own.hasRecord = false;
        }
    }

    void readStoryline(XmlElement spine, const Around& around, const ExactTime& offset) {
        Around own = around;
        own.shift = around.shift + offset;
        readSpine(spine, own, {});
    }

    XmlElement resourceOf(XmlElement item) const { return resource(item.attribute("ref")); }

    ExactTime startOf(XmlElement item) {
        const XmlElement made = resourceOf(item);
        ExactTime otherwise;
        if (made.name() == "asset") otherwise = time(made, "start", {});
        if (made.name() == "media") otherwise = startOfSequence(sequenceOf(made));
        return time(item, "start", otherwise);
    }

    ExactTime lengthOf(XmlElement item) {
        if (item.name() == "audition") return lengthOf(item.firstChild());
        const XmlElement made = resourceOf(item);
        ExactTime otherwise;
        if (made.name() == "asset") otherwise = time(made, "duration", {});
        if (made.name() == "media") otherwise = time(sequenceOf(made), "duration", {});
        return time(item, "duration", otherwise);
    }

    // The rate that a clip's own times are counted at.
    Frames framesOf(XmlElement item, const Around& around) const {
        const XmlElement made = resourceOf(item);
        const XmlElement sequence = sequenceOf(made);
        std::optional<FrameRate> rate = rateNamed(item.attribute("format"));
        if (!rate) rate = rateNamed(made.attribute("format"));
        if (!rate && sequence) rate = rateNamed(sequence.attribute("format"));
        std::string_view counting = item.attribute("tcFormat");
        if (counting.empty()) counting = sequence.attribute("tcFormat");
        return {rate.value_or(around.frames.rate), counting == "DF"};
    }

    void begin(XmlElement element, const char* kind, const Around& around) {
        rows_.begin(lineOf(element));
        rows_.set(timeline::kind, kind);
        rows_.set(timeline::place, around.place);
        rows_.set(timeline::track, around.track);
        rows_.set("Event Name", around.event);
        rows_.set("Project Name", around.project);
    }

    void setTimes(const ExactTime& start, const ExactTime& length, const Frames& frames,
                  const Around& inside) {
        rows_.setTime(timeline::sourceIn, start, frames.rate, frames.drops);
        rows_.setTime(timeline::sourceOut, start + length, frames.rate, frames.drops);
        rows_.set(timeline::rate, rateText(frames.rate));
        setRecord(inside.shift + start, length, inside);
    }

    void setRecord(const ExactTime& start, const ExactTime& length, const Around& around) {
        if (!around.hasRecord) return;
        if (heading_ && !around.frames.rate.isAsFastAs(*heading_))
            rows_.set(timeline::recordRate, rateText(around.frames.rate));
        rows_.setTime(timeline::recordIn, start, around.frames.rate, around.frames.drops);
        rows_.setTime(timeline::recordOut, start + length, around.frames.rate, around.frames.drops);
    }

    void readClip(XmlElement clip, const Around& around, const Around& inside,
                  const ExactTime& start) {
        begin(clip, around.isPart ? "Part" : kindOfClip(clip.name()), around);
        rows_.set(timeline::clipName, clip.attribute("name"));
        setTimes(start, lengthOf(clip), framesOf(clip, around), inside);
        setAttributes(clip);
        const XmlElement made = resourceOf(clip);
        if (!made && clip.has("ref")) {
            problem(clip, concat("ref=", inQuotes(clip.attribute("ref"))),
                    "a resource of the document", "the clip is read without it");
        }
        if (made.name() == "asset") {
            const XmlElement original = made.child("media-rep");
            rows_.set(timeline::file, (original ? original : made).attribute("src"));
        }
        readMetadata(clip.child("metadata"));
        readMetadata(made.child("metadata"));
        setLists(clip);
        rows_.end();
        if (clip.child("timeMap")) {
            problem(clip, "a clip whose speed is changed by a timeMap", "one at normal speed",
                    "its source times count as the clip plays");
        }
    }

    static const char* kindOfClip(std::string_view name) {
        if (name == "title") return "Title";
        return name == "caption" ? "Caption" : "Clip";
    }

    void setAttributes(XmlElement clip) {
        if (clip.attribute("enabled") == "0") rows_.set(timeline::enabled, "false");
        rows_.set("Lane", clip.attribute("lane"));
        rows_.set("Role", clip.attribute("role"));
        rows_.set("Audio Role", audioRolesOf(clip));
        rows_.set("Video Role", clip.attribute("videoRole"));
        rows_.set(timeline::note, clip.child("note").text());
    }

    // That of the clip, or else those of its channels.
    static std::string audioRolesOf(XmlElement clip) {
        std::string roles(clip.attribute("audioRole"));
        if (!roles.empty()) return roles;
        std::set<std::string_view> known;
        for (XmlElement at = clip.firstChild(); at; at = at.next()) {
            if (!isAudioRole(at.name()) || !known.insert(at.attribute("role")).second) continue;
            addToList(roles, at.attribute("role"));
        }
        return roles;
    }

    static bool isAudioRole(std::string_view name) {
        return isOneOf(name, {"audio-channel-source", "audio-role-source"});
    }

    // Keywords, effects and the text of a title.
    void setLists(XmlElement clip) {
        std::set<std::string_view> keywords;
        std::string listed, effects, text;
        for (XmlElement at = clip.firstChild(); at; at = at.next()) {
            const std::string_view name = at.name();
            if (name == "keyword" && keywords.insert(at.attribute("value")).second) {
                addToList(listed, at.attribute("value"));
            }
            if (isOneOf(name, {"filter-video", "filter-audio"})) {
                addToList(effects, at.attribute("name"));
            }
            if (name != "text") continue;
            if (!at.firstChild()) text += at.text();
            for (XmlElement style = at.firstChild(); style; style = style.next()) {
                text += style.text();
            }
        }
        rows_.set("Keyword", listed);
        rows_.set(timeline::effects, effects);
        rows_.set("Text", text);
    }

    void readMetadata(XmlElement metadata) {
        for (XmlElement md = metadata.firstChild(); md; md = md.next()) {
            std::string value(md.attribute("value"));
            const XmlElement array = md.child("array");
            for (XmlElement at = array.firstChild(); at; at = at.next()) {
                addToList(value, at.text());
            }
            rows_.setIfEmpty(columnOf(md.attribute("key")), value);
        }
    }

    // The names that people know, for those keys that have one.
    static std::string columnOf(std::string_view key) {
        static constexpr std::pair<const char*, const char*> known[] = {
            {"com.apple.proapps.studio.reel", timeline::reel},
            {"com.apple.proapps.studio.scene", "Scene"},
            {"com.apple.proapps.studio.shot", "Take"},
            {"com.apple.proapps.studio.angle", "Camera Angle"},
            {"com.apple.proapps.mio.cameraName", "Camera Name"}};
        for (const auto& [own, name] : known) {
            if (key == own) return name;
        }
        return std::string(key);
    }

    void readInside(XmlElement clip, const Around& inside) {
        std::size_t number = 0;
        for (XmlElement at = clip.firstChild(); at; at = at.next()) {
            const std::string_view name = at.name();
            const bool isRow =
                isMarker(name) || isStory(name) || isOneOf(name, {"keyword", "rating"});
            if (!isRow) {
                const bool isTaken =
                    isOneOf(name, {"note", "metadata", "text", "filter-video", "filter-audio"});
                if (!isTaken && !isAudioRole(name)) noteUnread(at);
                continue;
            }
            Around own = inside;
            own.place += "." + std::to_string(++number);
            ++own.depth;
            if (isStory(name)) {
                readAnchored(at, own);
            } else {
                readMark(at, clip, own);
            }
        }
    }

    // What has a lane is connected to the clip, all else is what the clip is made of.
    void readAnchored(XmlElement item, Around around) {
        const std::string_view lane = item.attribute("lane");
        if (lane.empty() || lane == "0") {
            around.isPart = true;
            around.hasRecord = false;
        } else if (!around.isPart) {
            around.track = trackOfLane(lane);
        }
        readItem(item, around, time(item, "offset", startOf(item)));
    }

    static std::string trackOfLane(std::string_view lane) {
        if (lane.starts_with('-')) return concat("A", lane.substr(1));
        const ExactTime number = ExactTime::of(lane);
        return "V" + std::to_string(number.isKnown() ? number.over() + 1 : 2);
    }

    void readTransition(XmlElement item, const Around& around, const ExactTime& offset) {
        begin(item, "Transition", around);
        rows_.set(timeline::clipName, item.attribute("name"));
        rows_.set(timeline::transition, item.attribute("name"));
        setRecord(around.shift + offset, lengthOf(item), around);
        rows_.end();
        for (XmlElement at = item.firstChild(); at; at = at.next()) noteUnread(at);
    }

    // What is outside the clip is nowhere on the record.
    void setMarkedTimes(const ExactTime& start, const ExactTime& length, XmlElement clip,
                        const Around& inside) {
        Around none = inside;
        none.hasRecord = false;
        setTimes(start, length, framesOf(clip, inside), none);
        const ExactTime first = startOf(clip);
        const ExactTime from = std::max(start, first);
        const ExactTime to = std::min(start + length, first + lengthOf(clip));
        if (!(to < from)) setRecord(inside.shift + from, to - from, inside);
    }

    static const char* kindOf(XmlElement mark) {
        if (mark.name() == "keyword") return "Keyword";
        if (mark.name() == "rating") return "Rating";
        if (mark.name() == "chapter-marker") return "Chapter";
        return mark.has("completed") ? "To Do" : "Marker";
    }

    // Markers, keywords and ratings; those without a range are about all of the clip.
    void readMark(XmlElement mark, XmlElement clip, const Around& inside) {
        begin(mark, kindOf(mark), inside);
        rows_.set(timeline::clipName, clip.attribute("name"));
        const bool isKeyword = mark.name() == "keyword";
        const bool isRating = mark.name() == "rating";
        rows_.set(isKeyword  ? "Keyword"
                  : isRating ? "Rating"
                             : timeline::marker,
                  mark.attribute("value"));
        rows_.set(timeline::note, mark.attribute("note"));
        rows_.set("Completed", mark.attribute("completed"));
        const ExactTime start = time(mark, "start", startOf(clip));
        const ExactTime length =
            time(mark, "duration", isMarker(mark.name()) ? ExactTime() : lengthOf(clip));
        setMarkedTimes(start, length, clip, inside);
        rows_.set("Poster Offset", mark.attribute("posterOffset"));
        rows_.end();
        for (XmlElement at = mark.firstChild(); at; at = at.next()) noteUnread(at);
    }

    void noteUnread(XmlElement element) {
        if (unread_.empty()) firstUnread_ = lineOf(element);
        ++unread_[std::string(element.name())];
    }

    void tellUnread() {
        if (unread_.empty()) return;
        std::string list;
        for (const auto& [name, count] : unread_) {
            addToList(list, name + " " + std::to_string(count));
        }
        rows_.problem(firstUnread_, concat("settings and collections (", list, ")"),
                      "clips, markers and keywords", "they are not read");
    }

    const LineIndex& lines_;
    Log& log_;
    XmlElement root_;
    TimelineRows rows_;
    std::map<std::string_view, XmlElement> resources_;
    std::optional<FrameRate> rate_;
    std::map<std::string, std::size_t> unread_;
    std::size_t firstUnread_ = 0;
    std::size_t tops_ = 0;
    std::optional<FrameRate> heading_;  // of the first project
    bool isTitled_ = false;
};

// A document takes as much beside the text as real ones need, and hostile ones no more.
std::size_t mostMemory(std::size_t bytes) {
    constexpr std::size_t ofAnyText = std::size_t{16} << 20;
    constexpr std::size_t ofEachByte = 4;
    return ofAnyText + ofEachByte * bytes;
}

[[noreturn]] void refuse(const Log& log, std::size_t line, const std::string& found) {
    throw Failure{unreadable,
                  worded(log.name, {line, "", found, "a well-formed FCPXML document", ""})};
}

// Entities make at most so much more than there are bytes.
constexpr std::size_t mostOfEntities = std::size_t{1} << 20;

Text withoutEntities(Text text, Log& log) {
    std::optional<ExpandedXml> made =
        expandedEntities(text.view(), mostOfEntities + text.view().size());
    if (!made) return text;
    if (!made->refused.empty()) {
        refuse(log, LineIndex(text.view()).line(made->refusedAt), made->refused);
    }
    const LineIndex lines(made->text);
    for (const ExpandedXml::Unknown& one : made->unknown) {
        log.report([&]() -> Problem {
            return {lines.line(one.offset), "", concat("an entity &", one.name, ";"),
                    "one that the document itself says the text of", "its name stays in its place"};
        });
    }
    text = {TextBlock::create(made->text.size()), 0};
    std::copy(made->text.begin(), made->text.end(), text.block->data());
    return text;
}

}  // namespace

void readFcpxml(Text came, Log& log) {
    Text text = withoutEntities(std::move(came), log);
    const std::string_view view = text.view();
    const std::size_t bytes = view.size();
    const LineIndex lines(view);
    XmlDocument document;
    const XmlDocument::Fault fault =
        document.parse(text.block->data() + text.start, bytes, mostMemory(bytes));
    if (fault.isAny()) refuse(log, lines.line(fault.offset), fault.found);
    FcpxmlReader(document, lines, bytes, log).read();
}

}  // namespace vek::formats
