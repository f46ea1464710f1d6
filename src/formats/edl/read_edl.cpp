#include <algorithm>
#include <optional>
#include <utility>

#include "formats/edl/blank_lines.h"
#include "formats/edl/edl_lines.h"
#include "formats/log/own_parameters.h"
#include "formats/reading/readers.h"
#include "formats/reading/table_builder.h"
#include "formats/text/name_list.h"
#include "formats/text/text_lines.h"

namespace vek::formats {

namespace {

// An event, what belongs to it, and the line it stands on; 0 while there is none.
struct OpenEvent {
    EdlEvent cells;
    std::string before;
    std::string counting;
    BlankLines blanks = {};
    std::size_t line = 0;
    bool hasNotes = false;  // comments other than splits and speeds

    bool isOpen() const { return line != 0; }
};

// Finds out which bytes are whose: an event has the splits, or all lines behind FCM, in front of it
// and all up to the next one. Lines that say how events count are nobody's, and all in front of
// the first event, but for its splits, is the heading.
class EdlPlaces {
public:
    void takeSplit(std::uint64_t at) {
        if (!next_) next_ = at;
    }
    void takeHeading() { next_.reset(); }
    void takeCounting(std::uint64_t at) {
        if (!gap_) gap_ = next_.value_or(at);
        next_.reset();
    }
    void takeOther(std::uint64_t at) {
        if (gap_) takeSplit(at);
    }
    void takeEvent(std::uint64_t at) {
        const std::uint64_t begin = next_.value_or(at);
        endLast(gap_.value_or(begin));
        rows_.push_back({begin, begin});
        gap_.reset();
        next_.reset();
    }
    void end(std::uint64_t size, RowPlaces& to) {
        endLast(gap_.value_or(size));
        to.beginAt(rows_.empty() ? size : rows_.front().begin);
        for (const Range& row : rows_) to.add(row);
        to.endAt(size);
    }

private:
    void endLast(std::uint64_t at) {
        if (!rows_.empty()) rows_.back().end = at;
    }

    std::vector<Range> rows_;
    std::optional<std::uint64_t> gap_;   // where nobody's lines begin, behind the last event
    std::optional<std::uint64_t> next_;  // where the next event begins
};

class EdlReader {
public:
    EdlReader(std::string_view text, Log& log)
        : text_(text), walk_(text), log_(log), builder_(log, edlColumnNames) {
        for (const std::string& name : edlColumnNames) columns_.place(name);
    }

    void read(std::size_t start) {
        std::string_view line;
        while (walk_.next(line)) {
            at_ = start + static_cast<std::size_t>(line.data() - text_.data());
            if (trimmed(line).empty())
                takeBlank();
            else
                take(line);
        }
        end();
        if (log_.rowCount() == 0 && log_.parameter("TITLE").empty()) refuse();
        builder_.setColumns({columns_.begin(), columns_.end()});
        builder_.finish();
        log_.lineEnd = walk_.lineEnd();
        if (!log_.source) return;
        log_.source->hasLoneReturns = walk_.sawLoneReturns();
        places_.end(start + text_.size(), log_.source->places);
    }

private:
    void take(std::string_view line) {
        EdlEvent next;
        if (parseEdlEvent(line, next))
            begin(std::move(next));
        else if (!takeHeading(line) && !takeCounting(line) && !takeClipName(line))
            takeComment(line);
    }

    // Blank lines between two comments are part of them, others stand in front of a line.
    void takeBlank() {
        ++blanks_;
        places_.takeOther(at_);
    }

    // The line before stays at hand: speeds of both may follow the two lines of a transition.
    void begin(EdlEvent next) {
        places_.takeEvent(at_);
        store(before_);
        before_ = std::move(open_);
        takeNextLine();
        open_ = {std::move(next), {}, counting_, std::exchange(nextBlanks_, {}), walk_.number()};
        open_.cells[edlComments].swap(splits_);
        open_.before.swap(waiting_);
        isBehindCounting_ = false;
        isBehindOddEvent_ = false;
        commented_ = nullptr;
    }

    bool isBehindFirst() const { return open_.isOpen(); }

    bool takeHeading(std::string_view line) {
        if (isBehindFirst()) return false;
        for (const char* name : {"TITLE", "FCM"}) {
            std::optional<std::string_view> value = edlValue(line, name);
            if (!value || trimmed(line).starts_with('*')) continue;
            builder_.addParameter(walk_.number(), name, *value);
            takeHeadingLine();
            places_.takeHeading();
            return true;
        }
        return false;
    }

    // It is written in front of all comments, so blank lines behind one stay with what follows it.
    void takeHeadingLine() {
        if (!waiting_.empty()) return layout_.heading.add(0);
        takeLine(layout_.heading);
        commented_ = nullptr;
    }

