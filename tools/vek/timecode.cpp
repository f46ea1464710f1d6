#include <algorithm>
#include <charconv>
#include <iterator>
#include <unordered_map>

#include "formats/edl/edl_lines.h"
#include "formats/log/column_names.h"
#include "formats/text/text_lines.h"
#include "formats/text/written_names.h"
#include "formats/timecode/clip_columns.h"
#include "formats/timecode/counting.h"
#include "formats/timecode/drop_frame_entry.h"
#include "formats/timecode/timecode_form.h"
#include "formats/timeline/exact_time.h"
#include "formats/timeline/timeline_rows.h"
#include "formats/writing/writers.h"
#include "tools/vek/cli/choosing.h"
#include "tools/vek/cli/edits.h"
#include "tools/vek/cli/grid.h"
#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/saving.h"
#include "tools/vek/cli/say.h"
#include "tools/vek/cli/writing.h"
#include "tools/vek/commands.h"

namespace vek {

namespace {

constexpr int fastestWritten = 100;  // two digits of frames
constexpr std::size_t transitionDigits = 3;
constexpr std::int64_t mostFrames = 1'000'000'000;

// A log whose timecodes are to be changed: what is found out about it, and the edits so far.
struct Work {
    Log& log;
    LogCounting counting;
    std::vector<unsigned> rows;
    std::vector<Edit> edits;
    std::vector<Problem> odd;  // cells that stay as they are
    std::size_t overMidnight = 0;
    std::unordered_map<std::uint64_t, std::size_t> notes = {};  // edits of cells of several lines

    int nominal(unsigned row, unsigned column) const { return counting.nominal(row, column); }

    bool drops(unsigned row, unsigned column) const {
        std::optional<Timecode> code = counting.timecode(row, column);
        return code && code->dropFrame;
    }

    void put(unsigned row, unsigned column, const std::string& after) {
        const std::string_view before = log.cell(row, column);
        if (before == after) return;
        edits.push_back({row, static_cast<unsigned short>(column), after});
    }

    static std::uint64_t placeOf(unsigned row, unsigned column) {
        return std::uint64_t{row} << 32 | column;
    }

    // A cell whose lines are changed one kind after the other, as it is so far.
    std::string_view note(unsigned row, unsigned column) const {
        const auto edit = notes.find(placeOf(row, column));
        return edit == notes.end() ? log.cell(row, column) : edits[edit->second].after;
    }

    // Every line of such a cell, as `moved` makes it.
    template <class Moved>
    void moveNote(unsigned row, unsigned column, Moved moved) {
        std::string after;
        for (std::string_view line : split(note(row, column), '\n')) {
            after += moved(line);
            after += '\n';
        }
        after.pop_back();
        if (after == note(row, column)) return;
        const auto [edit, isNew] = notes.try_emplace(placeOf(row, column), edits.size());
        if (isNew) return put(row, column, after);
        edits[edit->second].after = std::move(after);
    }

    void leaveLine(unsigned row, unsigned column, std::string_view line, const char* expected) {
        odd.push_back({log.lineOf(row), log.columnName(column), inQuotes(line), expected,
                       "the line stays as it is"});
    }

    // The moment itself, where a timeline has it beside a time that is between two frames.
    template <class Move>
    void moveExact(unsigned row, unsigned column, Move move) {
        if (counting.rateColumn() == noColumn) return;
        const unsigned exact = log.findColumn(exactTimeColumn(log.columnName(column)));
        if (exact == noColumn || log.cell(row, exact).empty()) return;
        const ExactTime moved = move(ExactTime::of(trimmed(log.cell(row, exact))));
        if (moved.isKnown()) put(row, exact, fractionText(moved));
    }

