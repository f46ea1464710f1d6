#include <algorithm>

#include "formats/text/suggestion.h"
#include "tools/vek/report/figure.h"
#include "tools/vek/report/markup.h"
#include "tools/vek/report/pictures.h"
#include "tools/vek/report/svg.h"
#include "tools/vek/report/time_axis.h"

namespace vek::page {

namespace {

constexpr std::size_t mostLanes = 60;
constexpr std::size_t mostTracks = 4;
constexpr std::size_t mostSingleClips = 2000;  // more are drawn together where they touch
constexpr unsigned colours = 8;
constexpr std::size_t mostInLegend = 40;

constexpr double laneNames = 96;
constexpr double lineLength = 1100;
constexpr double rightEdge = 12;
constexpr double axisHeight = 26;
constexpr double nameHeight = 12;  // scenes stand above their clips
constexpr double clipHeight = 13;
constexpr double tagHeight = 7;  // and tags below
constexpr double trackHeight = nameHeight + clipHeight + tagHeight;
constexpr double laneGap = 3;
constexpr double narrowestClip = 2;

// One clip, or several that stand too close together to be told apart.
struct Block {
    double x = 0;
    double width = 0;
    unsigned row = 0;  // the first
    std::size_t clips = 1;
    std::uint32_t scene = 0;
    bool hasSeveralScenes = false;
    bool isTagged = false;

    double end() const { return x + width; }
};

struct Lane {
    std::string name;
    std::vector<std::vector<Block>> tracks;
    std::size_t clips = 0;
};

class Timeline {
public:
    explicit Timeline(const LogOnPage& log)
        : log_(log), spans_(spansOf(log)), axis_(presentSpans(), lineLength) {
        if (log.places().scene != noColumn) scenes_ = log.valuesOfClips(log.places().scene);
        if (log.laneColumn() != noColumn) lanesOf_ = log.valuesOfClips(log.laneColumn());
        fillLanes();
    }

    static std::vector<Span> spansOf(const LogOnPage& log) {
        std::vector<Span> spans;
        spans.reserve(log.rowCount());
        for (unsigned row = 0; row < log.rowCount(); ++row) {
            spans.push_back(log.isClip(row) ? log.span(row) : Span());
        }
        return spans;
    }

    std::string figure() const {
        return page::figure("timeline-" + std::to_string(log_.number()), "Timeline", picture(),
                            legend() + notes());
    }

private:
    std::vector<Span> presentSpans() const {
        std::vector<Span> present;
        std::copy_if(spans_.begin(), spans_.end(), std::back_inserter(present),
                     [](const Span& span) { return span.isThere; });
        return present;
    }

    std::size_t laneOf(unsigned row) const {
        return lanesOf_.placeOf.empty() ? 0 : lanesOf_.placeOf[row];
    }

    // Lanes without a clip that has a timecode are left out.
    void fillLanes() {
        std::vector<Lane> lanes(std::max<std::size_t>(1, lanesOf_.values.size()));
        for (std::size_t i = 0; i < lanesOf_.values.size(); ++i) {
            lanes[i].name = std::string(lanesOf_.values[i]);
        }
        for (unsigned row : rowsByTime()) {
            Lane& lane = lanes[laneOf(row)];
            ++lane.clips;
            place(blockOf(row), lane);
        }
        std::erase_if(lanes, [](const Lane& lane) { return lane.clips == 0; });
        laneCount_ = lanes.size();
        if (lanes.size() > mostLanes) lanes.resize(mostLanes);
        lanes_ = std::move(lanes);
    }

    std::vector<unsigned> rowsByTime() const {
        std::vector<unsigned> rows;
        for (unsigned row = 0; row < spans_.size(); ++row) {
            if (spans_[row].isThere) rows.push_back(row);
        }
        std::stable_sort(rows.begin(), rows.end(), [this](unsigned a, unsigned b) {
            return spans_[a].start < spans_[b].start;
        });
        return rows;
    }

