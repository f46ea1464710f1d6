#include <algorithm>
#include <cstdlib>
#include <utility>

#include <vekdb/host/text_util.h>
#include <vekdb/host/timecode.h>
#include "formats/edl/blank_lines.h"
#include "formats/edl/edl_lines.h"
#include "formats/edl/edl_places.h"
#include "formats/edl/half_transitions.h"
#include "formats/edl/laps.h"
#include "formats/edl/short_reels.h"
#include "formats/input/progress.h"
#include "formats/log/own_parameters.h"
#include "formats/saving/reading_back.h"
#include "formats/text/encoding.h"
#include "formats/text/text_lines.h"
#include "formats/timecode/counting.h"
#include "formats/timecode/timeline_columns.h"
#include "formats/writing/clip_lengths.h"
#include "formats/writing/sheet_facts.h"
#include "formats/writing/write_formats.h"

namespace vek::formats {

namespace {

// One line, without blanks at its ends.
std::string oneLine(std::string_view text) {
    std::string out(trimmed(text));
    for (char& c : out) {
        if (c == '\n' || c == '\r') c = ' ';
    }
    return out;
}

// Whether files of a format say the title of a list that has one.
bool holdsParameters(Format format) {
    return format == Format::table || format == Format::ale || format == Format::edl ||
           format == Format::otio;
}

bool isWord(std::string_view text) {
    return !text.empty() && std::none_of(text.begin(), text.end(), isAsciiSpace);
}

bool isOneOf(std::string_view text, std::initializer_list<const char*> words) {
    return std::any_of(words.begin(), words.end(),
                       [&](const char* word) { return sameText(text, word); });
}

// The track of an edit list for the tracks of other logs, "VA1A2"; "" where there is none.
std::string trackOf(std::string_view text) {
    struct Entry {
        const char* tracks;
        const char* track;
    };
    static constexpr Entry entries[] = {{"VA1", "B"},  {"VA1A2", "AA/V"}, {"VA2", "A2/V"},
                                        {"A1", "A"},   {"A1A2", "AA"},    {"V1", "V"},
                                        {"V1A1", "B"}, {"V1A1A2", "AA/V"}};
    if (isOneOf(text, {"V", "A", "A2", "AA", "B", "A/V", "A2/V", "AA/V", "NONE"})) {
        return std::string(text);
    }
    for (const Entry& entry : entries) {
        if (sameText(text, entry.tracks)) return entry.track;
    }
    return {};
}

class EdlWriter {
public:
    EdlWriter(const Sheet& sheet, const WriteStyle& style, Output& out, Losses& losses)
        : sheet_(sheet),
          style_(style),
          out_(out),
          text_(out, Format::edl),
          losses_(losses),
          places_(sheet),
          others_(places_.others()),
          counting_(sheet.log, style.rate),
          lengths_(sheet, counting_, places_.source, places_.record),
          laps_(sheet, places_.rowKind, places_.source, places_.record, counting_, lengths_) {
        requireColumns();
        if (places_.isEdl()) layout_ = ListLayout::of(sheet.log.parameter(listLayoutName));
    }

    void write() {
        beginBlock(layout_.heading);
        writeHeading();
        Progress progress(sheet_.log.opening.watcher, "writing", sheet_.rowCount());
        for (unsigned row = 0; row < sheet_.rowCount(); ++row) {
            progress.reach(row);
            writeRow(row);
        }
        endBlock();
        addBlanks(layout_.atEnd);
        text_.end();
        if (!isUtf8_) tellNoUtf8(sheet_, losses_);
    }

private:
    void requireColumns() const {
        if (places_.source.start == noColumn) {
            throw Failure{unwritable,
                          sheet_.log.name,
                          {0, "", "no pair of columns such as Start and End",
                           "source times for the events of an edit list", ""}};
        }
        if (places_.record.start != noColumn || counting_.nominal() != 0) return;
        throw Failure{wrongUsage,
                      sheet_.log.name,
                      {0, "",
                       "no columns Record In and Record Out, and no frame rate to lay the events "
                       "end to end",
                       "", concat("expected ", sheet_.log.opening.terms->rate)}};
    }

    // The heading, or an event: blank lines are counted within it.
    void beginBlock(const BlankLines& blanks) {
        endBlock();
        blanks_ = blanks;
        linesInBlock_ = 0;
    }

    // A block that has fewer lines now keeps what stood in front of those it had.
    void endBlock() { addBlanks(blanks_.from(linesInBlock_ + 1)); }

    void addBlanks(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) text_.write(bytesOf(style_.lineEnd));
    }