    // Counting that changes between two events, for all behind it.
    bool takeCounting(std::string_view line) {
        std::optional<std::string_view> value = edlCounting(line);
        if (!value) return false;
        counting_ = *value;
        isBehindCounting_ = true;
        commented_ = nullptr;
        takeNextLine();
        places_.takeCounting(at_);
        return true;
    }

    // What follows an event that could not be read names no other event's clips.
    bool takeClipName(std::string_view line) {
        if (!open_.isOpen() || isBehindOddEvent_ || isBehindCounting_) return false;
        for (const EdlName& name : edlNames) {
            std::optional<std::string_view> value = edlValue(line, name.text);
            std::string& cell = open_.cells[name.column];
            if (!value || value->empty() || !cell.empty()) continue;
            const bool isBehindOther =
                name.column == edlClipName && !open_.cells[edlToClipName].empty();
            if (isBehindOther) keepPlaces();
            commented_ = open_.hasNotes ? commented_ : nullptr;
            if (open_.hasNotes)
                addNote(line.substr(0, line.find(':') + 1));
            else
                takeLine(open_.blanks);
            cell = *value;
            return true;
        }
        return false;
    }

    // Names stand at once behind the event, the one that is left first; where they do not the
    // comments keep the places of those that were taken, which stood in front of all notes.
    void keepPlaces() {
        std::string& comments = open_.cells[edlComments];
        std::string places;
        for (const EdlName& name : edlNames) {
            if (open_.cells[name.column].empty() || hasPlace(comments, name)) continue;
            places += concat(places.empty() ? "" : "\n", "* ", name.text, ":");
        }
        if (places.empty()) return;
        const std::size_t at = endOfFirst(comments);
        if (at == comments.size())
            comments += concat(comments.empty() ? "" : "\n", places);
        else
            comments.insert(at, places + "\n");
        open_.hasNotes = true;
    }

    // Where the notes begin, behind splits and speeds.
    static std::size_t endOfFirst(std::string_view comments) {
        std::size_t at = 0;
        while (at < comments.size()) {
            const std::size_t end = std::min(comments.find('\n', at), comments.size());
            const std::string_view line = comments.substr(at, end - at);
            if (!isEdlSplit(line) && !isEdlMotion(line)) return at;
            at = std::min(end + 1, comments.size());
        }
        return at;
    }

    static bool hasPlace(std::string_view comments, const EdlName& name) {
        if (comments.find(name.text) == comments.npos) return false;
        const std::vector<std::string_view> lines = split(comments, '\n');
        return std::any_of(lines.begin(), lines.end(),
                           [&](std::string_view line) { return isEdlNamePlace(line, name); });
    }

    void takeComment(std::string_view line) {
        if (isEdlSplit(line)) {
            places_.takeSplit(at_);
            endHeading();
            return addComment(splits_, line, nextBlanks_);
        }
        if (isOddEdlEvent(line)) reportOddEvent(line);
        if (!open_.isOpen() || isBehindCounting_) {
            if (!open_.isOpen()) places_.takeHeading();
            places_.takeOther(at_);
            return addComment(waiting_, line, open_.isOpen() ? nextBlanks_ : layout_.heading);
        }
        OpenEvent& event = eventOf(line);
        if (&event != &open_) return addComment(event.cells[edlComments], line, event.blanks);
        if (!isEdlMotion(line)) {
            // A name that says nothing is no place of the one that was taken.
            if (isPlaceOfTaken(line)) keepPlaces();
            return addNote(line);
        }
        if (!open_.hasNotes) keepPlaces();
        addComment(event.cells[edlComments], line, event.blanks);
    }

    bool isPlaceOfTaken(std::string_view line) const {
        return std::any_of(std::begin(edlNames), std::end(edlNames), [&](const EdlName& name) {
            return !open_.cells[name.column].empty() && isEdlNamePlace(line, name);
        });
    }

    void addNote(std::string_view line) {
        addComment(open_.cells[edlComments], line, open_.blanks);
        open_.hasNotes = true;
    }

    void addComment(std::string& cell, std::string_view line, BlankLines& blanks) {
        if (&cell == commented_) cell.append(std::exchange(blanks_, 0), '\n');
        takeLine(blanks);
        if (!cell.empty()) cell += '\n';
        cell += trimmed(line);
        commented_ = &cell;
    }

    void takeLine(BlankLines& blanks) { blanks.add(std::exchange(blanks_, 0)); }

    void takeNextLine() {
        endHeading();
        takeLine(nextBlanks_);
    }

    // What stands in front of the first event is the heading's, whichever event is the first.
    void endHeading() {
        const bool isFirst = !open_.isOpen() && !nextBlanks_.hasLines();
        if (isFirst) layout_.heading.addBehind(std::exchange(blanks_, 0));
    }

