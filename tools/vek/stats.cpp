#include <algorithm>
#include <map>
#include <set>

#include "host/strxcmp.h"
#include "tools/vek/cli/conditions.h"
#include "tools/vek/cli/grid.h"
#include "tools/vek/cli/timecode.h"
#include "tools/vek/cli/writers.h"
#include "tools/vek/commands.h"

namespace vek {

namespace {

// The first of these columns that the log has.
unsigned firstColumn(const Log& log, std::initializer_list<const char*> names) {
    for (const char* name : names) {
        unsigned column = log.findColumn(name);
        if (column != noColumn) return column;
    }
    return noColumn;
}

RangeColumns firstPair(const Log& log,
                       std::initializer_list<std::pair<const char*, const char*>> names) {
    for (const auto& [start, end] : names) {
        RangeColumns pair{log.findColumn(start), log.findColumn(end)};
        if (pair.start != noColumn && pair.end != noColumn) return pair;
    }
    return {noColumn, noColumn};
}

// Where a log keeps what statistics are made of.
struct Places {
    unsigned scene;
    unsigned take;
    RangeColumns time;
    RangeColumns keycode;

    explicit Places(const Log& log)
        : scene(firstColumn(log, {"Scene"})),
          take(firstColumn(log, {"Take"})),
          time(firstPair(log, {{"Start time", "End time"},
                               {"Start", "End"},
                               {"Source In", "Source Out"},
                               {"Mark IN", "Mark OUT"}})),
          keycode(firstPair(log, {{"start keycode", "end keycode"}, {"KN Start", "KN End"}})) {}
};

struct Rates {
    int nominal = 0;  // 0 where it is not known
    int framesPerFoot = 16;
};

// The sums over the rows of one group.
struct Sums {
    std::size_t clips = 0;
    std::set<std::string> scenes;
    std::size_t takes = 0;
    std::int64_t frames = 0;
    std::size_t untimed = 0;
    bool dropFrame = false;
    std::int64_t filmFrames = 0;
};

struct PeopleLess {
    bool operator()(const std::string& a, const std::string& b) const {
        int order = strxcmp(std::string_view(a), std::string_view(b));
        return order != 0 ? order < 0 : a < b;
    }
};

using Groups = std::map<std::string, Sums, PeopleLess>;

class Counter {
public:
    Counter(const Log& log, const Rates& rates) : log_(log), rates_(rates), places_(log) {}

    void count(unsigned row, Sums& sums) const {
        ++sums.clips;
        if (places_.scene != noColumn && !log_.cell(row, places_.scene).empty()) {
            sums.scenes.emplace(log_.cell(row, places_.scene));
        }
        if (places_.take != noColumn && !log_.cell(row, places_.take).empty()) ++sums.takes;
        countTime(row, sums);
        countFilm(row, sums);
    }

    const Places& places() const { return places_; }

private:
    void countTime(unsigned row, Sums& sums) const {
        if (places_.time.start == noColumn || rates_.nominal == 0) return;
        std::optional<Timecode> start = parseTimecode(log_.cell(row, places_.time.start));
        std::optional<Timecode> end = parseTimecode(log_.cell(row, places_.time.end));
        std::int64_t frames =
            start && end ? framesOf(*end, rates_.nominal) - framesOf(*start, rates_.nominal) : -1;
        if (frames < 0) {
            ++sums.untimed;
            return;
        }
        sums.frames += frames;
        sums.dropFrame = sums.dropFrame || start->dropFrame;
    }

    void countFilm(unsigned row, Sums& sums) const {
        if (places_.keycode.start == noColumn) return;
        auto start = keycodeFrames(log_.cell(row, places_.keycode.start), rates_.framesPerFoot);
        auto end = keycodeFrames(log_.cell(row, places_.keycode.end), rates_.framesPerFoot);
        if (start && end && *end >= *start) sums.filmFrames += *end - *start;
    }

    const Log& log_;
    const Rates& rates_;
    Places places_;
};

std::string footage(std::int64_t frames, int framesPerFoot) {
    std::string rest = std::to_string(frames % framesPerFoot);
    return std::to_string(frames / framesPerFoot) + "+" + (rest.size() < 2 ? "0" : "") + rest;
}

std::string bar(std::int64_t value, std::int64_t most, std::size_t width) {
    if (most <= 0) return {};
    auto length = static_cast<std::size_t>(value) * width / static_cast<std::size_t>(most);
    std::string out;
    for (std::size_t i = 0; i < length || (i == 0 && value > 0); ++i) out += "\xE2\x96\x88";
    return out;
}

// What is printed about a group; columns for which the log has nothing are left out.
class StatsTable {
public:
    StatsTable(const Rates& rates, const Places& places, unsigned column)
        : rates_(rates),
          hasScenes_(places.scene != noColumn && places.scene != column),
          hasTakes_(places.take != noColumn),
          hasTime_(places.time.start != noColumn && rates.nominal != 0),
          hasFilm_(places.keycode.start != noColumn) {}

    void print(const std::string& title, const Groups& groups, const Screen& screen, Output& out) {
        Grid grid;
        grid.columns = titles(title);
        Sums total;
        for (const auto& [name, sums] : groups) add(total, sums);
        std::int64_t most = 0;
        for (const auto& [name, sums] : groups) most = std::max(most, weight(sums));
        std::vector<std::vector<std::string>> rows;
        for (const auto& [name, sums] : groups) {
            rows.push_back(cells(name.empty() ? "(none)" : name, sums));
            rows.back().push_back(bar(weight(sums), most, barWidth));
        }
        rows.push_back(cells("all", total));
        rows.back().emplace_back();
        grid.rowCount = rows.size();
        grid.cell = [&](std::size_t row, std::size_t column) -> std::string_view {
            return rows[row][column];
        };
        printGrid(grid, screen, out);
    }

private:
    static constexpr std::size_t barWidth = 20;