    void line(std::string_view text) {
        if (!text.empty()) addBlanks(blanks_.before(++linesInBlock_));
        tellZeros(
            text, 1, [&](unsigned) { return text; }, [&](unsigned) { return inQuotes(text); },
            losses_);
        isUtf8_ = isUtf8_ && isWellFormedUtf8(text);
        text_.write(text);
        text_.write(bytesOf(style_.lineEnd));
    }

    std::string_view cell(unsigned row, unsigned column) const {
        return column == noColumn ? std::string_view() : sheet_.cell(row, column);
    }

    void writeHeading() {
        tellOverruled();
        writeHeadingLine("TITLE", title());
        fcm_ = oneLine(sheet_.log.parameter("FCM"));
        writeHeadingLine("FCM", fcm_);
        for (const ParameterText& parameter : ownParameters(sheet_.log)) writeParameter(parameter);
        if (places_.record.start == noColumn) {
            losses_.addEach(out_.name() +
                            ": no record times, the events are laid end to end from 01:00:00:00");
        }
    }

    void tellOverruled() {
        const std::string told = counting_.overruled();
        if (!told.empty()) losses_.addEach(concat(sheet_.log.name, ": ", told));
    }

    // One that a log has without a value keeps its line.
    void writeHeadingLine(const char* name, const std::string& value) {
        if (value.empty() && sheet_.log.table->get_param_val(name) == nullptr) return;
        line(trimmed(concat(name, ": ", value)));
    }

    std::string title() {
        std::string name = oneLine(sheet_.log.parameter("TITLE"));
        if (!name.empty() || (places_.isEdl() && holdsParameters(sheet_.log.format))) return name;
        name = oneLine(sheet_.log.parameter("Project"));
        isTitle_ = !name.empty();
        return isTitle_ ? name : oneLine(titleOfFile(sheet_, out_.name(), losses_));
    }

    // The comments of an edit list that has no event are parameters.
    void writeParameter(const ParameterText& parameter) {
        bool isComment = sheet_.rowCount() == 0 && places_.isEdl() &&
                         sameText(parameter.name.substr(0, 8), edlColumnNames[edlComments]);
        if (isComment) {
            for (std::string_view text : split(parameter.value, '\n')) line(oneLine(text));
        } else if (!isOneOf(parameter.name, {"TITLE", "FCM"}) &&
                   !(isTitle_ && sameText(parameter.name, "Project"))) {
            losses_.add("parameters have no place in this format", inQuotes(parameter.name));
        }
    }

    void writeRow(unsigned row) {
        if (!isEvent(row)) return;
        EdlEvent event;
        if (!takeTimes(row, event)) return;
        clip_ = row;
        tellUnseen(row);
        takeNames(row, event);
        const std::string comesFrom = takeLap(row, event);
        EdlLines lines{linesBefore(row), commentsOf(row, event), eventLine(row, event), {}};
        if (places_.record.start != noColumn) addMotion(row, event, lines.comments);
        for (std::size_t i = 0; i < lines.names.size(); ++i) {
            lines.names[i] = clipName(row, event[edlNames[i].column]);
        }
        if (isBehindEvent_) beginBlock(blanksOf(row));
        writeCounting(row, event, !lines.before.empty());
        for (const std::string& text : std::exchange(lines.before, {})) line(text);
        if (!isBehindEvent_) beginBlock(blanksOf(row).withoutFirst());
        if (!comesFrom.empty()) line(comesFrom);
        for (const std::string& text : inOrder(lines)) line(text);
        if (lostFirstLine(row)) tellHalfTransition(sheet_.source(row), sheet_.line(row), losses_);
        if (lostSecondLine(row)) tellLostTransition(sheet_.source(row), sheet_.line(row), losses_);
        isBehindEvent_ = true;
        wasNoTime_ = event[edlRecordIn] == event[edlRecordOut];
    }

    // Whether what a transition goes over from stands just in front of it in the log, and not here.
    bool lostFirstLine(unsigned row) const {
        const unsigned own = sheet_.view->baseIndex(row);
        const bool isBehindIt = row > 0 && sheet_.view->baseIndex(row - 1) + 1 == own;
        return places_.isEdl() && own > 0 && !isBehindIt && goesOver(own - 1);
    }

    // The same of what it goes over to just behind it.
    bool lostSecondLine(unsigned row) const {
        const unsigned next = sheet_.view->baseIndex(row) + 1;
        const bool isInFront =
            row + 1 < sheet_.rowCount() && sheet_.view->baseIndex(row + 1) == next;
        return places_.isEdl() && next < sheet_.log.rowCount() && !isInFront && goesOver(next - 1);
    }