    void leave(unsigned row, unsigned column, const std::string& expected,
               const char* what = "the cell stays as it is") {
        odd.push_back({log.lineOf(row), log.columnName(column), inQuotes(log.cell(row, column)),
                       expected, what});
    }
};

void requireRate(const Work& work) {
    if (!work.counting.rate()) {
        throw Failure{wrongUsage,
                      work.log.name + ": no frame rate, expected a parameter FPS or --fps RATE"};
    }
    if (work.counting.nominal() <= fastestWritten) return;
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
        names += concat(names.empty() ? "" : "; ", log.columnName(pair.start), ",",
                        log.columnName(pair.end));
    }
    throw Failure{wrongUsage, log.name + ": " +
                                  (pairs.empty() ? std::string("no pair of start and end columns")
                                                 : "several pairs of columns (" + names + ")") +
                                  ", expected --columns A,B"};
}

// The cell's timecode. Nothing for an empty cell, and for one that is none, which is told.
std::optional<Timecode> codeOf(Work& work, unsigned row, unsigned column) {
    if (trimmed(work.log.cell(row, column)).empty()) return {};
    std::optional<Timecode> code = work.counting.timecode(row, column);
    if (code && isCounted(*code, work.nominal(row, column))) return code;
    work.leave(row, column,
               code ? "a frame that is there at " + rateText(*work.counting.rate(row, column))
                    : "a timecode such as 01:00:00:00");
    return {};
}

std::optional<std::int64_t> wholeNumber(std::string_view text) {
    std::int64_t number = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    bool isWhole = error == std::errc() && end == text.data() + text.size() && number >= 0;
    return isWhole ? std::optional(number) : std::nullopt;
}

// "48" or "00:00:02:00": so many frames, counted as the row counts.
std::optional<std::int64_t> lengthOf(std::string_view text, int nominal, bool drops) {
    text = trimmed(text);
    std::optional<Timecode> code = parseTimecode(text);
    bool isPlain = !code || text.find_first_not_of("0123456789") == std::string_view::npos;
    if (isPlain && text.size() < 8) return wholeNumber(text);
    if (!code || code->frames >= nominal) return {};
    code->dropFrame = code->dropFrame || drops;
    return framesOf(*code, nominal);
}

// A length as a timecode that counting leaves out, such as 00:01:00;00.
bool isNoFrame(std::string_view text, int nominal, bool drops) {
    std::optional<Timecode> code = parseTimecode(trimmed(text));
    if (!code) return false;
    code->dropFrame = code->dropFrame || drops;
    return !isCounted(*code, nominal);
}

// A frame of the day; what is past midnight begins anew.
std::int64_t inDay(Work& work, std::int64_t frames, std::int64_t day) {
    bool isWithin = frames >= 0 && frames < day;
    work.overMidnight += isWithin ? 0 : 1;
    return isWithin ? frames : (frames % day + day) % day;
}

// Comments, Comments 2, ...
std::vector<unsigned> noteColumns(const Log& log, std::string (*name)(std::size_t)) {
    std::vector<unsigned> columns;
    for (std::size_t piece = 0;; ++piece) {
        const unsigned column = log.findColumn(name(piece));
        if (column == noColumn) return columns;
        columns.push_back(column);
    }
}

// The line with another text in the place of one that lies in it.
std::string withPart(std::string_view line, std::string_view part, std::string_view now) {
    const auto at = static_cast<std::size_t>(part.data() - line.data());
    return concat(line.substr(0, at), now, line.substr(at + part.size()));
}

// The markers in an edit list's notes, which are times of the record.
class Markers {
public:
    explicit Markers(Work& work)
        : work_(work),
          record_(recordColumns(work.log)),
          source_(sourceColumns(work.log)),
          isWhole_(work.rows.size() == work.log.rowCount()) {
        if (record_.start == noColumn) return;
        notes_ = noteColumns(work.log, edlCommentsName);
        std::ranges::copy(noteColumns(work.log, edlCommentsBeforeName), std::back_inserter(notes_));
    }

    /// Whether these columns are all of the record.
    bool goWith(const std::vector<unsigned>& columns) const {
        const auto has = [&](unsigned column) {
            return std::ranges::find(columns, column) != columns.end();
        };
        return record_.start != noColumn && has(record_.start) && has(record_.end);
    }

    unsigned record() const { return record_.start; }

    /// `moved` makes another text of a time and its text, or nothing; it is given the column of
    /// the notes and the line too.
    template <class Moved>
    void move(unsigned row, Moved moved) {
        for (unsigned column : notes_) {
            if (work_.log.cell(row, column).find(':') == std::string_view::npos) continue;
            work_.moveNote(row, column, [&](std::string_view line) {
                return movedLine(row, column, line, moved);
            });
        }
    }

private:
    template <class Moved>
    std::string movedLine(unsigned row, unsigned column, std::string_view line, Moved moved) {
        const std::string_view text = edlMarkerTime(line);
        if (text.empty()) return std::string(line);
        const std::optional<Timecode> code = timeOf(row, text);
        std::optional<std::string> now;
        if (code && isOfRecord(row, *code)) now = moved(*code, text, column, line);
        if (now) return withPart(line, text, *now);
        work_.leaveLine(row, column, line, "a time within the record of its event");
        return std::string(line);
    }

