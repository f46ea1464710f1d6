#include <algorithm>

#include <vekdb/formats/keycode.h>
#include "formats/summing/clip_sums.h"
#include "formats/text/text_lines.h"
#include "formats/text/width.h"
#include "formats/writing/writers.h"
#include "tools/vek/cli/choosing.h"
#include "tools/vek/cli/each_log.h"
#include "tools/vek/cli/grid.h"
#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/say.h"
#include "tools/vek/cli/telling.h"
#include "tools/vek/commands.h"

namespace vek {

namespace {

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
    StatsTable(const ClipRates& rates, const ClipPlaces& places, unsigned column)
        : rates_(rates),
          hasScenes_(places.scene != noColumn && places.scene != column),
          hasTakes_(places.take != noColumn),
          hasTime_(places.time.start != noColumn && rates.nominal() != 0),
          hasFilm_(places.keycode.start != noColumn) {}

    void print(const std::string& title, const ClipGroups& groups, const Screen& screen,
               Printout& out) {
        Grid grid;
        grid.columns = titles(title);
        ClipSums total;
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

    std::vector<std::string> cells(const std::string& name, const ClipSums& sums) const {
        std::vector<std::string> out = {name, std::to_string(sums.clips)};
        if (hasScenes_) out.push_back(std::to_string(sums.scenes.size()));
        if (hasTakes_) out.push_back(std::to_string(sums.takes));
        if (hasTime_) out.push_back(timecodeText(sums.frames, rates_.nominal(), sums.dropFrame));
        if (hasFilm_) out.push_back(footageText(sums.perforations, rates_.gauge));
        return out;
    }

    std::int64_t weight(const ClipSums& sums) const {
        return hasTime_ ? sums.frames : static_cast<std::int64_t>(sums.clips);
    }

    const ClipRates& rates_;
    bool hasScenes_;
    bool hasTakes_;
    bool hasTime_;
    bool hasFilm_;
};

// The sums of one group, or of all, for a program: null for what the log does not have.
class StatsJson {
public:
    StatsJson(const ClipRates& rates, const ClipPlaces& places, JsonWriter& json)
        : rates_(rates), places_(places), json_(json) {}