    // Whether the row of the log behind one goes over from it.
    bool goesOver(unsigned own) const {
        const unsigned event = sheet_.columns[places_.event];
        return isEdlContinued(sheet_.log.cell(own, event), sheet_.log.cell(own + 1, event),
                              sheet_.log.cell(own + 1, sheet_.columns[places_.kind]));
    }

    BlankLines blanksOf(unsigned row) const {
        const std::string_view own = cell(row, places_.blanks);
        if (!own.empty()) return BlankLines(own);
        return isNewAndContinued(row) ? layout_.each.withoutFirst() : layout_.each;
    }

    // A row that came from another log knows nothing of the blank lines here.
    bool isNewAndContinued(unsigned row) const {
        const Source* const source = sheet_.log.source.get();
        const bool isNew = source != nullptr && sheet_.view->baseIndex(row) >= source->rows;
        return isNew && row > 0 &&
               isEdlContinued(cell(row - 1, places_.event), cell(row, places_.event),
                              cell(row, places_.kind));
    }

    // It stands behind the splits, which begin the comments.
    void addMotion(unsigned row, const EdlEvent& event, std::vector<std::string>& comments) {
        const std::string line = motion(row, event, comments);
        if (line.empty()) return;
        comments.insert(std::find_if_not(comments.begin(), comments.end(), isEdlSplit), line);
    }

    // Comments in front of the event, in lines that a reader takes for nothing else.
    std::vector<std::string> linesBefore(unsigned row) {
        std::string text;
        for (unsigned column : places_.before) addEdlPiece(text, cell(row, column));
        std::vector<std::string> lines;
        if (text.empty()) return lines;
        for (std::string_view part : split(text, '\n')) {
            const std::string own = oneLine(part);
            EdlEvent other;
            const bool isKept = own.empty() || own.starts_with('*') ||
                                !(parseEdlEvent(own, other) || edlCounting(own) ||
                                  isEdlSplit(own) || edlValue(own, "TITLE"));
            if (!isKept) tellStar(row, own);
            lines.push_back(isKept ? own : "* " + own);
        }
        return lines;
    }

    // Of the rows of a timeline clips are events, and markers notes to the one before.
    bool isEvent(unsigned row) {
        const std::string_view own = cell(row, places_.rowKind);
        const TimelineKind kind = timelineKind(own);
        if (places_.rowKind == noColumn || kind == TimelineKind::clip) return true;
        if (kind == TimelineKind::marker) return writeMarker(row);
        if (kind == TimelineKind::transition && laps_.isOfClip(row)) return false;
        if (const Lap* black = laps_.toBlack(row)) return writeToBlack(row, *black);
        return leaveOut(row, "a row of kind " + inQuotes(own), "a clip or a marker");
    }

    bool writeMarker(unsigned row) {
        std::string time;
        if (!takeTime(row, places_.record.start, time)) {
            return leaveOut(row, "a marker outside the record", "one within its clip");
        }
        std::string color = oneLine(cell(row, places_.color));
        if (color.empty()) color = "WHITE";
        const std::string name = oneLine(cell(row, places_.marker));
        const std::string note = oneLine(cell(row, places_.note));
        const bool isOther = !note.empty() && note != name;
        line(trimmed(concat("* LOC: ", time, " ", color, " ", name,
                            !name.empty() && isOther ? ": " : "", isOther ? note : "")));
        tellLostOfMarker(row);
        return false;
    }

    // A note has a marker's time, colour and text alone. What it says as its clip does is not lost.
    void tellLostOfMarker(unsigned row) {
        const auto lose = [&](unsigned column) {
            losses_.add("values of markers have no place in this format",
                        place(sheet_, row, column));
        };
        if (!sameText(cell(row, places_.rowKind), "Marker")) lose(places_.rowKind);
        for (unsigned column : others_) {
            const bool isWritten = column == places_.note || column == places_.rate;
            const bool isOfClip = clip_ != noColumn && cell(row, column) == cell(clip_, column);
            if (!isWritten && !isOfClip && !isNothing(row, column)) lose(column);
        }
    }

    // A tag that says no is nothing to write.
    bool isNothing(unsigned row, unsigned column) const {
        const std::string_view text = cell(row, column);
        return trimmed(text).empty() || (sameText(sheet_.name(column), "Tag") && text == "0");
    }

