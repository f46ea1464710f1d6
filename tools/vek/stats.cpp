#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include <vekdb/formats/keycode.h>
#include <vekdb/host/keyed_hash.h>
#include <vekdb/host/strxcmp.h>
#include "formats/text/text_lines.h"
#include "formats/timecode/clip_columns.h"
#include "formats/timecode/counting.h"
#include "formats/writing/writers.h"
#include "tools/vek/cli/choosing.h"
#include "tools/vek/cli/grid.h"
#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/say.h"
#include "tools/vek/cli/telling.h"
#include "tools/vek/commands.h"

namespace vek {

namespace {

// Where a log keeps what statistics are made of.
struct Places {
    unsigned scene;
    unsigned take;
    RangeColumns time;
    RangeColumns keycode;

    explicit Places(const Log& log)
        : scene(firstColumn(log, {"Scene"})),
          take(firstColumn(log, {"Take"})),
          time(sourceColumns(log)),
          keycode(keycodeColumns(log)) {}
};

struct Rates {
    LogCounting counting;
    const Gauge& gauge;

    int nominal() const { return counting.nominal(); }  // 0 where it is not known
};

// The sums over the rows of one group.
struct Sums {
    std::size_t clips = 0;
    std::unordered_set<std::string_view, Quor::KeyedHash> scenes;  // of the log's own cells
    std::size_t takes = 0;
    std::int64_t frames = 0;
    std::size_t untimed = 0;
    bool dropFrame = false;
    std::int64_t perforations = 0;
    std::size_t unfilmed = 0;
};

struct Group {
    std::string name;
    Sums sums;
};

using Groups = std::vector<Group>;

bool isBefore(const Group& a, const Group& b) {
    int order = strxcmp(std::string_view(a.name), std::string_view(b.name));
    return order != 0 ? order < 0 : a.name < b.name;
}

// What one row adds to the sums of its group.
struct Clip {
    std::string_view scene;
    bool isTake = false;
    bool isUntimed = false;
    bool dropFrame = false;
    bool isUnfilmed = false;
    std::int64_t frames = 0;
    std::int64_t perforations = 0;
};

class Counter {
public:
    Counter(const Log& log, const Rates& rates) : log_(log), rates_(rates), places_(log) {}

    Clip clip(unsigned row) const {
        Clip clip;
        if (places_.scene != noColumn) clip.scene = log_.cell(row, places_.scene);
        clip.isTake = places_.take != noColumn && !log_.cell(row, places_.take).empty();
        readTime(row, clip);
        readFilm(row, clip);
        return clip;
    }

