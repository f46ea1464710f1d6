#include "tools/vek/timecode/lengths.h"

#include "formats/log/column_edits.h"
#include "formats/text/written_names.h"
#include "formats/timecode/clip_columns.h"
#include "formats/timecode/range_names.h"
#include "formats/timecode/timecode_form.h"
#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/writing.h"

namespace vek::timecode {

namespace {

unsigned columnOrNew(Log& log, const std::string& name) {
    unsigned column = log.findColumn(name);
    if (column != noColumn) return log.requireColumn(name);
    column = numberedColumn(log, name);
    if (column != noColumn) return column;
    if (std::optional<WrittenName> inner = unbracketed(name)) {
        return inner->turn > 0 ? log.requireColumn(name) : columnOrNew(log, inner->name);
    }
    return addColumn(log, name);
}

void durations(Work& work, const RangeColumns& pair, unsigned into, bool asFrames) {
    for (unsigned row : work.rows) {
        std::optional<Timecode> start = codeOf(work, row, pair.start);
        std::optional<Timecode> end = codeOf(work, row, pair.end);
        if (!start || !end) continue;
        const int nominal = work.nominal(row, pair.start);
        std::optional<std::int64_t> frames = framesBetween(*start, *end, nominal);
        if (!frames) {
            work.leave(row, pair.end, "an end behind the start");
            continue;
        }
        bool drops = start->dropFrame || end->dropFrame;
        bool isMarked = hasDropMark(work.log.cell(row, pair.start)) ||
                        hasDropMark(work.log.cell(row, pair.end));
        std::string text = timecodeText(*frames, nominal, drops);
        text = inFormOf(text, text, isMarked ? Mark::asBefore : Mark::nonDrop);
        work.put(row, into, asFrames ? std::to_string(*frames) : text);
    }
}

void ends(Work& work, unsigned start, unsigned length, unsigned into) {
    for (unsigned row : work.rows) {
        std::optional<Timecode> code = codeOf(work, row, start);
        std::string_view text = trimmed(work.log.cell(row, length));
        if (!code || text.empty()) continue;
        const int nominal = work.nominal(row, start);
        std::optional<std::int64_t> frames = lengthOf(text, nominal, code->dropFrame);
        if (!frames || isNoFrame(text, nominal, code->dropFrame)) {
            work.leave(row, length,
                       frames ? "a length that is there in drop-frame counting, or one in frames"
                              : "frames (48) or a timecode");
            continue;
        }
        std::int64_t day = framesInDay(nominal, code->dropFrame);
        std::int64_t end = inDay(work, framesOf(*code, nominal) + *frames, day);
        work.put(row, into,
                 inFormOf(work.log.cell(row, start), timecodeText(end, nominal, code->dropFrame)));
    }
}

// The two columns of --columns, or nothing.
std::optional<RangeColumns> givenPair(const Log& log, const Args& args) {
    if (!args.has("columns")) return {};
    std::vector<unsigned> columns = columnList(log, args.text("columns"));
    if (columns.size() == 2) return RangeColumns{columns[0], columns[1]};
    throw Failure{wrongUsage, "timecode " + args.text("ACTION") + ": --columns takes two columns"};
}

// A log that has no ends yet has starts alone.
unsigned firstStart(const Log& log) {
    for (const RangeName& pair : rangeNames(RangeKind::source)) {
        const unsigned column = log.findColumn(pair.start);
        if (column != noColumn) return column;
    }
    return noColumn;
}

// What the end is called where the start is called so.
std::string endNameOf(const std::string& start) {
    const std::vector<std::string> names = endNamesFor(start);
    if (!names.empty()) return names.front();
    throw Failure{wrongUsage,
                  "timecode end: expected --into COLUMN for the end of " + inQuotes(start)};
}

}  // namespace

void durations(Work& work, const Args& args) {
    std::optional<RangeColumns> pair = givenPair(work.log, args);
    if (!pair) pair = sourceColumns(work.log);
    if (pair->start == noColumn) {
        throw Failure{wrongUsage,
                      work.log.name + ": no columns such as Start and End, expected --columns"};
    }
    unsigned into = columnOrNew(work.log, args.text("into", "Duration"));
    durations(work, *pair, into, args.text("as") == "frames");
}

void ends(Work& work, const Args& args) {
    RangeColumns pair =
        givenPair(work.log, args)
            .value_or(RangeColumns{firstStart(work.log), firstColumn(work.log, {"Duration"})});
    if (pair.start == noColumn || pair.end == noColumn) {
        throw Failure{wrongUsage, work.log.name +
                                      ": no columns such as Start and Duration, expected "
                                      "--columns START,DURATION"};
    }
    std::string into = args.text("into");
    if (into.empty()) into = endNameOf(work.log.columnName(pair.start));
    ends(work, pair.start, pair.end, columnOrNew(work.log, into));
}

}  // namespace vek::timecode