    // The times of a clip as an edit list has them, and what its event comes from as a line.
    std::string takeLap(unsigned row, EdlEvent& event) {
        const Lap& lap = laps_.of(row);
        moveTime(row, event[edlSourceIn], -lap.lead);
        moveTime(row, event[edlRecordIn], -lap.lead);
        moveTime(row, event[edlSourceOut], -lap.tail);
        moveTime(row, event[edlRecordOut], -lap.tail);
        if (!lap.goesOver()) return {};
        takeTransition(lap, event);
        event[edlToClipName] = event[edlClipName];
        event[edlClipName] = cell(lap.from, lap.from == noColumn ? noColumn : places_.clipName);
        return lineBefore(lap, event);
    }

    // By frames of the record, as only clips move that run like it.
    void moveTime(unsigned row, std::string& text, std::int64_t by) const {
        if (by == 0) return;
        const Timecode code = *parseTimecode(text);
        const int nominal = lengths_.recordRate(row).nominal;
        text = timecodeText(framesOf(code, nominal) + by, nominal, code.dropFrame);
    }

    void takeTransition(const Lap& lap, EdlEvent& event) {
        const std::string_view type = cell(lap.transition, places_.transition);
        const TransitionKind made = transitionKindOf(type, cell(lap.transition, places_.clipName));
        if (!made.isWhole) {
            tell(lap.transition, places_.transition, inQuotes(type), "a dissolve or a wipe",
                 "it is written as a dissolve");
        }
        if (lap.late > 0) {
            tell(lap.transition,
                 concat("a transition that begins ", std::to_string(lap.late),
                        " frames before its clips meet"),
                 "clips at the speed of the record that have as many frames more",
                 "it begins where they meet");
        }
        event[edlKind] = made.kind;
        event[edlLength] = std::to_string(lap.length);
        if (event[edlLength].size() < 3)
            event[edlLength].insert(0, 3 - event[edlLength].size(), '0');
    }

    // What is gone over from, without a length where it begins.
    std::string lineBefore(const Lap& lap, const EdlEvent& event) {
        EdlEvent from = event;
        from[edlKind] = "C";
        from[edlLength].clear();
        from[edlReel] = "BL";
        from[edlSourceIn] = "00:00:00:00";
        from[edlRecordOut] = event[edlRecordIn];
        if (lap.from != noColumn && takeTime(lap.from, places_.source.end, from[edlSourceIn])) {
            const std::string own = oneLine(cell(lap.from, places_.reel));
            from[edlReel] = own.empty() ? "AX" : style_.shortReels ? shortReels_.of(own) : own;
            moveTime(lap.from, from[edlSourceIn], -laps_.of(lap.from).tail);
        }
        from[edlSourceOut] = from[edlSourceIn];
        return edlEventLine(from);
    }

    bool writeToBlack(unsigned row, const Lap& lap) {
        EdlEvent event;
        if (!takeTime(row, places_.record.start, event[edlRecordIn]) ||
            !takeTime(row, places_.record.end, event[edlRecordOut])) {
            return leaveOut(row, "no start and end in the record");
        }
        moveTime(row, event[edlRecordIn], lap.late);
        event[edlEvent] = number(row);
        event[edlReel] = "BL";
        event[edlTrack] = track(row);
        event[edlSourceIn] = "00:00:00:00";
        event[edlSourceOut] = timecodeText(lap.length, lengths_.recordRate(row).nominal, false);
        takeTransition(lap, event);
        event[edlClipName] = cell(lap.from, places_.clipName);
        line(lineBefore(lap, event));
        line(edlEventLine(event));
        if (!event[edlClipName].empty())
            line("* FROM CLIP NAME: " + clipName(row, event[edlClipName]));
        return false;
    }

    std::string eventLine(unsigned row, const EdlEvent& event) {
        std::string text = edlEventLine(event);
        EdlEvent back;
        bool isKept = parseEdlEvent(text, back) &&
                      std::equal(back.begin(), back.begin() + edlClipName, event.begin());
        if (!isKept) {
            tell(row, inQuotes(trimmed(text)), "an event of plain fields",
                 "it reads back as another one");
        }
        return text;
    }

    std::string clipName(unsigned row, const std::string& name) {
        std::string text = oneLine(name);
        if (text != name) {
            tell(row, inQuotes(name), "a clip name of one line without blanks around it",
                 "it is written as " + inQuotes(text));
        }
        return text;
    }

    // What is not as it was, row by row.
    void tell(unsigned row, const std::string& found, const std::string& expected,
              const std::string& outcome) {
        tell(row, noColumn, found, expected, outcome);
    }
    void tell(unsigned row, unsigned column, const std::string& found, const std::string& expected,
              const std::string& outcome) {
        const std::string name = column == noColumn ? "" : sheet_.name(column);
        losses_.addEach(
            worded(sheet_.source(row), {sheet_.line(row), name, found, expected, outcome}));
    }

