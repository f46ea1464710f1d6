#include <algorithm>
#include <map>

#include "formats/text/suggestion.h"
#include "formats/text/width.h"
#include "tools/vek/report/figure.h"
#include "tools/vek/report/pictures.h"
#include "tools/vek/report/svg.h"

namespace vek::page {

namespace {

constexpr std::size_t mostScenes = 120;
constexpr std::size_t mostTakes = 40;

constexpr double names = 96;
constexpr double headHeight = 24;
constexpr double cellWidth = 27;
constexpr double cellHeight = 20;
constexpr double plainWidth = 80;  // of the sums at the right

// The clips of a scene that have one take.
struct Takes {
    std::size_t clips = 0;
    std::size_t tagged = 0;
    unsigned firstRow = 0;

    void add(unsigned row, bool isTagged) {
        if (clips++ == 0) firstRow = row;
        tagged += isTagged ? 1 : 0;
    }
};

class Coverage {
public:
    explicit Coverage(const LogOnPage& log)
        : log_(log),
          scenes_(log.valuesOfClips(log.places().scene)),
          takes_(log.valuesOfClips(log.places().take)) {
        for (unsigned row = 0; row < log.rowCount(); ++row) {
            if (!log.isClip(row)) continue;
            const std::uint32_t scene = scenes_.placeOf[row];
            const std::uint32_t take = takes_.placeOf[row];
            const bool isTagged = log.isTagged(row);
            sums_[scene].add(row, isTagged);
            if (scene < mostScenes && take < mostTakes) cells_[{scene, take}].add(row, isTagged);
        }
    }

    std::string figure() const {
        return page::figure("coverage-" + std::to_string(log_.number()), "Coverage", picture(),
                            legend());
    }

private:
    std::size_t sceneCount() const { return std::min(scenes_.values.size(), mostScenes); }
    std::size_t takeCount() const { return std::min(takes_.values.size(), mostTakes); }

    static std::string nameOf(std::string_view value) {
        return value.empty() ? "(none)" : std::string(value);
    }

    std::string picture() const {
        const double right = names + cellWidth * static_cast<double>(takeCount());
        const double height = headHeight + cellHeight * static_cast<double>(sceneCount()) + 6;
        Svg svg(right + plainWidth, height,
                "Coverage: " + counted(sceneCount(), "scene") + " against " +
                    counted(takeCount(), "take"),
                "coverage");
        svg.text(names - 8, headHeight - 9, "scene / take", "name");
        for (std::size_t take = 0; take < takeCount(); ++take) {
            svg.text(centre(take), headHeight - 9, nameOf(takes_.values[take]), "count", 4);
        }
        for (std::size_t scene = 0; scene < sceneCount(); ++scene) drawScene(svg, scene, right);
        return std::move(svg).take();
    }

    static double left(std::size_t take) { return names + cellWidth * static_cast<double>(take); }
    static double centre(std::size_t take) { return left(take) + cellWidth / 2 - 1; }

    void drawScene(Svg& svg, std::size_t scene, double right) const {
        constexpr std::size_t widestName = 13;
        const double y = headHeight + cellHeight * static_cast<double>(scene);
        svg.text(names - 8, y + 13, nameOf(scenes_.values[scene]), "name", widestName);
        const auto place = static_cast<std::uint32_t>(scene);
        for (auto cell = cells_.lower_bound({place, 0});
             cell != cells_.end() && cell->first.first == place; ++cell) {
            drawCell(svg, scene, cell->first.second, cell->second, y);
        }
        const Takes& all = sums_.at(place);
        const std::string tagged =
            all.tagged > 0 ? ", " + std::to_string(all.tagged) + " \xE2\x98\x85" : "";
        svg.text(right + 8, y + 13, std::to_string(all.clips) + tagged, "sum");
    }

    void drawCell(Svg& svg, std::size_t scene, std::size_t take, const Takes& clips,
                  double y) const {
        const std::string title =
            "scene " + nameOf(scenes_.values[scene]) + ", take " + nameOf(takes_.values[take]) +
            ": " + counted(clips.clips, "clip") + ", " + std::to_string(clips.tagged) + " tagged";
        const bool isTagged = clips.tagged > 0;
        svg.beginLink(log_.anchorOfRow(clips.firstRow), fitted(title, 200));
        svg.rect({left(take) + 0.5, y + 0.5, cellWidth - 3, cellHeight - 3},
                 isTagged ? "cell full" : "cell");
        svg.text(centre(take), y + 13, std::to_string(clips.clips),
                 isTagged ? "count full" : "count");
        svg.endLink();
    }

    std::string legend() const {
        return "<ul class=\"legend\"><li><span class=\"box\">2</span> clips of a scene with one "
               "take number</li><li><span class=\"box full\">2</span> one of them or more is "
               "tagged</li><li>at the right: clips of the scene, tagged ones \xE2\x98\x85</li>"
               "</ul>\n" +
               shownOf(sceneCount(), scenes_.values.size(), "scenes") +
               shownOf(takeCount(), takes_.values.size(), "takes");
    }

    const LogOnPage& log_;
    SortedValues scenes_;
    SortedValues takes_;
    std::map<std::pair<std::uint32_t, std::uint32_t>, Takes> cells_;
    std::map<std::uint32_t, Takes> sums_;
};

}  // namespace

std::string coverageOf(const LogOnPage& log) {
    const bool hasBoth = log.places().scene != noColumn && log.places().take != noColumn;
    const bool isFilledIn = !log.sums().scenes.empty() || log.sums().takes > 0;
    return hasBoth && isFilledIn ? Coverage(log).figure() : std::string();
}

}  // namespace vek::page