    void add(const std::string& title, const ClipGroups& groups) {
        ClipSums total;
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
    void addFields(const ClipSums& sums) {
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

    const ClipRates& rates_;
    const ClipPlaces& places_;
    JsonWriter& json_;
};

ClipRates ratesOf(const Log& log, const Args& args) {
    return {LogCounting(log, wantedRate(args)), wantedGauge(args)};
}

void tellRate(const Log& log, const ClipRates& rates) {
    std::string odd = rates.counting.oddRate();
    say(log.name +
        (odd.empty()
             ? ": no frame rate, expected a parameter FPS"
             : ": FPS " + inQuotes(odd) + " is no frame rate, expected one such as 24 or 29.97df") +
        "; running times need --fps");
}

void tellWhatIsMissing(const Log& log, const ClipGroups& groups, const ClipRates& rates,
                       const ClipPlaces& places) {
    if (places.time.start != noColumn && rates.nominal() == 0) tellRate(log, rates);
    std::size_t untimed = 0;
    std::size_t noFrames = 0;
    std::size_t unfilmed = 0;
    for (const auto& [name, sums] : groups) {
        untimed += sums.untimed - sums.noFrames;
        noFrames += sums.noFrames;
        unfilmed += sums.unfilmed;
    }
    if (untimed > 0) {
        say(log.name + ": " + counted(untimed, "clip") +
            " without a start and an end behind it, not in the running time");
    }
    if (noFrames > 0) {
        say(log.name + ": " + counted(noFrames, "clip") +
            " with a time that is no frame at the rate, not in the running time");
    }
    if (unfilmed > 0) {
        say(log.name + ": " + counted(unfilmed, "clip") +
            " without two keycodes of one roll, the end behind the start, not in the footage");
    }
}

// Rows of a timeline that are markers, tracks and the like.
void tellOthers(const Log& log, const std::vector<unsigned>& rows, const ClipCounter& counter) {
    const auto isOther = [&](unsigned row) { return !counter.isClip(row); };
    const auto others = static_cast<std::size_t>(std::count_if(rows.begin(), rows.end(), isOther));
    if (others == 0) return;
    say(concat(log.name, ": ", counted(others, "row that is no clip", "rows that are no clips"),
               ", by its Kind, not counted"));
}

// Without --by: a table of reels and one of scenes, as far as the log has them.
std::vector<unsigned> groupColumns(const Log& log, const Args& args) {
    if (args.has("by")) return {log.requireColumn(args.text("by"))};
    std::vector<unsigned> columns = clipGroupColumns(log);
    if (!columns.empty()) return columns;
    throw Failure{
        wrongUsage, log.name, {0, "", "no column Reel, Tape or Scene", "--by COLUMN", ""}};
}

// One object, with a table for each column.
void addJson(const Log& log, const ClipRates& rates, const ClipCounter& counter,
             const ClipTables& tables, JsonWriter& json) {
    json.beginObject();
    json.text("file", log.name);
    json.numberOrNothing("framesInSecond", static_cast<std::size_t>(rates.nominal()));
    json.beginArray("tables");
    StatsJson stats(rates, counter.places(), json);
    for (const auto& [title, groups] : tables) stats.add(title, groups);
    json.end();
    json.end();
}

void printTables(const ClipRates& rates, const ClipCounter& counter,
                 const std::vector<unsigned>& columns, const ClipTables& tables, const Args& args,
                 Printout& out) {
    Screen screen = screenOf(out, args);
    for (std::size_t i = 0; i < tables.size(); ++i) {
        if (i > 0) out.line("");
        StatsTable table(rates, counter.places(), columns[i]);
        table.print(tables[i].first, tables[i].second, screen, out);
    }
}

// What is counted in a log, as text or into a document of several.
int tellStats(const Log& log, const Args& args, Printout& out, JsonWriter* json) {
    const Selection selection = selectionFrom(args);
    const ClipRates rates = ratesOf(log, args);
    tellOtherRate(log, rates.counting);
    const std::vector<unsigned> rows = selectedRows(log, selection);
    ClipCounter counter(log, rates);
    const std::vector<unsigned> columns = groupColumns(log, args);
    const ClipTables tables = tablesOf(counter, log, rows, columns);
    tellOthers(log, rows, counter);
    tellWhatIsMissing(log, tables.front().second, rates, counter.places());
    if (json != nullptr)
        addJson(log, rates, counter, tables, *json);
    else
        printTables(rates, counter, columns, tables, args, out);
    return narrows(selection) && rows.empty() ? found : readingResult(log);
}

int statsOfOne(const Args& args) {
    const Log log = readLog(args, "FILE", wantedRows(selectionFrom(args)));
    Printout out;
    JsonWriter json(out);
    const int result = tellStats(log, args, out, tellsJson(args) ? &json : nullptr);
    out.close();
    return result;
}

// Each log has its name above its tables.
int tellOneOfSeveral(const Log& log, const Args& args, Printout& out, JsonWriter* json) {
    if (json == nullptr) {
        out.inkedLine(inked(Ink::bold, escaped(log.name), screenOf(out, args)));
    }
    return tellStats(log, args, out, json);
}

int run(const Args& args) {
    return hasSeveral(args) ? tellEach(args, tellOneOfSeveral) : statsOfOne(args);
}

}  // namespace

Command statsCommand() {
    return {
        "stats",
        "count clips, takes, running time and footage by reel and scene",
        "Counts clips, scenes and takes, and adds up running times (end minus start, in timecode "
        "of the log's FPS parameter or of --fps; drop-frame where a semicolon, the rate or FCM "
        "says so; over midnight where that makes a clip shorter than 12 hours; a clip of a "
        "timeline runs at its own FPS) and footage from keycodes. The longest group has the "
        "longest bar. "
        "Rows of a timeline that are no clips, such as tracks, markers and the parts of multicam "
        "clips, are not counted, and told. "
        "Of several logs each has its own tables; as json they stand in the list files of one "
        "object.",
        {{"vek stats samples/docs.vek", "by reel, then by scene"},
         {"vek stats samples/dailies.vek --by 'cam reel'", "by any column"},
         {"vek stats samples/docs.vek --format json", "for a program"},
         {"vek stats samples/docs.vek --where Tag==1 --fps 25", "chosen rows, another rate"}},
        {{"FILE", "a log, or - for standard input", false, true}},
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