    // Times that stand in a row are written as they are, in the eleven characters of the form.
    bool takeTimes(unsigned row, EdlEvent& event) {
        bool isWhole = takeTime(row, places_.source.start, event[edlSourceIn]) &&
                       takeTime(row, places_.source.end, event[edlSourceOut]);
        if (!isWhole) return leaveOut(row, "no start and end in the source");
        if (places_.record.start == noColumn) return takeNextTimes(row, event);
        isWhole = takeTime(row, places_.record.start, event[edlRecordIn]) &&
                  takeTime(row, places_.record.end, event[edlRecordOut]);
        if (!isWhole) return leaveOut(row, "no start and end in the record");
        tellOtherRecord(row);
        tellNoFrames(row, event);
        tellBackwards(row, places_.source, "in the source");
        tellBackwards(row, places_.record, "in the record");
        return true;
    }

    // An edit list has no way to switch an event off.
    void tellUnseen(unsigned row) {
        if (!sameText(cell(row, places_.enabled), "false")) return;
        tell(row, places_.enabled, inQuotes(cell(row, places_.enabled)),
             "a clip that is in the picture", "its event is in the list all the same");
    }

    // A list has one rate.
    void tellOtherRecord(unsigned row) {
        if (counting_.nominal() == 0 || lengths_.recordRate(row).isAsFastAs(*counting_.rate()))
            return;
        tell(row, "a record at " + rateText(lengths_.recordRate(row)),
             "one at " + rateText(*counting_.rate()), "its times are written as they are");
    }

    // Times that name no frame, where the rate is known.
    void tellNoFrames(unsigned row, const EdlEvent& event) {
        const unsigned columns[] = {places_.source.start, places_.source.end, places_.record.start,
                                    places_.record.end};
        for (std::size_t i = 0; i < std::size(columns); ++i) {
            if (hasFrame(row, event[edlSourceIn + i])) continue;
            tell(row, columns[i], inQuotes(cell(row, columns[i])),
                 "a frame that is there at " + rateText(*counting_.rate()),
                 "it is written as it is");
        }
    }

    bool hasFrame(unsigned row, const std::string& text) const {
        return counting_.nominal() == 0 || isCounted(counted(row, text), counting_.nominal());
    }

    void tellBackwards(unsigned row, const RangeColumns& pair, const char* where) {
        if (!lengths_.endsBeforeStart(row, pair)) return;
        tell(row, concat("an end before its start ", where), "one that is not",
             "it is written as it is");
    }

    // Without a rate a clip is told that has two lengths at each of them.
    void tellOtherLength(unsigned row) {
        const auto at = [&](const RangeColumns& pair, int nominal) {
            return framesBetween(*lengths_.timecode(row, pair.start),
                                 *lengths_.timecode(row, pair.end), nominal);
        };
        const int rates[] = {24, 25, 30, 48, 50, 60};
        const bool mayBeAlike = std::any_of(std::begin(rates), std::end(rates), [&](int nominal) {
            const std::optional<std::int64_t> source = at(places_.source, nominal);
            const std::optional<std::int64_t> record = at(places_.record, nominal);
            return !source || !record || *source == *record;
        });
        if (mayBeAlike || places_.isEdl()) return;
        tell(row, "another length in the source than in the record",
             concat("the same, or ", sheet_.log.opening.terms->rate, " for an M2 line"),
             "the event is written as it is");
    }

    // A clip that runs for another time on the record than in its source changes its speed. What
    // was read from an edit list has its own lines for that.
    std::string motion(unsigned row, const EdlEvent& event, const std::vector<std::string>& notes) {
        if (counting_.nominal() == 0) {
            tellOtherLength(row);
            return {};
        }
        const std::optional<std::int64_t> source = lengths_.inSource(row);
        const std::optional<std::int64_t> record = lengths_.onRecord(row);
        if (!source || !record) return {};
        const std::int64_t played = lengths_.asRecord(*source, row);
        const bool isSaid = std::any_of(notes.begin(), notes.end(), isEdlMotion);
        // Times of a timeline are those of the frame that they are in.
        const std::int64_t slack = places_.rowKind == noColumn ? 0 : 1;
        if (isSaid || std::abs(played - *record) <= slack) return {};
        const std::string found = concat(std::to_string(*source), " frames in the source and ",
                                         std::to_string(*record), " in the record");
        if (places_.isEdl()) {
            tell(row, found, "as many, or an M2 line", "the event is written as it is");
            return {};
        }
        const EdlSpeed speed = edlSpeed(played * counting_.nominal(), *record);
        if (speed.text.empty())
            tell(row, found, "a speed that an M2 line has room for", "the event has none");
        else if (!speed.isExact)
            tell(row, found, "a speed in tenths of a frame",
                 concat("the M2 line says ", speed.text));
        return speed.text.empty() ? "" : edlMotionLine(event, speed.text);
    }

