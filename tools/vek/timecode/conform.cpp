#include "tools/vek/timecode/conform.h"

#include <algorithm>

#include "formats/edl/edl_lines.h"
#include "formats/timecode/clip_columns.h"
#include "formats/timecode/drop_frame_entry.h"
#include "formats/timecode/timecode_form.h"
#include "tools/vek/cli/say.h"
#include "tools/vek/timecode/markers.h"

namespace vek::timecode {

namespace {

constexpr std::size_t transitionDigits = 3;

// From one rate to another, the moment kept or the number of the frame.
class Conform {
public:
    Conform(Work& work, const FrameRate& to, const FrameCounts& counts, const Args& args)
        : work_(work),
          counts_(counts),
          from_(*work.counting.rate()),
          to_(to),
          keepsFrames_(args.text("keep") == "frames"),
          round_(args.text("round")),
          rateColumn_(work.counting.rateColumn()),
          clipRate_(rateColumn_ == noColumn ? work.log.findColumn(timeline::rate) : noColumn),
          record_(recordColumns(work.log)),
          transition_(transitionColumn(work.log)),
          notes_(noteColumns(work.log, edlCommentsName)),
          markers_(work) {}

    void cells(const std::vector<unsigned>& columns) {
        const bool movesRecord = markers_.goWith(columns);
        for (unsigned row : work_.rows) {
            const bool keepsSource = hasOtherRate(row);
            for (unsigned column : columns) {
                if (counts_.has(column) && isCount(row, column)) {
                    frameCount(row, column, keepsSource);
                } else if (!keepsSource || isOnRecord(column)) {
                    cell(row, column);
                }
            }
            if (!keepsSource) lengths(row);
            if (movesRecord) onRecord(row);
            countAnew(row);
            rateOfClip(row);
            rateOfRecord(row);
        }
        if (inexact_ > 0) refuse();
        tellNonDrop();
        if (rounded_ == 0) return;
        say(concat(work_.log.name, ": ", counted(rounded_, "time or length", "times and lengths"),
                   " between two frames, rounded ", round_ == "nearest" ? "to the nearest" : round_,
                   ", first ", firstRounded_));
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
        return before && canDropFrames(to_.nominal) && !becomesWhole();
    }

    // Frames are dropped to keep pace with a clock, which a rate such as 30 does by itself. A log
    // that drops frames at such a rate means the slower one by it, and goes on doing so.
    bool becomesWhole() const { return from_.isSlowed && !to_.isSlowed; }

    void tellNonDrop() const {
        if (!hadDropFrame_ || !becomesWhole() || !canDropFrames(to_.nominal) ||
            to_.counting != Counting::unsaid) {
            return;
        }
        const std::string rate = rateText(to_);
        say(concat(work_.log.name, ": drop-frame counting becomes non-drop, as a rate of ", rate,
                   " drops no frames; ", rate, "df keeps it"));
    }

    static std::string fcmText(bool drops) { return drops ? "DROP FRAME" : "NON-DROP FRAME"; }

    void cell(unsigned row, unsigned column) {
        std::optional<Timecode> code = codeOf(work_, row, column);
        if (!code) return;
        const FrameRate from = *work_.counting.rate(row, column);
        if (const std::optional<ExactTime> exact = exactTime(row, column, *code, from)) {
            return exactCell(row, column, *code, *exact);
        }
        const std::string_view text = work_.log.cell(row, column);
        work_.put(row, column, movedTime(row, column, *code, from, text, text));
        if (!keepsFrames_) return;
        // What lay within a frame lies there still, and a frame lasts for another time.
        const ExactTime scale(from.frames() * to_.seconds(), from.seconds() * to_.frames());
        work_.moveExact(row, column, [&](const ExactTime& time) { return time * scale; });
    }

    // The moment that a timeline has beside a cell, where that is the frame it is in.
    std::optional<ExactTime> exactTime(unsigned row, unsigned column, const Timecode& code,
                                       const FrameRate& from) const {
        if (keepsFrames_) return {};
        const ExactTime exact = work_.exactTime(row, column);
        const std::optional<ExactTime::Frames> frames = exact.frames(from);
        if (!frames || frames->whole != framesOf(code, from.nominal)) return {};
        return exact;
    }