    std::optional<Timecode> timeOf(unsigned row, std::string_view text) const {
        std::optional<Timecode> code = work_.counting.timecode(row, record_.start, text);
        if (code && isCounted(*code, work_.nominal(row, record_.start))) return code;
        return {};
    }

    // One behind the last event is of the record too, as far as the whole record moves; one that
    // the event has in its source may be meant so.
    bool isOfRecord(unsigned row, const Timecode& code) const {
        if (isWithin(row, record_, code)) return true;
        return isWhole_ && !isWithin(row, source_, code);
    }

    bool isWithin(unsigned row, const RangeColumns& pair, const Timecode& code) const {
        if (pair.start == noColumn) return false;
        const std::optional<Timecode> start = work_.counting.timecode(row, pair.start);
        const std::optional<Timecode> end = work_.counting.timecode(row, pair.end);
        if (!start || !end) return false;
        const std::int64_t at = framesOf(code, work_.nominal(row, record_.start));
        const int nominal = work_.nominal(row, pair.start);
        return framesOf(*start, nominal) <= at && at <= framesOf(*end, nominal);
    }

    Work& work_;
    RangeColumns record_;
    RangeColumns source_;
    bool isWhole_;
    std::vector<unsigned> notes_;
};

// A time so much later or earlier; nothing where its rate has no such length.
struct Shift {
    Work& work;
    std::string_view length;
    bool isBack;

    std::optional<std::int64_t> frames(unsigned row, unsigned column, const Timecode& code) const {
        const int nominal = work.nominal(row, column);
        const std::optional<std::int64_t> by = lengthOf(length, nominal, code.dropFrame);
        if (!by) return {};
        return inDay(work, framesOf(code, nominal) + (isBack ? -*by : *by),
                     framesInDay(nominal, code.dropFrame));
    }

    std::string text(unsigned row, unsigned column, const Timecode& code, std::string_view old,
                     std::int64_t now) const {
        return inFormOf(old, timecodeText(now, work.nominal(row, column), code.dropFrame));
    }

    void cell(unsigned row, unsigned column) const {
        const std::optional<Timecode> code = codeOf(work, row, column);
        if (!code) return;
        const std::optional<std::int64_t> now = frames(row, column, *code);
        if (!now) return work.leave(row, column, concat("a rate that has the frame ", length));
        const std::int64_t before = framesOf(*code, work.nominal(row, column));
        work.moveExact(row, column, [&](const ExactTime& time) {
            return time + ExactTime::ofFrames(*now - before, *work.counting.rate(row, column));
        });
        work.put(row, column, text(row, column, *code, work.log.cell(row, column), *now));
    }

    std::optional<std::string> marker(unsigned row, unsigned record, const Timecode& code,
                                      std::string_view old) const {
        const std::optional<std::int64_t> now = frames(row, record, code);
        return now ? std::optional(text(row, record, code, old, *now)) : std::nullopt;
    }
};

void shift(Work& work, const std::vector<unsigned>& columns, const std::string& by) {
    std::string_view text = by;
    const bool isBack = text.starts_with('-');
    if (isBack || text.starts_with('+')) text.remove_prefix(1);
    if (!lengthOf(text, work.counting.nominal(), false)) {
        throw Failure{wrongUsage, "timecode shift: " + inQuotes(by) +
                                      " is no length, expected frames (48, -48) or a timecode"};
    }
    const Shift job{work, text, isBack};
    Markers markers(work);
    const bool movesMarkers = markers.goWith(columns);
    for (unsigned row : work.rows) {
        for (unsigned column : columns) job.cell(row, column);
        if (!movesMarkers) continue;
        markers.move(row,
                     [&](const Timecode& code, std::string_view old, unsigned, std::string_view) {
                         return job.marker(row, markers.record(), code, old);
                     });
    }
}

// Where an edit list has the lengths of its transitions, in frames; noColumn for other logs.
unsigned transitionColumn(const Log& log) {
    for (EdlColumn needed : {edlEvent, edlTrack, edlKind, edlRecordIn}) {
        if (log.findColumn(edlColumnNames[needed]) == noColumn) return noColumn;
    }
    return log.findColumn(edlColumnNames[edlLength]);
}

// From one rate to another, the moment kept or the number of the frame.
class Conform {
public:
    Conform(Work& work, const FrameRate& to, const Args& args)
        : work_(work),
          from_(*work.counting.rate()),
          to_(to),
          keepsFrames_(args.text("keep") == "frames"),
          round_(args.text("round")),
          rateColumn_(work.counting.rateColumn()),
          record_(recordColumns(work.log)),
          transition_(transitionColumn(work.log)),
          notes_(noteColumns(work.log, edlCommentsName)),
          markers_(work) {}