    Timecode counted(unsigned row, const std::string& text) const {
        Timecode code = *parseTimecode(text);
        code.dropFrame = code.dropFrame ||
                         counting_.counting(sheet_.view->baseIndex(row)) == Counting::dropFrame;
        return code;
    }

    bool takeTime(unsigned row, unsigned column, std::string& to) const {
        std::string_view text = trimmed(cell(row, column));
        if (!parseTimecode(text)) return false;
        char buffer[time_def::maxForm];
        to = text.size() == time_def::maxForm ? text : time_def::punctuatedForm(text, buffer);
        return true;
    }

    // The events one behind the other, where a log says nothing of a record.
    bool takeNextTimes(unsigned row, EdlEvent& event) {
        if (!hasFrame(row, event[edlSourceIn]) || !hasFrame(row, event[edlSourceOut])) {
            return leaveOut(row, "a frame that is not there at the rate", "one that is");
        }
        const Timecode start = counted(row, event[edlSourceIn]);
        const Timecode end = counted(row, event[edlSourceOut]);
        int nominal = counting_.nominal();
        std::optional<std::int64_t> frames = framesBetween(start, end, nominal);
        if (!frames) return leaveOut(row, "an end before the start");
        if (*frames >= framesInDay(nominal, start.dropFrame || end.dropFrame)) {
            return leaveOut(row, "a clip of a day or more", "one that a day of record times holds");
        }
        if (recorded_ < 0) {
            recordDrops_ = start.dropFrame || end.dropFrame;
            recorded_ = framesOf({1, 0, 0, 0, recordDrops_}, nominal);
        }
        std::int64_t day = framesInDay(nominal, recordDrops_);
        event[edlRecordIn] = timecodeText(recorded_, nominal, recordDrops_);
        recorded_ = (recorded_ + *frames) % day;
        event[edlRecordOut] = timecodeText(recorded_, nominal, recordDrops_);
        return true;
    }

    bool leaveOut(unsigned row, const std::string& found, const char* expected = "timecodes") {
        losses_.addEach(worded(sheet_.source(row),
                               {sheet_.line(row), "", found, expected, "the row is left out"}));
        return false;
    }

    void takeNames(unsigned row, EdlEvent& event) {
        event[edlEvent] = number(row);
        event[edlReel] = reel(row);
        event[edlTrack] = track(row);
        takeKind(row, event);
        event[edlClipName] = cell(row, places_.clipName);
        event[edlToClipName] = cell(row, places_.toClipName);
    }

    std::string number(unsigned row) {
        if (!isSecondLine(row)) ++number_;
        std::string_view own = cell(row, places_.event);
        if (isWord(own) && isAsciiDigit(own.front())) return std::string(own);
        std::string text = std::to_string(number_);
        if (text.size() < 3) text.insert(0, 3 - text.size(), '0');
        if (!own.empty()) {
            tell(row, places_.event, inQuotes(own), "a number", "it is counted as " + text);
        }
        return text;
    }

    // What is gone over to has the number of what it comes from, which ends where it begins.
    bool isSecondLine(unsigned row) const {
        return places_.event == noColumn && places_.kind != noColumn && wasNoTime_ &&
               isEdlTransition(cell(row, places_.kind));
    }

    std::string reel(unsigned row) {
        std::string_view own = cell(row, places_.reel);
        std::string text = oneLine(own);
        if (text.empty()) return noReel(row);
        if (text != own) {
            tellReel(row, own, "no blanks around it and one line",
                     "it is written as " + inQuotes(text));
        }
        if (style_.shortReels) return shortened(row, text);
        if (!isWord(text)) {
            tellReel(row, text, "one word, as most programs read no more",
                     concat("it is written as it is; ", sheet_.log.opening.terms->shortReels,
                            " makes one word of it"));
        }
        if (text.size() > ShortReels::longest) {
            tellReel(row, text, "at most 8 characters",
                     concat("it is written in the long form; ",
                            sheet_.log.opening.terms->shortReels, " cuts it"));
        }
        return text;
    }