    OpenEvent& eventOf(std::string_view line) {
        bool isOfBefore = isEdlMotion(line) && before_.isOpen() &&
                          before_.cells[edlEvent] == open_.cells[edlEvent] &&
                          isEdlMotionOf(line, before_.cells[edlReel]) &&
                          !isEdlMotionOf(line, open_.cells[edlReel]);
        return isOfBefore ? before_ : open_;
    }

    void reportOddEvent(std::string_view line) {
        isBehindOddEvent_ = true;
        log_.report([&]() -> Problem {
            return {walk_.number(), "", inQuotes(trimmed(line)),
                    "number, reel, track, kind and four timecodes",
                    "the line is kept as a comment"};
        });
    }

    // The second event says how all stand, as in front of the first one is the heading.
    bool standsAsAll(const OpenEvent& event) {
        const bool isFirst = !std::exchange(hasLayout_, true);
        if (isFirst) layout_.each = (before_.isOpen() ? open_ : event).blanks;
        return event.blanks == (isFirst ? layout_.each.withoutFirst() : layout_.each);
    }

    void store(OpenEvent& event) {
        if (!event.isOpen()) return;
        const std::vector<std::string> pieces = edlPieces(event.cells[edlComments]);
        const std::vector<std::string> before = edlPieces(event.before);
        event.cells[edlComments] = pieces[0];
        std::vector<std::string_view> cells(event.cells.begin(), event.cells.end());
        for (std::size_t i = 1; i < pieces.size(); ++i) put(edlCommentsName(i), pieces[i], cells);
        for (std::size_t i = 0; i < before.size() && !event.before.empty(); ++i) {
            put(edlCommentsBeforeName(i), before[i], cells);
        }
        if (!event.counting.empty()) put("FCM", event.counting, cells);
        const std::string blanks = standsAsAll(event) ? "" : event.blanks.text();
        if (!blanks.empty()) put(blankLinesColumn, blanks, cells);
        builder_.addWholeRow(event.line, cells.data(), cells.size(), {});
    }

    // A cell in a column that not every edit list has.
    void put(const std::string& name, std::string_view value,
             std::vector<std::string_view>& cells) {
        const std::size_t column = columns_.place(name);
        if (cells.size() <= column) cells.resize(column + 1);
        cells[column] = value;
        if (column < 65535) return;
        throw Failure{unreadable,
                      log_.name,
                      {walk_.number(), "", "more comments than 65535 columns hold", "", ""}};
    }

    void end() {
        layout_.atEnd = std::exchange(blanks_, 0);
        takeRest();
        store(before_);
        store(open_);
        const std::string layout = layout_.text();
        if (!layout.empty()) log_.setParameter(listLayoutName, layout);
        if (waiting_.empty()) return;
        std::vector<std::string> pieces = edlPieces(waiting_);
        for (std::size_t i = 0; i < pieces.size(); ++i) {
            builder_.addParameter(0, edlCommentsName(i), pieces[i]);
        }
    }

    // What no event is behind belongs to the last one.
    void takeRest() {
        BlankLines& blanks = open_.isOpen() ? open_.blanks : layout_.heading;
        std::string& last = open_.isOpen() ? open_.cells[edlComments] : waiting_;
        blanks.add(nextBlanks_);
        BlankLines counted;
        if (open_.isOpen() && !waiting_.empty()) {
            addComment(last, std::exchange(waiting_, {}), counted);
        }
        if (!splits_.empty()) addComment(last, splits_, counted);
        if (isBehindCounting_) reportUselessCounting();
    }

    void reportUselessCounting() {
        log_.report([&]() -> Problem {
            return {walk_.number(), "", "FCM " + inQuotes(counting_) + " behind the last event",
                    "an event behind it", "the line is left out"};
        });
    }

    [[noreturn]] void refuse() const {
        throw Failure{unreadable,
                      log_.name,
                      {1, "", "no event and no TITLE", "an edit list of CMX 3600 form", ""}};
    }

    std::string_view text_;
    LineWalk walk_;
    Log& log_;
    TableBuilder builder_;
    NameList columns_;
    OpenEvent before_;
    OpenEvent open_;
    std::string counting_;  // that changed behind the first event
    std::string splits_;    // for the event behind them
    std::string waiting_;   // in front of the first event, or behind FCM
    bool isBehindCounting_ = false;
    bool isBehindOddEvent_ = false;
    std::uint64_t at_ = 0;    // where the line stands
    std::size_t blanks_ = 0;  // just in front of the line
    BlankLines nextBlanks_;   // of the next event
    ListLayout layout_;
    bool hasLayout_ = false;
    const std::string* commented_ = nullptr;  // what the last line was added to
    EdlPlaces places_;
};

}  // namespace

void readEdl(Text text, Log& log) {
    EdlReader(text.view(), log).read(text.start);
}

}  // namespace vek::formats