    void cells(const std::vector<unsigned>& columns) {
        const bool movesRecord = markers_.goWith(columns);
        for (unsigned row : work_.rows) {
            const bool keepsSource = hasOtherRate(row);
            for (unsigned column : columns) {
                if (!keepsSource || isOnRecord(column)) cell(row, column);
            }
            if (!keepsSource) lengths(row);
            if (movesRecord) onRecord(row);
            countAnew(row);
        }
        if (inexact_ > 0) refuse();
    }

    /// What the log says of itself afterwards.
    void parameters() {
        if (!work_.log.setParameter("FPS", rateText(said()))) {
            say(work_.log.name + ": there is no room for a parameter FPS");
        }
        std::string fcm = work_.log.parameter("FCM");
        if (!fcm.empty()) work_.log.setParameter("FCM", fcmText(dropsAll()));
        sayDropFrame();
    }

private:
    bool dropsAll() const { return drops(work_.counting.countingOfAll() == Counting::dropFrame); }

    void sayDropFrame() {
        const std::string old = work_.log.parameter(dropFrameEntry);
        if (old.empty()) return;
        const std::optional<bool> dropped = saysDropFrame(old);
        if (dropped) {
            work_.log.setParameter(dropFrameEntry, *dropFrameValue(old, drops(*dropped)));
        } else {
            say(concat(work_.log.name, ": entry ", dropFrameEntry, " is ", inQuotes(old),
                       ", expected TRUE or FALSE; it stays as it is"));
        }
    }

    FrameRate said() const {
        FrameRate rate = to_;
        bool wasSaid = work_.counting.rate()->counting != Counting::unsaid;
        if (rate.counting == Counting::unsaid && wasSaid && canDropFrames(to_.nominal)) {
            rate.counting = dropsAll() ? Counting::dropFrame : Counting::nonDrop;
        }
        // Others who read a log exchange file know the number alone, and the marks in its times.
        if (work_.log.format == Format::ale && !wasSaid) rate.counting = Counting::unsaid;
        return rate;
    }

    // Drop-frame stays drop-frame where the new rate can and nothing else is said.
    bool drops(bool before) const {
        if (to_.counting != Counting::unsaid) return to_.counting == Counting::dropFrame;
        return before && canDropFrames(to_.nominal);
    }

    static std::string fcmText(bool drops) { return drops ? "DROP FRAME" : "NON-DROP FRAME"; }

    void cell(unsigned row, unsigned column) {
        std::optional<Timecode> code = codeOf(work_, row, column);
        if (!code) return;
        const std::string_view text = work_.log.cell(row, column);
        work_.put(row, column, movedTime(row, column, *code, text, text));
        if (!keepsFrames_) return;
        // What lay within a frame lies there still, and a frame lasts for another time.
        const ExactTime scale(from_.frames() * to_.seconds(), from_.seconds() * to_.frames());
        work_.moveExact(row, column, [&](const ExactTime& time) { return time * scale; });
    }

    // `found` is what it is told with.
    std::string movedTime(unsigned row, unsigned column, const Timecode& code,
                          std::string_view text, std::string_view found) {
        const bool dropsNow = drops(code.dropFrame);
        std::int64_t frames = converted(row, column, framesOf(code, from_.nominal), found);
        frames = inDay(work_, frames, framesInDay(to_.nominal, dropsNow));
        return inFormOf(text, timecodeText(frames, to_.nominal, dropsNow), mark(code.dropFrame));
    }

    // Columns of a timeline that count frames.
    void lengths(unsigned row) {
        if (rateColumn_ == noColumn) return;
        for (const char* name : {"Media Frames", timeline::inOffset, timeline::outOffset}) {
            const unsigned column = work_.log.findColumn(name);
            if (column == noColumn) continue;
            const std::optional<std::int64_t> frames = wholeNumber(work_.log.cell(row, column));
            if (!frames || *frames > mostFrames) continue;
            work_.put(row, column, std::to_string(converted(row, column, *frames)));
        }
    }