    void exactCell(unsigned row, unsigned column, const Timecode& code, const ExactTime& exact) {
        const std::string_view text = work_.log.cell(row, column);
        const ExactTime::Frames frames = *exact.frames(to_);
        std::int64_t now = frames.whole;
        if (frames.isExact) {
            work_.put(row, work_.exactColumn(column), "");
        } else {
            const ExactTime begun = ExactTime::ofFrames(now, to_);
            const ExactTime rest = (exact - begun) * ExactTime(to_.frames(), to_.seconds());
            now += roundedUp(row, column, !(rest < ExactTime(1, 2)), text) ? 1 : 0;
        }
        work_.put(row, column, textOf(now, code, text));
    }

    // `found` is what it is told with.
    std::string movedTime(unsigned row, unsigned column, const Timecode& code,
                          const FrameRate& from, std::string_view text, std::string_view found) {
        return textOf(converted(row, column, framesOf(code, from.nominal), from, found), code,
                      text);
    }

    std::string textOf(std::int64_t frames, const Timecode& code, std::string_view text) {
        const bool dropsNow = drops(code.dropFrame);
        hadDropFrame_ = hadDropFrame_ || code.dropFrame;
        frames = inDay(work_, frames, framesInDay(to_.nominal, dropsNow));
        return inFormOf(text, timecodeText(frames, to_.nominal, dropsNow), mark(code.dropFrame));
    }

    // A column of lengths in frames may hold timecodes, too; other texts are as long at any rate.
    bool isCount(unsigned row, unsigned column) const {
        return counts_.frames(row, column) || !parseTimecode(trimmed(work_.log.cell(row, column)));
    }

    // Frames between two times stay those between them, however these are rounded.
    void frameCount(unsigned row, unsigned column, bool keepsSource) {
        const std::optional<std::int64_t> frames = counts_.frames(row, column);
        if (!frames) return;
        const FrameCounts::Found found = counts_.timesWith(*frames, row);
        const bool isOfRecord = found.times && isOnRecord(found.times->start);
        if (keepsFrames_ || (keepsSource && !isOfRecord)) return;
        if (found.areTimed && !found.times) {
            return work_.leave(
                row, column,
                std::to_string(found.length) + ", the frames between the times of its row");
        }
        if (!found.times) {
            const std::int64_t now = converted(row, column, *frames, from_);
            return work_.put(row, column, std::to_string(now));
        }
        const FrameRate from = *work_.counting.rate(row, found.times->start);
        const std::int64_t now =
            nearby(found.start + *frames, from).whole - nearby(found.start, from).whole;
        work_.put(row, column, std::to_string(now));
    }

    // Columns of a timeline that count frames, of transitions those of the record.
    void lengths(unsigned row) {
        if (rateColumn_ == noColumn) return;
        for (const char* name : timeline::frameColumns) {
            const unsigned column = work_.log.findColumn(name);
            if (column == noColumn) continue;
            const std::optional<std::int64_t> frames = wholeNumber(work_.log.cell(row, column));
            if (!frames || *frames > mostFrames) continue;
            const bool isOfSource = name == timeline::mediaFrames;
            const FrameRate from = isOfSource ? from_ : recordRate(row);
            work_.put(row, column, std::to_string(converted(row, column, *frames, from)));
        }
    }

