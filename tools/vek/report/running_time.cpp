#include <algorithm>

#include "formats/text/suggestion.h"
#include "tools/vek/report/figure.h"
#include "tools/vek/report/markup.h"
#include "tools/vek/report/pictures.h"
#include "tools/vek/report/svg.h"

namespace vek::page {

namespace {

constexpr std::size_t mostBars = 60;

constexpr double names = 96;
constexpr double barLength = 260;
constexpr double values = 190;
constexpr double barHeight = 20;

class Bars {
public:
    Bars(const LogOnPage& log, const std::string& title, const ClipGroups& groups)
        : log_(log), title_(title), groups_(groups), shown_(std::min(groups.size(), mostBars)) {
        for (std::size_t i = 0; i < shown_; ++i) most_ = std::max(most_, weightOf(groups[i].sums));
    }

    std::string picture() const {
        const double height = barHeight * static_cast<double>(shown_) + 6;
        Svg svg(names + barLength + values, height, what() + " by " + title_, "bars");
        for (std::size_t i = 0; i < shown_; ++i) drawBar(svg, groups_[i], i);
        return std::move(svg).take();
    }

    /// "Running time", or "Clips" in a log that has none.
    std::string what() const { return log_.hasTime() ? "Running time" : "Clips"; }

    std::string notes() const {
        return shownOf(shown_, groups_.size(), asText(title_) + " groups");
    }

private:
    std::int64_t weightOf(const ClipSums& sums) const {
        return log_.hasTime() ? sums.frames : static_cast<std::int64_t>(sums.clips);
    }

    void drawBar(Svg& svg, const ClipGroup& group, std::size_t place) const {
        constexpr std::size_t widestName = 13;
        const double y = barHeight * static_cast<double>(place) + 3;
        const double part =
            most_ > 0 ? static_cast<double>(weightOf(group.sums)) / static_cast<double>(most_) : 0;
        svg.text(names - 8, y + 12, group.name.empty() ? "(none)" : group.name, "name", widestName);
        svg.rect({names, y, std::max(1.0, barLength * part), barHeight - 6}, "bar");
        svg.text(names + barLength * part + 6, y + 12, valueOf(group.sums), "sum");
    }

    std::string valueOf(const ClipSums& sums) const {
        const std::string clips = counted(sums.clips, "clip");
        return log_.hasTime() ? log_.timeText(sums) + ", " + clips : clips;
    }

    const LogOnPage& log_;
    const std::string& title_;
    const ClipGroups& groups_;
    std::size_t shown_;
    std::int64_t most_ = 0;
};

}  // namespace

std::string runningTimeOf(const LogOnPage& log) {
    std::string out;
    for (const auto& [title, groups] : log.tables()) {
        if (groups.empty()) continue;
        const Bars bars(log, title, groups);
        const std::string id =
            "bars-" + std::to_string(log.number()) + "-" + std::to_string(out.size());
        out += figure(id, bars.what() + " by " + asText(title), bars.picture(), bars.notes());
    }
    return out.empty() ? out : "<div class=\"beside\">\n" + out + "</div>\n";
}

}  // namespace vek::page