    // What an edit list counts in frames of its record.
    void onRecord(unsigned row) {
        if (transition_ != noColumn) transition(row);
        for (unsigned column : notes_) {
            if (work_.log.cell(row, column).find(':') == std::string_view::npos) continue;
            work_.moveNote(row, column, [&](std::string_view line) {
                return isEdlSplit(line) ? movedSplit(row, column, line) : std::string(line);
            });
        }
        markers_.move(row, [&](const Timecode& code, std::string_view text, unsigned column,
                               std::string_view line) {
            return std::optional(movedTime(row, column, code, text, line));
        });
    }

    void transition(unsigned row) {
        const std::string_view cell = work_.log.cell(row, transition_);
        if (trimmed(cell).empty()) return;
        const std::optional<std::string> now = movedLength(row, transition_, cell, cell);
        if (!now || now->size() > std::max(transitionDigits, cell.size()))
            return work_.leave(row, transition_, "a length of at most 999 frames");
        work_.put(row, transition_, *now);
    }

    // Sound or picture begins so much later.
    std::string movedSplit(unsigned row, unsigned column, std::string_view line) {
        const std::string_view delay = edlSplitDelay(line);
        const std::optional<std::string> now = movedLength(row, column, delay, line);
        if (now) return withPart(line, delay, *now);
        work_.leaveLine(row, column, line,
                        "a delay that is there at the rate, such as 00:00:00:12");
        return std::string(line);
    }

    // "024" or "00:00:01:00" in its form.
    std::optional<std::string> movedLength(unsigned row, unsigned column, std::string_view text,
                                           std::string_view found) {
        const bool dropped = work_.drops(row, record_.start);
        const std::optional<std::int64_t> frames = lengthOf(text, from_.nominal, dropped);
        if (!frames || *frames > mostFrames || isNoFrame(text, from_.nominal, dropped)) return {};
        const std::int64_t now = converted(row, column, *frames, found);
        const std::string digits = std::to_string(now);
        if (wholeNumber(trimmed(text))) {
            return concat(std::string(text.size() - std::min(text.size(), digits.size()), '0'),
                          digits);
        }
        return inFormOf(text, timecodeText(now, to_.nominal, drops(dropped)), mark(dropped));
    }

    Mark mark(bool before) const {
        if (drops(before) == before) return Mark::asBefore;
        return before ? Mark::nonDrop : Mark::dropFrame;
    }

    std::int64_t converted(unsigned row, unsigned column, std::int64_t frames,
                           std::string_view found = {}) {
        if (keepsFrames_) return frames;
        std::int64_t above = frames * from_.seconds() * to_.frames();
        std::int64_t below = from_.frames() * to_.seconds();
        std::int64_t rest = above % below;
        if (rest == 0) return above / below;
        if (round_ == "up") return above / below + 1;
        if (round_ == "nearest") return above / below + (2 * rest >= below ? 1 : 0);
        if (round_.empty()) {
            noteInexact(row, column, found.empty() ? work_.log.cell(row, column) : found);
        }
        return above / below;
    }

    void noteInexact(unsigned row, unsigned column, std::string_view found) {
        if (inexact_++ > 0) return;
        first_ = worded(work_.log.name, {work_.log.lineOf(row), work_.log.columnName(column),
                                         inQuotes(found) + " is between two frames",
                                         "a whole frame at " + rateText(to_), ""});
    }

    [[noreturn]] void refuse() const {
        throw Failure{contradiction,
                      first_ + "; " + counted(inexact_, "cell") +
                          " like this, nothing is changed; choose with --round nearest, "
                          "down or up, or with --keep frames"};
    }

    // Clips of a timeline have rates of their own.
    bool hasOtherRate(unsigned row) {
        if (rateColumn_ == noColumn) return false;
        const std::optional<FrameRate> own = parseFrameRate(work_.log.cell(row, rateColumn_));
        if (!own) return false;
        if (!own->isAsFastAs(from_)) {
            work_.leave(row, rateColumn_, "the rate of the log, " + rateText(from_),
                        "its source times stay as they are");
            return true;
        }
        work_.put(row, rateColumn_, rateText({to_.nominal, to_.isSlowed}));
        return false;
    }

    bool isOnRecord(unsigned column) const {
        return column == record_.start || column == record_.end;
    }