    FrameRate recordRate(unsigned row) const {
        return record_.start == noColumn ? from_ : *work_.counting.rate(row, record_.start);
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
            return std::optional(movedTime(row, column, code, recordRate(row), text, line));
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
        const std::int64_t now = converted(row, column, *frames, from_, found);
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

    struct Nearby {
        std::int64_t whole;  // as --round says
        bool isExact;
    };

    Nearby nearby(std::int64_t frames, const FrameRate& from) const {
        if (keepsFrames_) return {frames, true};
        const std::int64_t above = frames * from.seconds() * to_.frames();
        const std::int64_t below = from.frames() * to_.seconds();
        const std::int64_t rest = above % below;
        const bool goesUp = rest != 0 && isUp(2 * rest >= below);
        return {above / below + (goesUp ? 1 : 0), rest == 0};
    }

    bool isUp(bool isNearer) const { return round_ == "up" || (round_ == "nearest" && isNearer); }

    std::int64_t converted(unsigned row, unsigned column, std::int64_t frames,
                           const FrameRate& from, std::string_view found = {}) {
        const Nearby now = nearby(frames, from);
        if (!now.isExact) noteBetween(row, column, found);
        return now.whole;
    }

    bool roundedUp(unsigned row, unsigned column, bool isNearer, std::string_view found) {
        noteBetween(row, column, found);
        return isUp(isNearer);
    }

    void noteBetween(unsigned row, unsigned column, std::string_view found) {
        noteRounded(row, column);
        if (!round_.empty()) return;
        noteInexact(row, column, found.empty() ? work_.log.cell(row, column) : found);
    }

    void noteRounded(unsigned row, unsigned column) {
        if (round_.empty() || rounded_++ > 0) return;
        firstRounded_ = concat(work_.log.name, ":", std::to_string(work_.log.lineOf(row)), ":",
                               work_.log.columnName(column));
    }

    void noteInexact(unsigned row, unsigned column, std::string_view found) {
        if (inexact_++ > 0) return;
        first_ = worded(work_.log.name, {work_.log.lineOf(row), work_.log.columnName(column),
                                         inQuotes(found) + " is between two frames",
                                         "a whole frame at " + rateText(to_), ""});
    }

    [[noreturn]] void refuse() const {
        throw Failure{wrongUsage,
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

    // A log of clips may say the rate of each, though all count at that of the log.
    void rateOfClip(unsigned row) {
        if (clipRate_ == noColumn) return;
        const std::optional<FrameRate> own = parseFrameRate(work_.log.cell(row, clipRate_));
        if (!own) return;
        if (!own->isAsFastAs(from_)) {
            return work_.leave(row, clipRate_, "the rate of the log, " + rateText(from_));
        }
        FrameRate now = to_;
        if (own->counting == Counting::unsaid || !canDropFrames(now.nominal)) {
            now.counting = Counting::unsaid;
        } else if (now.counting == Counting::unsaid) {
            now.counting = own->counting;
        }
        work_.put(row, clipRate_, rateText(now));
    }

    // From then on it has that of the log.
    void rateOfRecord(unsigned row) {
        const unsigned column = work_.counting.recordRateColumn();
        if (column == noColumn || !parseFrameRate(work_.log.cell(row, column))) return;
        work_.put(row, column, rateText({to_.nominal, to_.isSlowed}));
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
    const FrameCounts& counts_;
    FrameRate from_;
    FrameRate to_;
    bool keepsFrames_;
    std::string round_;
    unsigned rateColumn_;
    unsigned clipRate_;  // of a log that is no timeline
    RangeColumns record_;
    unsigned transition_;
    std::vector<unsigned> notes_;
    Markers markers_;
    std::size_t inexact_ = 0;
    std::string first_;
    bool hadDropFrame_ = false;
    std::size_t rounded_ = 0;
    std::string firstRounded_;
};

// Of a rate that counts in two ways it has to be said which is meant, where nothing else changes.
void requireChange(const FrameRate& to, const Work& work) {
    const bool saysNothing = to.isAsFastAs(*work.counting.rate()) &&
                             to.counting == Counting::unsaid && canDropFrames(to.nominal);
    if (!saysNothing) return;
    const std::string rate = rateText(to);
    throw Failure{wrongUsage, concat("timecode conform: ", rate, " is the rate of ", work.log.name,
                                     " already, expected ", rate, "df or ", rate,
                                     "ndf, for drop-frame or non-drop counting, or another rate")};
}

}  // namespace

void conform(Work& work, const std::vector<unsigned>& columns, const FrameCounts& counts,
             const Args& args) {
    std::optional<FrameRate> to = parseFrameRate(args.text("BY"));
    if (!to || to->nominal > fastestWritten) {
        throw Failure{wrongUsage, "timecode conform: " + inQuotes(args.text("BY")) +
                                      " is no rate, expected one such as 25 or 29.97df"};
    }
    requireChange(*to, work);
    Conform job(work, *to, counts, args);
    job.cells(columns);
    job.parameters();
}

}  // namespace vek::timecode