    // A log without reels is told once.
    std::string noReel(unsigned row) {
        if (places_.reel == noColumn)
            losses_.add("events without a reel, which are given AX", "");
        else
            tellReel(row, "", "a reel", "it is written as AX");
        return "AX";
    }

    std::string shortened(unsigned row, const std::string& reel) {
        const std::string& name = shortReels_.of(reel);
        if (name != reel) {
            tellReel(row, reel, "at most 8 characters, none of them a blank",
                     concat("it is written as ", name));
        }
        return name;
    }

    void tellReel(unsigned row, std::string_view reel, const char* expected,
                  const std::string& outcome) {
        tell(row, places_.reel, inQuotes(reel), expected, outcome);
    }

    std::string track(unsigned row) {
        std::string_view own = trimmed(cell(row, places_.track));
        const bool isKept = places_.isEdl() && isReadAs(row, own, cell(row, places_.kind));
        std::string text = isKept ? std::string(own) : trackOf(own);
        if (!text.empty()) return text;
        if (places_.track != noColumn) {
            tell(row, places_.track, inQuotes(own), "a track such as V, A2 or B",
                 "it is written as V");
        }
        return "V";
    }

    void takeKind(unsigned row, EdlEvent& event) {
        std::string_view own = cell(row, places_.kind);
        std::string_view length = cell(row, places_.length);
        if (places_.kind == noColumn) return takeCut(row, event);
        if (!places_.isEdl() && own.empty() && length.empty()) own = "C";
        const bool isKind = isReadAs(row, "V", own);
        const bool isLength = std::all_of(length.begin(), length.end(), isAsciiDigit);
        if (!isKind || !isLength) {
            tell(row, places_.kind, inQuotes(concat(own, length.empty() ? "" : " ", length)),
                 "C, D, a wipe or a key, and its length", "it is written as a cut");
        }
        event[edlKind] = isKind && isLength ? own : "C";
        if (isKind && isLength) event[edlLength] = length;
    }

    // A name of a clip that it goes to says that it was no cut.
    void takeCut(unsigned row, EdlEvent& event) {
        event[edlKind] = "C";
        const std::string_view to = cell(row, places_.toClipName);
        if (trimmed(to).empty()) return;
        tell(row, places_.toClipName, inQuotes(to),
             "columns Kind and Length, which say how it goes over to that clip",
             "it is written as a cut");
    }

    // Whether a track and a kind stay what they are in an event.
    bool isReadAs(unsigned row, std::string_view track, std::string_view kind) const {
        if (!isWord(track) || kind.empty()) return false;
        EdlEvent event{"001", "A", std::string(track), std::string(kind)};
        event[edlLength] = cell(row, places_.length);
        std::fill(&event[edlSourceIn], &event[edlRecordOut] + 1, "00:00:00:00");
        EdlEvent back;
        return parseEdlEvent(edlEventLine(event), back) && back == event;
    }

    bool dropsFrames(unsigned row, const EdlEvent& event) const {
        unsigned source = sheet_.view->baseIndex(row);
        return counting_.counting(source) == Counting::dropFrame ||
               parseTimecode(event[edlRecordIn])->dropFrame;
    }

    // Whether an event says how it counts, and none in front of it did.
    bool isSaidAnew(unsigned row) {
        const bool isSaid = places_.isEdl() && !trimmed(cell(row, places_.counting)).empty();
        return isSaid && !std::exchange(isSaidByRows_, true) && isBehindEvent_;
    }

    // A line in front of the first event, and of each that counts in another way. Comments stand
    // in front of an event behind such a line, too; without one they belong to the event before.
    void writeCounting(unsigned row, const EdlEvent& event, bool hasLinesBefore) {
        std::string own = oneLine(cell(row, places_.counting));
        if (own.empty()) own = oneLine(sheet_.log.parameter("FCM"));
        if (own.empty() && !places_.isEdl()) {
            own = dropsFrames(row, event) ? "DROP FRAME" : "NON-DROP FRAME";
        }
        if (own.empty() && !fcm_.empty()) {
            tell(row, "an event of which FCM says nothing", "one of which it does",
                 concat("it comes behind FCM ", fcm_));
        }
        const bool isNeeded = hasLinesBefore && isBehindEvent_;
        if (isNeeded && own.empty()) {
            tell(row, "comments in front of an event", "an FCM line in front of them",
                 "they belong to the event before");
        }
        const bool isFirstSaid = isSaidAnew(row);
        if (own.empty() || (own == fcm_ && !isNeeded && !isFirstSaid)) return;
        line("FCM: " + own);
        fcm_ = own;
    }