    // Edit lists say row by row how they count.
    void countAnew(unsigned row) {
        unsigned column = work_.log.findColumn("FCM");
        if (column == noColumn) return;
        Counting before = countingOfFcm(work_.log.cell(row, column));
        if (before == Counting::unsaid) return;
        work_.put(row, column, fcmText(drops(before == Counting::dropFrame)));
    }

    Work& work_;
    FrameRate from_;
    FrameRate to_;
    bool keepsFrames_;
    std::string round_;
    unsigned rateColumn_;
    RangeColumns record_;
    unsigned transition_;
    std::vector<unsigned> notes_;
    Markers markers_;
    std::size_t inexact_ = 0;
    std::string first_;
};

void conform(Work& work, const std::vector<unsigned>& columns, const Args& args) {
    std::optional<FrameRate> to = parseFrameRate(args.text("BY"));
    if (!to || to->nominal > fastestWritten) {
        throw Failure{wrongUsage, "timecode conform: " + inQuotes(args.text("BY")) +
                                      " is no rate, expected one such as 25 or 29.97df"};
    }
    Conform job(work, *to, args);
    job.cells(columns);
    job.parameters();
}

unsigned columnOrNew(Log& log, const std::string& name) {
    unsigned column = log.findColumn(name);
    if (column != noColumn) return log.requireColumn(name);
    column = numberedColumn(log, name);
    if (column != noColumn) return column;
    if (std::optional<WrittenName> inner = unbracketed(name)) {
        return inner->turn > 0 ? log.requireColumn(name) : columnOrNew(log, inner->name);
    }
    column = log.table->addField({cellText(name), DBFieldTypes::text});
    if (column != noColumn) return column;
    throw Failure{unwritable, log.name + ": there is no room for a column " + inQuotes(name)};
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
            work.leave(row, length, "frames (48) or a timecode");
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

// What the end is called where the start is called so.
std::string endNameOf(const std::string& start) {
    for (auto [from, to] :
         {std::pair{"Start time", "End time"}, std::pair{"Start", "End"},
          std::pair{"Source In", "Source Out"}, std::pair{"Mark IN", "Mark OUT"}}) {
        if (sameText(start, from)) return to;
    }
    throw Failure{wrongUsage,
                  "timecode end: expected --into COLUMN for the end of " + inQuotes(start)};
}

void ends(Work& work, const Args& args) {
    RangeColumns pair =
        givenPair(work.log, args)
            .value_or(
                RangeColumns{firstColumn(work.log, {"Start time", "Start", "Source In", "Mark IN"}),
                             firstColumn(work.log, {"Duration"})});
    if (pair.start == noColumn || pair.end == noColumn) {
        throw Failure{wrongUsage, work.log.name +
                                      ": no columns such as Start and Duration, expected "
                                      "--columns START,DURATION"};
    }
    std::string into = args.text("into");
    if (into.empty()) into = endNameOf(work.log.columnName(pair.start));
    ends(work, pair.start, pair.end, columnOrNew(work.log, into));
}

void requireFitting(const Args& args, const Selection& selection) {
    std::string action = args.text("ACTION");
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

std::vector<unsigned> columnsFor(const Log& log, const Args& args) {
    if (args.has("columns")) return columnList(log, args.text("columns"));
    return args.text("ACTION") == "conform" ? timeColumns(log) : onlyPair(log);
}

// The notes of an edit list say how fast an event is played, in frames of the list's rate, and from
// which time of its source. They go along with the times of the event.
class Speeds {
public:
    Speeds(Work& work, int newNominal)
        : work_(work), newNominal_(newNominal), start_(work.log.findColumn("Source In")) {
        if (start_ == noColumn) return;
        notes_ = noteColumns(work_.log, edlCommentsName);
        strays_ = noteColumns(work_.log, edlCommentsBeforeName);
    }

    void move() {
        if (notes_.empty() && strays_.empty()) return;
        std::unordered_map<unsigned, std::string> starts;
        for (const Edit& edit : work_.edits) {
            if (edit.column == start_) starts[edit.row] = edit.after;
        }
        const bool isOtherRate = newNominal_ != work_.counting.nominal();
        for (unsigned row : work_.rows) {
            const auto moved = starts.find(row);
            const std::string_view before = work_.log.cell(row, start_);
            if (moved != starts.end())
                notesOf(row, {before, moved->second, work_.counting.nominal(), newNominal_});
            else if (isOtherRate && !keepsSource(row))
                notesOf(row, {before, before, work_.counting.nominal(), newNominal_});
        }
    }

private:
    // A clip of a timeline with a rate of its own, whose source stays, which is told.
    bool keepsSource(unsigned row) const {
        const std::optional<FrameRate> own = work_.counting.ownRate(row, start_);
        return own && !own->isAsFastAs(*work_.counting.rate());
    }

    static bool mayHaveSpeed(std::string_view cell) {
        return cell.find("M2") != cell.npos || cell.find("m2") != cell.npos;
    }

    // Comments of people may begin so, too, outside an edit list; a speed ends with a timecode.
    bool isSpeed(std::string_view line) const {
        if (!isEdlMotion(line)) return false;
        const std::string_view last = line.substr(line.find_last_of(" \t") + 1);
        return work_.log.format == Format::edl || parseTimecode(last);
    }

    void notesOf(unsigned row, const EdlMove& move) {
        for (unsigned column : strays_) tellStrays(row, column);
        for (unsigned column : notes_) {
            if (!mayHaveSpeed(work_.log.cell(row, column))) continue;
            work_.moveNote(row, column,
                           [&](std::string_view line) { return noteOf(row, column, line, move); });
        }
    }

    std::string noteOf(unsigned row, unsigned column, std::string_view line, const EdlMove& move) {
        if (!isSpeed(line)) return std::string(line);
        std::optional<std::string> moved = movedEdlMotion(line, move);
        if (moved) return *moved;
        work_.leaveLine(row, column, line,
                        "a speed in tenths of a frame, from the start of the event");
        return std::string(line);
    }

    // In front of an event a speed stands behind an FCM line, and may be that of any other event.
    void tellStrays(unsigned row, unsigned column) {
        const std::string_view cell = work_.log.cell(row, column);
        if (!mayHaveSpeed(cell)) return;
        for (std::string_view line : split(cell, '\n')) {
            if (isSpeed(line)) work_.leaveLine(row, column, line, "a speed just behind its event");
        }
    }

    Work& work_;
    int newNominal_;
    unsigned start_;
    std::vector<unsigned> notes_;
    std::vector<unsigned> strays_;  // what stands in front of events
};

void change(Work& work, const Args& args) {
    std::string action = args.text("ACTION");
    if (action == "shift") {
        shift(work, columnsFor(work.log, args), args.text("BY"));
        return Speeds(work, work.counting.nominal()).move();
    }
    if (action == "conform") {
        conform(work, columnsFor(work.log, args), args);
        return Speeds(work, parseFrameRate(args.text("BY"))->nominal).move();
    }
    if (action == "duration") return durations(work, args);
    ends(work, args);
}

void tellOdd(const Work& work) {
    constexpr std::size_t most = 20;
    for (std::size_t i = 0; i < work.odd.size() && i < most; ++i) {
        say(worded(work.log.name, work.odd[i]));
    }
    if (work.odd.size() > most) {
        say(work.log.name + ": " + std::to_string(work.odd.size() - most) + " more like these");
    }
    if (work.overMidnight > 0) {
        say(work.log.name + ": " + counted(work.overMidnight, "cell") + " past midnight");
    }
}

int run(const Args& args) {
    Selection selection = selectionFrom(args);
    requireFitting(args, selection);
    Log log = readLogToSave(args);
    Work work{log, LogCounting(log, wantedRate(args)), {}, {}, {}};
    requireRate(work);
    VDBView view = selectRows(log, selection).view;
    for (unsigned i = 0; i < view->get_num_records(); ++i) work.rows.push_back(view->baseIndex(i));
    change(work, args);
    tellOdd(work);
    bool isDry = args.has("dry-run");
    if (isDry) printEdits(log, work.edits, args);
    if (!work.rows.empty()) {
        EditMaker(log).make(work.edits);
        saveResult(log, args);
    }
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
        "frames, the number of the frame. duration fills a column from start and end, end one from "
        "start and duration. Counting is exact, drop-frame where the log says so, and goes on past "
        "midnight; the source of a clip in a timeline counts at its own FPS. Cells that are no "
        "timecode stay and are told; it ends with 1 then.",
        {{"vek timecode shift log.vek 01:00:00:00", "an hour later"},
         {"vek timecode shift log.vek -12 --columns 'Start time' --where Reel=A001",
          "twelve frames earlier, in one column of some rows"},
         {"vek timecode conform log.vek 29.97ndf --dry-run", "from drop-frame to non-drop"},
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
