#include <algorithm>

#include "formats/log/column_names.h"
#include "formats/text/text_lines.h"
#include "formats/timecode/clip_columns.h"
#include "formats/timecode/counting.h"
#include "tools/vek/cli/choosing.h"
#include "tools/vek/cli/edits.h"
#include "tools/vek/cli/grid.h"
#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/saving.h"
#include "tools/vek/cli/say.h"
#include "tools/vek/cli/writing.h"
#include "tools/vek/commands.h"
#include "tools/vek/timecode/conform.h"
#include "tools/vek/timecode/lengths.h"
#include "tools/vek/timecode/shift.h"
#include "tools/vek/timecode/speeds.h"

namespace vek {

namespace {

using timecode::Work;

void requireRate(const Work& work) {
    if (!work.counting.rate()) {
        throw Failure{wrongUsage,
                      work.log.name + ": no frame rate, expected a parameter FPS or --fps RATE"};
    }
    if (work.counting.nominal() <= timecode::fastestWritten) return;
    throw Failure{wrongUsage, work.log.name + ": " + rateText(*work.counting.rate()) +
                                  " frames a second, expected at most 100, which the two digits "
                                  "of a timecode hold"};
}

// Whether at least half of a column's filled cells are timecodes, or its type says so.
bool isTimeColumn(const Log& log, unsigned column) {
    DBFieldTypes::eType type = log.table->get_field_type(column);
    if (type == DBFieldTypes::timecode || type == DBFieldTypes::timecode_s) return true;
    std::size_t filled = 0;
    std::size_t good = 0;
    for (unsigned row = 0; row < log.rowCount(); ++row) {
        std::string_view cell = trimmed(log.cell(row, column));
        filled += cell.empty() ? 0 : 1;
        good += parseTimecode(cell) ? 1 : 0;
    }
    return filled > 0 && good * 2 >= filled;
}

std::vector<unsigned> timeColumns(const Log& log) {
    std::vector<unsigned> out;
    for (unsigned column = 0; column < log.columnCount(); ++column) {
        if (isTimeColumn(log, column)) out.push_back(column);
    }
    return out;
}

// The one pair that begins and ends something; which of several is meant a person has to say.
std::vector<unsigned> onlyPair(const Log& log) {
    std::vector<RangeColumns> pairs;
    for (const RangeColumns& pair : rangeColumns(log)) {
        if (isTimeColumn(log, pair.start) && isTimeColumn(log, pair.end)) pairs.push_back(pair);
    }
    if (pairs.size() == 1) return {pairs[0].start, pairs[0].end};
    std::string names;
    for (const RangeColumns& pair : pairs) {
        names += concat(names.empty() ? "" : "; ", ownNameOf(log, pair.start), ",",
                        ownNameOf(log, pair.end));
    }
    throw Failure{wrongUsage, log.name + ": " +
                                  (pairs.empty() ? std::string("no pair of start and end columns")
                                                 : "several pairs of columns (" + names + ")") +
                                  ", expected --columns A,B"};
}

// What one of the actions would pass over was meant for another.
void requireOwnOptions(const Args& args, const std::string& action) {
    constexpr struct {
        const char* option;
        const char* actions;
    } uses[] = {{"keep", "conform"},
                {"round", "conform"},
                {"as", "duration"},
                {"into", "duration and end"}};
    for (const auto& [option, actions] : uses) {
        const bool isOwn = std::string_view(actions).find(action) != std::string_view::npos;
        if (!args.has(option) || isOwn) continue;
        throw Failure{wrongUsage,
                      concat("timecode: --", option, " is for ", actions, ", not for ", action)};
    }
}

void requireFitting(const Args& args, const Selection& selection) {
    std::string action = args.text("ACTION");
    requireOwnOptions(args, action);
    bool takesBy = action == "shift" || action == "conform";
    if (args.has("BY") != takesBy) {
        throw Failure{wrongUsage,
                      "timecode: expected shift FILE BY, conform FILE RATE, duration FILE or "
                      "end FILE"};
    }
    if (action == "conform" && narrows(selection)) {
        throw Failure{wrongUsage,
                      "timecode conform: a log has one rate, so all its rows are conformed"};
    }
}

std::vector<unsigned> columnsToShift(const Log& log, const Args& args) {
    return args.has("columns") ? columnList(log, args.text("columns")) : onlyPair(log);
}

// All that counts frames of the log.
std::vector<unsigned> columnsOfRate(const Log& log, const timecode::FrameCounts& counts) {
    std::vector<unsigned> columns = timeColumns(log);
    for (unsigned column : counts.columns()) {
        if (std::ranges::find(columns, column) == columns.end()) columns.push_back(column);
    }
    return columns;
}

bool hasTimes(const timecode::FrameCounts& counts, const Log& log, unsigned column) {
    for (unsigned row = 0; row < log.rowCount(); ++row) {
        if (parseTimecode(trimmed(log.cell(row, column)))) return true;
        if (counts.has(column) && counts.frames(row, column)) return true;
    }
    return false;
}

// A log has one rate, and times that were left out count at another one from then on.
void tellLeftOut(const Work& work, const timecode::FrameCounts& counts,
                 const std::vector<unsigned>& columns, const std::string& rate) {
    std::string names;
    for (unsigned column : columnsOfRate(work.log, counts)) {
        const bool isLeftOut = std::find(columns.begin(), columns.end(), column) == columns.end();
        if (!isLeftOut || !hasTimes(counts, work.log, column)) continue;
        names += concat(names.empty() ? "" : ", ", ownNameOf(work.log, column));
    }
    if (names.empty()) return;
    say(concat(work.log.name, ": --columns leaves out ", names, ", with times at ",
               rateText(*work.counting.rate()), " in a log of ", rate));
}

void conform(Work& work, const Args& args) {
    const timecode::FrameCounts counts(work);
    const std::vector<unsigned> columns = args.has("columns")
                                              ? columnList(work.log, args.text("columns"))
                                              : columnsOfRate(work.log, counts);
    timecode::conform(work, columns, counts, args);
    if (args.has("columns")) {
        tellLeftOut(work, counts, columns, rateText(*parseFrameRate(args.text("BY"))));
    } else {
        for (const std::string& note : counts.notes()) say(concat(work.log.name, ": ", note));
    }
    timecode::Speeds(work, parseFrameRate(args.text("BY"))->nominal).move();
}

void change(Work& work, const Args& args) {
    std::string action = args.text("ACTION");
    if (action == "shift") {
        timecode::shift(work, columnsToShift(work.log, args), args.text("BY"));
        return timecode::Speeds(work, work.counting.nominal()).move();
    }
    if (action == "conform") return conform(work, args);
    if (action == "duration") return timecode::durations(work, args);
    timecode::ends(work, args);
}

int run(const Args& args) {
    Selection selection = selectionFrom(args);
    requireFitting(args, selection);
    Log log = readLogToSave(args);
    Work work{log, LogCounting(log, wantedRate(args)), {}, {}, {}};
    tellOtherRate(log, work.counting);
    requireRate(work);
    VDBView view = selectRows(log, selection).view;
    for (unsigned i = 0; i < view->get_num_records(); ++i) work.rows.push_back(view->baseIndex(i));
    change(work, args);
    tellOdd(work);
    bool isDry = args.has("dry-run");
    if (isDry) printEdits(log, work.edits, args);
    EditMaker(log).make(work.edits);
    if (!work.rows.empty() || goesToStandardOutput(args)) saveResult(log, args);
    say(log.name + ": " + counted(work.rows.size(), "row") + ", " +
        counted(work.edits.size(), "cell") + (isDry ? " would change" : " changed"));
    return work.rows.empty() || !work.odd.empty() ? found : done;
}

}  // namespace

Command timecodeCommand() {
    return {
        "timecode",
        "shift timecodes, bring them to another rate, work out durations and ends",
        "shift adds frames or a timecode to the start and end columns. conform brings all "
        "timecodes to another rate, or to drop-frame or non-drop counting: the moment is kept, "
        "which is refused where it is between two frames and no --round is given, or, with --keep "
        "frames, the number of the frame; lengths in frames go along. duration fills a column from "
        "start and end, end one from "
        "start and duration. Counting is exact, drop-frame where the log says so, and goes on past "
        "midnight; the source of a clip in a timeline counts at its own FPS. Cells that are no "
        "timecode stay and are told; it ends with 1 then.",
        {{"vek timecode shift log.vek 01:00:00:00", "an hour later"},
         {"vek timecode shift log.vek -12 --columns 'Start time' --where Reel=A001",
          "twelve frames earlier, in one column of some rows"},
         {"vek timecode conform log.vek 29.97ndf --round nearest --dry-run",
          "from drop-frame to non-drop, to the nearest frame"},
         {"vek timecode conform log.vek 25 --fps 24 --keep frames", "the same frames, faster"},
         {"vek timecode duration log.vek --as frames", "a column Duration"}},
        {{"ACTION", "what to do", false, false, "shift|conform|duration|end"},
         {"FILE", "the log, changed in place; - reads standard input and prints"},
         {"BY", "frames or a timecode to shift by, or the rate to conform to", true}},
        join(join({{"--columns", "A,B",
                    "the columns: those to shift or conform, start and end, or start and "
                    "duration"},
                   {"--into", "COLUMN", "the column that a duration or an end goes into"},
                   fpsOption(),
                   {"--keep", "WHAT", "when a rate changes keep the time (as a rule) or the frames",
                    false, "time|frames"},
                   {"--round", "HOW", "what to do with a time between two frames", false,
                    "nearest|down|up"},
                   {"--as", "FORM", "durations as timecodes (as a rule) or as frames", false,
                    "timecode|frames"},
                   savingOption()},
                  choosingOptions()),
             join({dryRunOption(), backupOption(), fromOption()}, screenOptions())),
        run,
    };
}

}  // namespace vek