    // Those of an edit list are lines already, all others become lines with a star.
    std::vector<std::string> commentsOf(unsigned row, const EdlEvent& event) {
        std::vector<std::string> lines;
        std::string text;
        for (unsigned column : places_.comments) addEdlPiece(text, cell(row, column));
        addLines(row, event, text, lines);
        std::string reel = oneLine(cell(row, places_.reel));
        if (style_.shortReels && !reel.empty() && event[edlReel] != reel) {
            lines.push_back("* SOURCE REEL: " + reel);
        }
        for (unsigned column : others_) addCell(row, column, event, lines);
        return lines;
    }

    void addLines(unsigned row, const EdlEvent& event, std::string_view text,
                  std::vector<std::string>& lines) {
        if (text.empty()) return;
        bool isBehindOdd = false;
        bool isBehindSplits = false;
        const std::string_view inked = trimmed(text);
        if (inked != text) tellBlanks(row);
        for (std::string_view part : split(inked, '\n')) {
            std::string own = oneLine(part);
            if (own != part) tellBlanks(row);
            if (own.empty() || (places_.isEdl() && isNamePlace(own, isBehindOdd))) {
                lines.push_back(own);
                continue;
            }
            isBehindSplits = isBehindSplits || !isEdlSplit(own);
            bool isKept = isComment(own, event, isBehindOdd) || !isBehindSplits;
            isBehindOdd = isBehindOdd || (isKept && isOddEdlEvent(own));
            if (!isKept && places_.isEdl()) tellStar(row, own);
            lines.push_back(isKept ? own : "* " + own);
        }
    }

    void tellBlanks(unsigned row) {
        tell(row, "a comment with blanks around it", "one without", "it loses them");
    }

    void tellStar(unsigned row, std::string_view comment) {
        tell(row, inQuotes(comment), "a comment", "it is given a star");
    }

    static bool isNamePlace(std::string_view line, bool isBehindOdd) {
        return !isBehindOdd &&
               std::any_of(std::begin(edlNames), std::end(edlNames),
                           [&](const EdlName& name) { return isEdlNamePlace(line, name); });
    }

    static bool isBlank(std::string_view text) { return trimmed(text).empty(); }

    // Whether a reader will find a comment in it, and not an event or another's name.
    bool isComment(const std::string& text, const EdlEvent& event, bool isBehindOdd) const {
        if (!places_.isEdl() && !text.starts_with('*')) return false;
        EdlEvent other;
        bool isName = (isBlank(event[edlClipName]) && edlValue(text, "FROM CLIP NAME")) ||
                      (isBlank(event[edlToClipName]) && edlValue(text, "TO CLIP NAME"));
        return !parseEdlEvent(text, other) && !edlCounting(text) && !isEdlSplit(text) &&
               (isBehindOdd || !isName);
    }

    void addCell(unsigned row, unsigned column, const EdlEvent& event,
                 std::vector<std::string>& lines) {
        if (isNothing(row, column)) return;
        std::string_view text = cell(row, column);
        losses_.add("values written as comments", place(sheet_, row, column));
        std::string before = concat("* ", oneLine(sheet_.name(column)), ": ");
        for (std::string_view part : split(text, '\n')) {
            std::string own = oneLine(part);
            // With a second star it names no clip.
            const bool isPlain = isComment(before + own, event, false);
            if (!own.empty()) lines.push_back(concat(isPlain ? "" : "* ", before, own));
            before = "* ";
        }
    }

    const Sheet& sheet_;
    const WriteStyle& style_;
    const Output& out_;
    CheckedOutput text_;
    Losses& losses_;
    EdlPlaces places_;
    std::vector<unsigned> others_;
    LogCounting counting_;
    ClipLengths lengths_;
    Laps laps_;
    ShortReels shortReels_;
    ListLayout layout_;
    BlankLines blanks_;
    std::uint32_t linesInBlock_ = 0;
    std::string fcm_;
    std::size_t number_ = 0;
    unsigned clip_ = noColumn;  // the row of the last event
    bool isBehindEvent_ = false;
    bool wasNoTime_ = false;  // the last event, on the record
    bool isSaidByRows_ = false;
    std::int64_t recorded_ = -1;  // the frame that the next event begins at
    bool recordDrops_ = false;
    bool isTitle_ = false;  // the parameter Project
    bool isUtf8_ = true;    // what was written
};

}  // namespace

void writeEdl(const Sheet& sheet, const WriteStyle& style, Output& out, Losses& losses) {
    EdlWriter(sheet, style, out, losses).write();
}

}  // namespace vek::formats