    const Places& places() const { return places_; }

private:
    void readTime(unsigned row, Clip& clip) const {
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
    void readFilm(unsigned row, Clip& clip) const {
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

    const Log& log_;
    const Rates& rates_;
    Places places_;
};

void addTo(Sums& sums, const Clip& clip) {
    ++sums.clips;
    if (!clip.scene.empty()) sums.scenes.insert(clip.scene);
    sums.takes += clip.isTake ? 1 : 0;
    sums.frames += clip.frames;
    sums.untimed += clip.isUntimed ? 1 : 0;
    sums.dropFrame = sums.dropFrame || clip.dropFrame;
    sums.perforations += clip.perforations;
    sums.unfilmed += clip.isUnfilmed ? 1 : 0;
}

std::string bar(std::int64_t value, std::int64_t most, std::size_t width) {
    if (most <= 0) return {};
    auto length = static_cast<std::size_t>(value) * width / static_cast<std::size_t>(most);
    std::string out;
    for (std::size_t i = 0; i < length || (i == 0 && value > 0); ++i) out += "\xE2\x96\x88";
    return out;
}

void addTo(Sums& total, const Sums& sums) {
    total.clips += sums.clips;
    total.scenes.insert(sums.scenes.begin(), sums.scenes.end());
    total.takes += sums.takes;
    total.frames += sums.frames;
    total.untimed += sums.untimed;
    total.dropFrame = total.dropFrame || sums.dropFrame;
    total.perforations += sums.perforations;
    total.unfilmed += sums.unfilmed;
}

// What is printed about a group; columns for which the log has nothing are left out.
class StatsTable {
public:
    StatsTable(const Rates& rates, const Places& places, unsigned column)
        : rates_(rates),
          hasScenes_(places.scene != noColumn && places.scene != column),
          hasTakes_(places.take != noColumn),
          hasTime_(places.time.start != noColumn && rates.nominal() != 0),
          hasFilm_(places.keycode.start != noColumn) {}

    void print(const std::string& title, const Groups& groups, const Screen& screen,
               Printout& out) {
        Grid grid;
        grid.columns = titles(title);
        Sums total;
        for (const auto& [name, sums] : groups) addTo(total, sums);
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
        if (hasTime_) out.push_back(timecodeText(sums.frames, rates_.nominal(), sums.dropFrame));
        if (hasFilm_) out.push_back(footageText(sums.perforations, rates_.gauge));
        return out;
    }

    std::int64_t weight(const Sums& sums) const {
        return hasTime_ ? sums.frames : static_cast<std::int64_t>(sums.clips);
    }

    const Rates& rates_;
    bool hasScenes_;
    bool hasTakes_;
    bool hasTime_;
    bool hasFilm_;
};

// The sums of one group, or of all, for a program: null for what the log does not have.
class StatsJson {
public:
    StatsJson(const Rates& rates, const Places& places, JsonWriter& json)
        : rates_(rates), places_(places), json_(json) {}

    void add(const std::string& title, const Groups& groups) {
        Sums total;
        for (const auto& [name, sums] : groups) addTo(total, sums);
        json_.beginObject();
        json_.text("column", title);
        json_.beginArray("values");
        for (const auto& [name, sums] : groups) {
            json_.beginRow();
            json_.text("value", name);
            addFields(sums);
            json_.end();
        }
        json_.end();
        json_.beginObject("all");
        addFields(total);
        json_.end();
        json_.end();
    }

private:
    void addFields(const Sums& sums) {
        json_.number("clips", sums.clips);
        addCount("scenes", places_.scene != noColumn, sums.scenes.size());
        addCount("takes", places_.take != noColumn, sums.takes);
        const bool hasTime = places_.time.start != noColumn && rates_.nominal() != 0;
        addCount("frames", hasTime, static_cast<std::size_t>(sums.frames));
        json_.textOrNothing(
            "runningTime",
            hasTime ? timecodeText(sums.frames, rates_.nominal(), sums.dropFrame) : std::string());
        addCount("notInRunningTime", hasTime, sums.untimed);
        const bool hasFilm = places_.keycode.start != noColumn;
        addCount("perforations", hasFilm, static_cast<std::size_t>(sums.perforations));
        json_.textOrNothing("footage",
                            hasFilm ? footageText(sums.perforations, rates_.gauge) : std::string());
        addCount("notInFootage", hasFilm, sums.unfilmed);
    }

    void addCount(const char* name, bool isThere, std::size_t count) {
        isThere ? json_.number(name, count) : json_.nothing(name);
    }

    const Rates& rates_;
    const Places& places_;
    JsonWriter& json_;
};

Rates ratesOf(const Log& log, const Args& args) {
    return {LogCounting(log, wantedRate(args)), wantedGauge(args)};
}

// The groups of one column. They are found by hash, and put in order once: where a value is a
// number of many digits, to compare each row with it would take their square.
class GroupsOfColumn {
public:
    explicit GroupsOfColumn(unsigned column) : column_(column) {}

    // Rows of one group often stand together.
    void add(const Log& log, unsigned row, const Clip& clip) {
        const std::string_view value = log.cell(row, column_);
        if (groups_.empty() || groups_[last_].name != value) last_ = placeOf(value);
        addTo(groups_[last_].sums, clip);
    }

    Groups sorted() && {
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
    Groups groups_;
    std::unordered_map<std::string_view, std::size_t, Quor::KeyedHash> places_;
};

using Tables = std::vector<std::pair<std::string, Groups>>;

// What a row adds is worked out once for all columns.
Tables tablesOf(const Counter& counter, const Log& log, const VDBView& view,
                const std::vector<unsigned>& columns) {
    std::vector<GroupsOfColumn> groups(columns.begin(), columns.end());
    const unsigned count = view->get_num_records();
    for (unsigned i = 0; i < count; ++i) {
        const unsigned row = view->baseIndex(i);
        const Clip clip = counter.clip(row);
        for (GroupsOfColumn& each : groups) each.add(log, row, clip);
    }
    Tables tables;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        tables.emplace_back(log.columnName(columns[i]), std::move(groups[i]).sorted());
    }
    return tables;
}

void tellRate(const Log& log, const Rates& rates) {
    std::string odd = rates.counting.oddRate();
    say(log.name +
        (odd.empty()
             ? ": no frame rate, expected a parameter FPS"
             : ": FPS " + inQuotes(odd) + " is no frame rate, expected one such as 24 or 29.97df") +
        "; running times need --fps");
}

void tellWhatIsMissing(const Log& log, const Groups& groups, const Rates& rates,
                       const Places& places) {
    if (places.time.start != noColumn && rates.nominal() == 0) tellRate(log, rates);
    std::size_t untimed = 0;
    std::size_t unfilmed = 0;
    for (const auto& [name, sums] : groups) {
        untimed += sums.untimed;
        unfilmed += sums.unfilmed;
    }
    if (untimed > 0) {
        say(log.name + ": " + counted(untimed, "clip") +
            " without a start and an end behind it, not in the running time");
    }
    if (unfilmed > 0) {
        say(log.name + ": " + counted(unfilmed, "clip") +
            " without two keycodes of one roll, the end behind the start, not in the footage");
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

// One document, with a table for each column.
void printJson(const Log& log, const Rates& rates, const Counter& counter, const Tables& tables,
               Printout& out) {
    JsonWriter json(out);
    json.beginObject();
    json.text("file", log.name);
    json.numberOrNothing("framesInSecond", static_cast<std::size_t>(rates.nominal()));
    json.beginArray("tables");
    StatsJson stats(rates, counter.places(), json);
    for (const auto& [title, groups] : tables) stats.add(title, groups);
    json.end();
    json.end();
}

void printTables(const Rates& rates, const Counter& counter, const std::vector<unsigned>& columns,
                 const Tables& tables, const Args& args, Printout& out) {
    Screen screen = screenOf(out, args);
    for (std::size_t i = 0; i < tables.size(); ++i) {
        if (i > 0) out.line("");
        StatsTable table(rates, counter.places(), columns[i]);
        table.print(tables[i].first, tables[i].second, screen, out);
    }
}

int run(const Args& args) {
    Selection selection = selectionFrom(args);
    Log log = readLog(args, "FILE", wantedRows(selection));
    Rates rates = ratesOf(log, args);
    VDBView view = selectRows(log, selection).view;
    Counter counter(log, rates);
    const std::vector<unsigned> columns = groupColumns(log, args);
    const Tables tables = tablesOf(counter, log, view, columns);
    tellWhatIsMissing(log, tables.front().second, rates, counter.places());
    Printout out;
    if (tellsJson(args))
        printJson(log, rates, counter, tables, out);
    else
        printTables(rates, counter, columns, tables, args, out);
    out.close();
    return narrows(selection) && view->get_num_records() == 0 ? found : readingResult(log);
}

}  // namespace

Command statsCommand() {
    return {
        "stats",
        "count clips, takes, running time and footage by reel and scene",
        "Counts clips, scenes and takes, and adds up running times (end minus start, in timecode "
        "of the log's FPS parameter or of --fps; drop-frame where a semicolon, the rate or FCM "
        "says so; over midnight where that makes a clip shorter than 12 hours) and footage from "
        "keycodes. The longest group has the longest bar.",
        {{"vek stats samples/docs.vek", "by reel, then by scene"},
         {"vek stats samples/dailies.vek --by 'cam reel'", "by any column"},
         {"vek stats samples/docs.vek --format json", "for a program"},
         {"vek stats samples/docs.vek --where Tag==1 --fps 25", "chosen rows, another rate"}},
        {{"FILE", "the log, or - for standard input"}},
        join(join({{"--by", "COLUMN", "one table, a row for each value of this column"},
                   tellingOption(),
                   fpsOption(),
                   gaugeOption()},
                  join(choosingOptions(), {fromOption()})),
             screenOptions()),
        run,
    };
}

}  // namespace vek