    Block blockOf(unsigned row) const {
        const double from = axis_.x(spans_[row].start);
        const double width = axis_.x(spans_[row].end) - from;
        const std::uint32_t scene = scenes_.placeOf.empty() ? 0 : scenes_.placeOf[row];
        Block block{from, std::max(width, narrowestClip), row};
        block.scene = scene;
        block.isTagged = log_.isTagged(row);
        return block;
    }

    // Clips at one time stand below each other, as far as there are tracks.
    void place(const Block& block, Lane& lane) {
        for (std::vector<Block>& track : lane.tracks) {
            if (track.back().end() <= block.x + 0.01) return track.push_back(block);
            if (joins(track.back(), block)) return join(track.back(), block);
        }
        if (lane.tracks.size() < mostTracks) return lane.tracks.push_back({block});
        join(lane.tracks.back().back(), block);
    }

    // Where there are many, those of a scene become one as soon as they touch, and all within
    // the width of the narrowest.
    bool joins(const Block& last, const Block& next) const {
        if (log_.rowCount() <= mostSingleClips) return false;
        const bool isOneScene = !last.hasSeveralScenes && last.scene == next.scene;
        return isOneScene || next.x - last.x < narrowestClip;
    }

    static void join(Block& last, const Block& next) {
        last.width = std::max(last.end(), next.end()) - last.x;
        last.hasSeveralScenes = last.hasSeveralScenes || last.scene != next.scene;
        last.isTagged = last.isTagged || next.isTagged;
        last.clips += next.clips;
    }

    static double heightOf(const Lane& lane) {
        return trackHeight * static_cast<double>(lane.tracks.size()) + laneGap;
    }

    double height() const {
        double height = axisHeight;
        for (const Lane& lane : lanes_) height += heightOf(lane);
        return height + laneGap;
    }

    std::string label() const {
        return "Timeline of " + counted(lanes_.size(), "lane") + ", " + axisText();
    }

    std::string axisText() const {
        const auto ticks = axis_.ticks();
        return "from " + ticks.front().text + " to about " + ticks.back().text;
    }

    std::string picture() const {
        Svg svg(laneNames + lineLength + rightEdge, height(), label(), "timeline");
        drawAxis(svg);
        double y = axisHeight;
        for (const Lane& lane : lanes_) {
            drawLane(svg, lane, y);
            y += heightOf(lane);
        }
        return std::move(svg).take();
    }

    void drawAxis(Svg& svg) const {
        const double bottom = height() - laneGap;
        for (const TimeAxis::Tick& tick : axis_.ticks()) {
            const double x = laneNames + tick.x;
            svg.line(x, axisHeight - 6, x, bottom, "tick");
            const bool hasRoom = tick.x + 3 + widthInPicture(tick.text) <= lineLength + rightEdge;
            if (hasRoom) svg.text(x + 3, axisHeight - 9, tick.text, "time");
        }
        const auto& stretches = axis_.stretches();
        for (std::size_t i = 0; i + 1 < stretches.size(); ++i) {
            const double from = axis_.endOf(stretches[i]);
            svg.rect({laneNames + from + 1, axisHeight - 2, stretches[i + 1].x - from - 2,
                      bottom - axisHeight + 2},
                     "fold");
        }
    }

    void drawLane(Svg& svg, const Lane& lane, double y) const {
        const double top = y + laneGap;
        constexpr std::size_t widestName = 13;
        svg.text(laneNames - 8, top + nameHeight + 10, lane.name.empty() ? "(none)" : lane.name,
                 "name", widestName);
        svg.line(laneNames, y + heightOf(lane), laneNames + lineLength, y + heightOf(lane), "rule");
        for (std::size_t i = 0; i < lane.tracks.size(); ++i) {
            drawTrack(svg, lane.tracks[i], top + trackHeight * static_cast<double>(i));
        }
    }