    std::vector<GridColumn> titles(const std::string& title) const {
        std::vector<GridColumn> columns = {{title}, {"Clips", true}};
        if (hasScenes_) columns.push_back({"Scenes", true});
        if (hasTakes_) columns.push_back({"Takes", true});
        if (hasTime_) columns.push_back({"Running time", true});
        if (hasFilm_) columns.push_back({"Footage", true});
        columns.push_back({""});
        return columns;
    }

    std::vector<std::string> cells(const std::string& name, const Sums& sums) const {
        std::vector<std::string> out = {name, std::to_string(sums.clips)};
        if (hasScenes_) out.push_back(std::to_string(sums.scenes.size()));
        if (hasTakes_) out.push_back(std::to_string(sums.takes));
        if (hasTime_) out.push_back(timecodeText(sums.frames, rates_.nominal, sums.dropFrame));
        if (hasFilm_) out.push_back(footage(sums.filmFrames, rates_.framesPerFoot));
        return out;
    }

    std::int64_t weight(const Sums& sums) const {
        return hasTime_ ? sums.frames : static_cast<std::int64_t>(sums.clips);
    }

    static void add(Sums& total, const Sums& sums) {
        total.clips += sums.clips;
        total.scenes.insert(sums.scenes.begin(), sums.scenes.end());
        total.takes += sums.takes;
        total.frames += sums.frames;
        total.dropFrame = total.dropFrame || sums.dropFrame;
        total.filmFrames += sums.filmFrames;
    }

    const Rates& rates_;
    bool hasScenes_;
    bool hasTakes_;
    bool hasTime_;
    bool hasFilm_;
};

Rates ratesOf(const Log& log, const Args& args) {
    Rates rates;
    rates.framesPerFoot = args.text("gauge", "35") == "16" ? 40 : 16;
    std::string text = args.text("fps", log.parameter("FPS"));
    std::optional<FrameRate> rate = parseFrameRate(text);
    if (args.has("fps") && !rate) {
        throw Failure{wrongUsage, "--fps takes a rate such as 24 or 29.97, not " + inQuotes(text)};
    }
    if (rate) rates.nominal = rate->nominal;
    return rates;
}

Groups groupsBy(const Counter& counter, const Log& log, const VDBView& view, unsigned column) {
    Groups groups;
    for (unsigned i = 0; i < view->get_num_records(); ++i) {
        unsigned row = view->baseIndex(i);
        counter.count(row, groups[std::string(log.cell(row, column))]);
    }
    return groups;
}

void tellWhatIsMissing(const Log& log, const Groups& groups, const Rates& rates,
                       const Places& places) {
    if (places.time.start != noColumn && rates.nominal == 0) {
        say(log.name + ": no frame rate, expected a parameter FPS; running times need --fps");
    }
    std::size_t untimed = 0;
    for (const auto& [name, sums] : groups) untimed += sums.untimed;
    if (untimed > 0) {
        say(log.name + ": " + counted(untimed, "clip") +
            " without a start and an end behind it, "
            "not in the running time");
    }
}

// Without --by: a table of reels and one of scenes, as far as the log has them.
std::vector<unsigned> groupColumns(const Log& log, const Args& args) {
    if (args.has("by")) return {log.requireColumn(args.text("by"))};
    std::vector<unsigned> columns;
    for (unsigned column :
         {firstColumn(log, {"Reel", "Tape", "Camroll"}), firstColumn(log, {"Scene"})}) {
        if (column != noColumn) columns.push_back(column);
    }
    if (!columns.empty()) return columns;
    throw Failure{wrongUsage, log.name + ": no column Reel, Tape or Scene, expected --by COLUMN"};
}

int run(const Args& args) {
    Selection selection = selectionFrom(args);
    Log log = readLog(args, "FILE", wantedRows(selection));
    Rates rates = ratesOf(log, args);
    VDBView view = selectRows(log, selection).view;
    Counter counter(log, rates);
    Output out;
    Screen screen = screenOf(out, args);
    bool isFirst = true;
    for (unsigned column : groupColumns(log, args)) {
        Groups groups = groupsBy(counter, log, view, column);
        if (isFirst)
            tellWhatIsMissing(log, groups, rates, counter.places());
        else
            out.line("");
        isFirst = false;
        StatsTable table(rates, counter.places(), column);
        table.print(log.columnName(column), groups, screen, out);
    }
    out.close();
    return narrows(selection) && view->get_num_records() == 0 ? found : readingResult(log);
}

}  // namespace

Command statsCommand() {
    return {
        "stats",
        "count clips, takes, running time and footage by reel and scene",
        "Counts clips, scenes and takes, and adds up running times (end minus start, in timecode "
        "of the log's FPS parameter or of --fps, drop-frame where the log's is) and footage from "
        "keycodes. The longest group has the longest bar.",
        {{"vek stats samples/docs.vek", "by reel, then by scene"},
         {"vek stats samples/dailies.vek --by 'cam reel'", "by any column"},
         {"vek stats samples/docs.vek --where Tag==1 --fps 25", "chosen rows, another rate"}},
        {{"FILE", "the log, or - for standard input"}},
        join(join({{"--by", "COLUMN", "one table, a row for each value of this column"},
                   {"--fps", "RATE", "frames a second: 24, 25, 29.97, ..."},
                   {"--gauge", "MM", "35 mm film has 16 frames a foot, 16 mm film 40", false,
                    "35|16"}},
                  join(choosingOptions(), {fromOption()})),
             screenOptions()),
        run,
    };
}

}  // namespace vek