    void drawTrack(Svg& svg, const std::vector<Block>& track, double y) const {
        double named = -1;  // where the last name ends
        for (std::size_t i = 0; i < track.size(); ++i) {
            const Block& block = track[i];
            drawBlock(svg, block, y);
            const bool isNew = i == 0 || track[i - 1].scene != block.scene;
            if (!isNew || block.hasSeveralScenes || scenes_.values.empty()) continue;
            const std::string name(scenes_.values[block.scene].substr(0, 24));
            const double width = widthInPicture(name) + 4;
            if (block.x < named) continue;
            svg.text(laneNames + block.x, y + nameHeight - 3, name, "scene");
            named = block.x + width;
        }
    }

    void drawBlock(Svg& svg, const Block& block, double y) const {
        const double x = laneNames + block.x;
        const double top = y + nameHeight;
        svg.beginLink(log_.anchorOfRow(block.row), titleOf(block));
        svg.rect({x, top, std::max(block.width - 0.6, narrowestClip - 0.6), clipHeight},
                 lookOf(block));
        if (block.isTagged) drawTag(svg, x, top + clipHeight + 1);
        svg.endLink();
    }

    static void drawTag(Svg& svg, double x, double y) {
        constexpr double half = 3.5;
        const std::string bottom = "," + shortNumber(y + tagHeight - 1);
        svg.shape(shortNumber(x) + bottom + " " + shortNumber(x + 2 * half) + bottom + " " +
                      shortNumber(x + half) + "," + shortNumber(y),
                  "tag");
    }

    std::string lookOf(const Block& block) const {
        if (block.hasSeveralScenes || scenes_.values.empty()) return "clip";
        return "s" + std::to_string(block.scene % colours);
    }

    std::string titleOf(const Block& block) const {
        if (block.clips == 1) return log_.describe(block.row);
        const std::string tagged = block.isTagged ? ", some of them tagged" : "";
        return counted(block.clips, "clip") + tagged + ", the first is " + log_.describe(block.row);
    }

    std::string legend() const {
        std::string out = "<ul class=\"legend\">";
        if (log_.tagCount() > 0) out += "<li><span class=\"mark\">\xE2\x96\xB2</span> tagged</li>";
        if (axis_.stretches().size() > 1) {
            out += "<li><span class=\"swatch fold\"></span> nothing shot, time left out</li>";
        }
        const std::size_t shown = std::min(scenes_.values.size(), mostInLegend);
        for (std::size_t i = 0; i < shown; ++i) addScene(out, i);
        if (shown < scenes_.values.size()) {
            out += "<li>and " + std::to_string(scenes_.values.size() - shown) + " more scenes</li>";
        }
        return out + "</ul>\n";
    }

    void addScene(std::string& out, std::size_t place) const {
        out += "<li><span class=\"swatch s" + std::to_string(place % colours) + "\"></span> <bdi>";
        const std::string_view scene = scenes_.values[place];
        addShortText(out, scene.empty() ? "(none)" : scene, 60);
        out += "</bdi></li>";
    }

    std::string notes() const {
        const std::size_t missing = log_.sums().clips - presentSpans().size();
        std::string out = shownOf(lanes_.size(), laneCount_, "lanes");
        if (missing > 0) {
            out += "<p class=\"note\">" + counted(missing, "clip") +
                   " without a start timecode, not in the picture.</p>\n";
        }
        return out;
    }

    const LogOnPage& log_;
    std::vector<Span> spans_;
    TimeAxis axis_;
    SortedValues scenes_;
    SortedValues lanesOf_;
    std::vector<Lane> lanes_;
    std::size_t laneCount_ = 0;
};

}  // namespace

std::string timelineOf(const LogOnPage& log) {
    const std::vector<Span> spans = Timeline::spansOf(log);
    const bool isEmpty =
        std::none_of(spans.begin(), spans.end(), [](const Span& span) { return span.isThere; });
    return isEmpty ? std::string() : Timeline(log).figure();
}

}  // namespace vek::page
