#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <utility>

#include "formats/edl/blank_lines.h"
#include "formats/edl/edl_lines.h"
#include "formats/edl/half_transitions.h"
#include "formats/input/input.h"
#include "formats/log/own_parameters.h"
#include "formats/reading/readers.h"
#include "formats/reading/table_builder.h"
#include "formats/saving/change_formats.h"
#include "formats/saving/save_in_place.h"
#include "formats/text/text_lines.h"
#include "formats/text/utf8.h"

namespace vek::formats {

namespace {

// An event as a log has it, its comments in one piece.
struct EdlRow {
    EdlEvent event;
    std::string before;
    std::string counting;
    std::string blanks;

    bool hasNotesOf(const EdlRow& other) const {
        return event[edlComments] == other.event[edlComments] && before == other.before;
    }
    bool operator==(const EdlRow& other) const = default;
};

// Speeds that an event's notes had, and what they are now.
using MovedSpeeds = std::vector<std::pair<std::string, std::string>>;

// Takes the rows of a log as events.
class EdlRows {
public:
    explicit EdlRows(const Log& log)
        : log_(log), counting_(log.findColumn("FCM")), blanks_(log.findColumn(blankLinesColumn)) {
        for (std::size_t i = 0; i < edlColumns; ++i) {
            columns_[i] = log.findColumn(edlColumnNames[i]);
        }
        find(edlCommentsName, comments_);
        find(edlCommentsBeforeName, before_);
    }

    EdlRow row(unsigned row) const {
        EdlRow made;
        for (std::size_t i = 0; i < edlComments; ++i) made.event[i] = cell(row, columns_[i]);
        for (unsigned column : comments_) addEdlPiece(made.event[edlComments], cell(row, column));
        for (unsigned column : before_) addEdlPiece(made.before, cell(row, column));
        made.counting = countingOf(row);
        made.blanks = cell(row, blanks_);
        return made;
    }

    /// Whether it is a further line of the event in front.
    bool continues(unsigned row) const {
        const auto field = [&](unsigned at, EdlColumn column) {
            return cell(at, columns_[column]);
        };
        return isEdlContinued(field(row - 1, edlEvent), field(row, edlEvent), field(row, edlKind));
    }

    /// Whether its notes may say a speed.
    bool mayHaveSpeed(unsigned row) const {
        return std::any_of(comments_.begin(), comments_.end(), [&](unsigned column) {
            const std::string_view notes = cell(row, column);
            return notes.find("M2") != notes.npos || notes.find("m2") != notes.npos;
        });
    }

    /// What is said for the row by its own cell, or else of the whole list.
    std::string countingOf(unsigned row) const {
        const std::string_view own = cell(row, counting_);
        return own.empty() ? log_.parameter("FCM") : std::string(own);
    }

private:
    void find(std::string (*nameOf)(std::size_t), std::vector<unsigned>& to) const {
        unsigned column = log_.findColumn(nameOf(0));
        while (column != noColumn) {
            to.push_back(column);
            column = log_.findColumn(nameOf(to.size()));
        }
    }

    std::string_view cell(unsigned row, unsigned column) const {
        return column == noColumn ? std::string_view() : log_.cell(row, column);
    }

    const Log& log_;
    std::array<unsigned, edlColumns> columns_{};
    std::vector<unsigned> comments_;
    std::vector<unsigned> before_;
    unsigned counting_;
    unsigned blanks_;
};

Log readAgain(std::string_view bytes) {
    Log log;
    const std::size_t start = bytes.starts_with(byteOrderMark) ? byteOrderMark.size() : 0;
    Text text{TextBlock::create(bytes.size()), start};
    std::copy(bytes.begin(), bytes.end(), text.block->data());
    readEdl(std::move(text), log);
    return log;
}

std::vector<std::string> linesOf(std::string_view text) {
    std::vector<std::string> lines;
    if (text.empty()) return lines;
    for (std::string_view line : split(text, '\n')) lines.emplace_back(line);
    return lines;
}

// The lines of a piece, each with its end.
std::vector<std::string_view> wholeLines(std::string_view piece) {
    std::vector<std::string_view> lines;
    LineWalk walk(piece);
    std::string_view line;
    std::size_t at = 0;
    while (walk.next(line)) {
        const std::size_t end = piece.size() - walk.rest().size();
        lines.push_back(piece.substr(at, end - at));
        at = end;
    }
    return lines;
}

std::string_view withoutEnd(std::string_view line) {
    line.remove_suffix(endOfLine(line).size());
    return line;
}

// A line "NAME: value" with another value, all else of it as it was.
std::string withValue(std::string_view line, const std::string& value) {
    const std::size_t colon = line.find(':') + 1;
    const std::string_view old = trimmed(line.substr(colon));
    if (old.empty()) return concat(line.substr(0, colon), " ", value);
    const auto begin = static_cast<std::size_t>(old.data() - line.data());
    return concat(line.substr(0, begin), value, line.substr(begin + old.size()));
}

// An event whose own line and names are changed where they stand.
class PatchedEvent {
public:
    PatchedEvent(const EdlRow& came, const EdlRow& now, const MovedSpeeds& speeds,
                 const std::string& end)
        : came_(came), now_(now), speeds_(speeds), end_(end) {}

    std::string make(std::string_view piece) {
        for (std::string_view whole : wholeLines(piece)) take(withoutEnd(whole), endOfLine(whole));
        if (isBehindEvent_) addNewNames();
        return std::move(text_);
    }

    /// The event's own line alone.
    std::string eventLine(std::string_view piece) const {
        for (std::string_view whole : wholeLines(piece)) {
            const std::string_view line = withoutEnd(whole);
            if (const auto fields = edlFields(line))
                return withEdlFields(line, *fields, now_.event);
        }
        return edlEventLine(now_.event);
    }

private:
    void take(std::string_view line, std::string_view end) {
        if (const auto fields = edlFields(line)) {
            add(withEdlFields(line, *fields, now_.event), end);
            isBehindEvent_ = true;
            return;
        }
        if (isBehindEvent_ && (takeName(line, end) || takeSpeed(line, end))) return;
        if (isBehindEvent_ && !isEdlMotion(line)) addNewNames();
        add(line, end);
    }

    // A line that goes takes its end along, as one that comes brings one.
    void add(std::string_view line, std::string_view end) {
        if (lacksEnd_) text_ += end_;
        text_ += concat(line, end);
        lacksEnd_ = end.empty();
    }

    bool takeName(std::string_view line, std::string_view end) {
        for (std::size_t i = 0; i < std::size(edlNames); ++i) {
            const std::string& came = came_.event[edlNames[i].column];
            const std::string& now = now_.event[edlNames[i].column];
            if (isDone_[i] || came == now || edlValue(line, edlNames[i].text) != came) continue;
            isDone_[i] = true;
            if (!now.empty())
                add(withValue(line, now), end);
            else if (hasPlace(edlNames[i]))
                add(line.substr(0, line.find(':') + 1), end);
            return true;
        }
        return false;
    }

    bool takeSpeed(std::string_view line, std::string_view end) {
        const std::string_view bare = trimmed(line);
        for (const auto& [came, now] : speeds_) {
            if (bare != came) continue;
            const auto at = static_cast<std::size_t>(bare.data() - line.data());
            add(concat(line.substr(0, at), now, line.substr(at + bare.size())), end);
            return true;
        }
        return false;
    }

    bool hasPlace(const EdlName& name) const {
        const std::vector<std::string> lines = linesOf(now_.event[edlComments]);
        return std::any_of(lines.begin(), lines.end(),
                           [&](const std::string& line) { return isEdlNamePlace(line, name); });
    }

    // Those that the event did not have.
    void addNewNames() {
        for (std::size_t i = 0; i < std::size(edlNames); ++i) {
            const std::string& now = now_.event[edlNames[i].column];
            const bool isNew = came_.event[edlNames[i].column].empty() && !now.empty();
            if (isDone_[i] || !isNew || hasPlace(edlNames[i])) continue;
            isDone_[i] = true;
            const bool wasOpen = lacksEnd_;
            add(concat("* ", edlNames[i].text, ": ", now), wasOpen ? "" : end_);
        }
    }

    const EdlRow& came_;
    const EdlRow& now_;
    const MovedSpeeds& speeds_;
    const std::string& end_;
    std::array<bool, std::size(edlNames)> isDone_{};
    bool isBehindEvent_ = false;
    bool lacksEnd_ = false;
    std::string text_;
};

// The rows of a log that was read from an edit list, as it stands and as it is to be.
class ChangedRows {
public:
    explicit ChangedRows(const Log& log) : log_(log), now_(log) {}

    /// The speeds that its notes came with go along with its reel and its source, whoever changed
    /// these.
    EdlRow now(unsigned row) {
        EdlRow made = now_.row(row);
        const bool mayMove =
            row < log_.source->rows && recordOf(log_, row).get_changed() && now_.mayHaveSpeed(row);
        if (mayMove) moveSpeeds(came().row(row), made);
        return made;
    }

    /// The events as they stand in the file.
    const EdlRows& came() {
        if (!cameRows_) {
            const Input& input = *log_.source->input;
            PatchedText whole;
            whole.keep({0, log_.source->places.size()});
            cameLog_ = readAgain(whole.beginning(input, SIZE_MAX));
            cameRows_.emplace(cameLog_);
        }
        return *cameRows_;
    }

    const EdlRows& rows() const { return now_; }

private:
    static void moveSpeeds(const EdlRow& came, EdlRow& now) {
        const EdlMove move{came.event[edlSourceIn], now.event[edlSourceIn], 1, 1,
                           came.event[edlReel],     now.event[edlReel]};
        if (move.sourceIn == move.newSourceIn && move.reel == move.newReel) return;
        const std::vector<std::string> old = linesOf(came.event[edlComments]);
        std::string notes;
        for (const std::string& line : linesOf(now.event[edlComments])) {
            const bool isAsItCame = std::find(old.begin(), old.end(), line) != old.end();
            notes += isAsItCame ? movedEdlSpeeds(line, move) : line;
            notes += '\n';
        }
        notes.pop_back();
        now.event[edlComments] = notes;
    }

    const Log& log_;
    EdlRows now_;
    Log cameLog_;
    std::optional<EdlRows> cameRows_;
};

class EdlInPlace : public RowsInPlace {
public:
    explicit EdlInPlace(const Saving& saving)
        : saving_(saving),
          changed_(saving.log),
          end_(bytesOf(saving.log.lineEnd)),
          each_(ListLayout::of(saving.log.parameter(listLayoutName)).each) {
        requireColumns();
    }

    bool reads(std::string_view, unsigned row) override {
        return changed_.came().row(row) == changed_.now(row) && speedsBehind(row).empty();
    }

    bool goesWith(unsigned changed) const override { return now_.mayHaveSpeed(changed); }

    void add(std::string& text, unsigned row, std::string_view piece) override {
        const unsigned own = rows().view->baseIndex(row);
        const EdlRow now = changed_.now(own);
        if (piece.empty()) {
            const std::string line = edlEventLine(now.event);
            requireEvent(own, now.event, line);
            addBlanks(text, own, now);
            text += joined(inOrder(linesOfEvent(now, line)));
            return;
        }
        const EdlRow old = changed_.came().row(own);
        if (own == 0 && old.before != now.before) refuseBefore();
        if (old.blanks != now.blanks) refuse("blank lines stay where they are");
        const std::optional<MovedSpeeds> moved = movedSpeeds(old, now);
        MovedSpeeds speeds = speedsBehind(own);
        if (moved) speeds.insert(speeds.end(), moved->begin(), moved->end());
        PatchedEvent event(old, now, speeds, end_);
        requireEvent(own, now.event, event.eventLine(piece));
        std::string made = now.hasNotesOf(old) || moved ? event.make(piece)
                                                        : rewritten(now, own == 0, event, piece);
        text += withoutEnd(made);
    }

    std::string heading(std::string_view came) override {
        for (const ParameterText& one : changedParameters(saving_.log)) {
            if (isTableFilesOwn(one.name) || isOfHeading(one.name)) continue;
            saving_.losses.add("parameters have no place in this format", inQuotes(one.name));
        }
        std::string text = withHeadingValue(std::string(came), "FCM", firstCounting());
        state_ = headingValue(text, "FCM");
        isInHeading_ = state_.has_value();
        return withHeadingValue(text, "TITLE", saving_.log.parameter("TITLE"));
    }

    // Nothing where other notes than speeds changed, too.
    static std::optional<MovedSpeeds> movedSpeeds(const EdlRow& came, const EdlRow& now) {
        if (came.before != now.before) return {};
        const std::vector<std::string> old = linesOf(came.event[edlComments]);
        const std::vector<std::string> lines = linesOf(now.event[edlComments]);
        if (old.size() != lines.size()) return {};
        MovedSpeeds moved;
        for (std::size_t i = 0; i < old.size(); ++i) {
            if (old[i] == lines[i]) continue;
            if (!isEdlMotion(old[i]) || !isEdlMotion(lines[i])) return {};
            moved.emplace_back(old[i], lines[i]);
        }
        return moved;
    }

    // Speeds of the first line of an event may stand behind its second one.
    MovedSpeeds speedsBehind(unsigned row) {
        if (row == 0 || row >= saving_.log.source->rows || !now_.mayHaveSpeed(row - 1)) return {};
        const EdlRow before = changed_.came().row(row - 1);
        if (before.event[edlEvent] != changed_.came().row(row).event[edlEvent]) return {};
        return movedSpeeds(before, changed_.now(row - 1)).value_or(MovedSpeeds());
    }

    bool saysBetween() const override { return true; }

    // The last line that says how events count is that of the row behind it.
    std::string between(std::string_view came, std::optional<unsigned> row) override {
        const std::vector<std::string_view> lines = wholeLines(came);
        if (!isBegun_ && isInHeading_ && saysCountingAlone(lines)) return begun(row, {});
        if (!row) return passed(came, lines);
        const std::string wanted = now_.countingOf(*row);
        std::string text;
        const std::size_t last = lastCounting(lines);
        for (std::size_t i = 0; i < lines.size(); ++i) {
            const bool isOther = i == last && *edlCounting(withoutEnd(lines[i])) != wanted;
            text += isOther ? concat(withValue(withoutEnd(lines[i]), wanted), endOfLine(lines[i]))
                            : std::string(lines[i]);
        }
        const bool isSaid = last < lines.size();
        const bool isNeeded = state_ != wanted || hasNewLinesBefore(*row);
        if (!isSaid && !wanted.empty() && isNeeded) text += concat("FCM: ", wanted, end_);
        if (isSaid || !wanted.empty()) state_ = wanted;
        return begun(row, text);
    }

private:
    void requireColumns() const {
        const std::vector<Source::Column>& came = saving_.log.source->columns;
        for (unsigned i = 0; i < saving_.log.columnCount(); ++i) {
            const std::string name = saving_.log.columnName(i);
            const unsigned from = saving_.log.source->whereFrom(i);
            const bool isAsItCame = from < came.size() && came[from].name == name;
            if (isAsItCame || (from >= came.size() && isOfEdl(name))) continue;
            refuse(concat("an edit list has no place for a column ", inQuotes(name)));
        }
        if (saving_.log.columnCount() < came.size()) refuse("an edit list keeps its columns");
        if (!std::ranges::is_sorted(saving_.columns))
            refuse("an edit list keeps its columns in their order");
    }

    // Columns that only some lists have may come with events of another.
    static bool isOfEdl(const std::string& column) {
        const std::string& comments = edlColumnNames[edlComments];
        const bool isPiece =
            sameText(column.substr(0, comments.size()), comments) &&
            column.find_first_not_of("0123456789", column.rfind(' ') + 1) == column.npos;
        return isPiece || sameText(column, "FCM") || sameText(column, blankLinesColumn) ||
               sameText(column, edlCommentsBeforeName(0));
    }

    // A line that cannot be read again is no event.
    void requireEvent(unsigned row, const EdlEvent& meant, const std::string& line) const {
        EdlEvent back;
        const bool isRead = parseEdlEvent(line, back);
        for (std::size_t i = 0; i < edlClipName; ++i) {
            const bool isOdd = isRead ? back[i] != meant[i] : !standsInEvent(meant, i);
            if (isOdd) refuseField(row, edlColumnNames[i], meant[i]);
        }
        if (!isRead) refuseField(row, edlColumnNames[edlEvent], meant[edlEvent]);
    }

    // Whether a field is one in an event whose other fields are.
    static bool standsInEvent(const EdlEvent& meant, std::size_t field) {
        EdlEvent sound{"001", "A", "V", "C"};
        std::fill(&sound[edlSourceIn], &sound[edlRecordOut] + 1, "00:00:00:00");
        sound[field] = meant[field];
        EdlEvent back;
        return parseEdlEvent(edlEventLine(sound), back) && back[field] == meant[field];
    }

    [[noreturn]] void refuseField(unsigned row, const std::string& column,
                                  const std::string& text) const {
        throw Failure{unwritable, worded(saving_.log.name,
                                         {saving_.log.lineOf(row), column, inQuotes(text),
                                          "number, reel, track, kind and four timecodes of an "
                                          "event",
                                          "nothing is changed"})};
    }

    [[noreturn]] void refuse(const std::string& why) const {
        throw Failure{unwritable, concat(saving_.output, ": not changed, ", why,
                                         "; write a table file, CSV or ALE of it with ",
                                         saving_.log.opening.terms->saving)};
    }

    [[noreturn]] void refuseBefore() const {
        refuse("comments in front of the first event belong to the heading and are not changed");
    }

    static EdlLines linesOfEvent(const EdlRow& row, const std::string& event) {
        EdlLines lines{linesOf(row.before), linesOf(row.event[edlComments]), event, {}};
        for (std::size_t i = 0; i < lines.names.size(); ++i) {
            lines.names[i] = row.event[edlNames[i].column];
        }
        return lines;
    }

    std::string joined(const std::vector<std::string>& lines) const {
        std::string text;
        for (const std::string& line : lines) {
            if (&line != &lines.front()) text += end_;
            text += line;
        }
        return text;
    }

    // A new event stands as far from the one before as the others of the list, and its further
    // lines stand just behind it.
    void addBlanks(std::string& text, unsigned own, const EdlRow& row) {
        if (!isBegun_ || (row.blanks.empty() && isContinued(own, row))) return;
        const BlankLines blanks = row.blanks.empty() ? each_ : BlankLines(row.blanks);
        for (std::size_t i = 0; i < blanks.before(1); ++i) text += end_;
    }

    bool isContinued(unsigned own, const EdlRow& row) {
        while (at_ < all().size() && all()[at_] != own) ++at_;
        if (at_ == 0 || at_ >= all().size()) return false;
        const EdlRow before = now_.row(all()[at_ - 1]);
        return isEdlContinued(before.event[edlEvent], row.event[edlEvent], row.event[edlKind]);
    }

    // All lines of the event anew, and the blank ones behind it. What stands in front of the first
    // one is the heading.
    std::string rewritten(const EdlRow& now, bool isFirst, const PatchedEvent& event,
                          std::string_view piece) const {
        EdlRow own = now;
        if (isFirst) own.before.clear();
        std::string text = joined(inOrder(linesOfEvent(own, event.eventLine(piece)))) + end_;
        const std::vector<std::string_view> lines = wholeLines(piece);
        std::size_t kept = lines.size();
        while (kept > 0 && trimmed(lines[kept - 1]).empty()) --kept;
        for (; kept < lines.size(); ++kept) text += lines[kept];
        return text;
    }

    // They would be another event's where nothing says how this one counts.
    bool hasNewLinesBefore(unsigned row) const {
        return isBegun_ && row >= saving_.log.source->rows && !now_.row(row).before.empty();
    }

    std::string begun(std::optional<unsigned> row, std::string text) {
        isBegun_ = isBegun_ || row.has_value();
        return text;
    }

    static std::size_t lastCounting(const std::vector<std::string_view>& lines) {
        for (std::size_t i = lines.size(); i > 0; --i) {
            if (edlCounting(withoutEnd(lines[i - 1]))) return i - 1;
        }
        return lines.size();
    }

    static bool saysCountingAlone(const std::vector<std::string_view>& lines) {
        return std::all_of(lines.begin(), lines.end(), [](std::string_view line) {
            return trimmed(line).empty() || edlCounting(withoutEnd(line));
        });
    }

    // In front of a row that goes. Where rows change places it is made anew.
    std::string passed(std::string_view came, const std::vector<std::string_view>& lines) {
        if (!keepsOrder()) return {};
        const std::size_t last = lastCounting(lines);
        if (last < lines.size()) state_ = std::string(*edlCounting(withoutEnd(lines[last])));
        return std::string(came);
    }

    bool keepsOrder() {
        if (!keepsOrder_) keepsOrder_ = std::is_sorted(all().begin(), all().end());
        return *keepsOrder_;
    }

    static bool isOfHeading(std::string_view parameter) {
        return sameText(parameter, "TITLE") || sameText(parameter, "FCM");
    }

    std::string firstCounting() const {
        return all().empty() ? saving_.log.parameter("FCM") : now_.countingOf(all().front());
    }

    // The heading's line of a name, which is the last one.
    static std::size_t lineOf(const std::vector<std::string_view>& lines, const char* name) {
        for (std::size_t i = lines.size(); i > 0; --i) {
            const std::string_view line = withoutMark(lines[i - 1]);
            if (!trimmed(line).starts_with('*') && edlValue(line, name)) return i - 1;
        }
        return lines.size();
    }

    static std::string_view withoutMark(std::string_view line) {
        if (line.starts_with(byteOrderMark)) line.remove_prefix(byteOrderMark.size());
        return line;
    }

    std::string withHeadingValue(const std::string& text, const char* name,
                                 const std::string& value) {
        const std::vector<std::string_view> lines = wholeLines(text);
        const std::size_t at = lineOf(lines, name);
        if (at == lines.size()) return withNewValue(text, name);
        std::string out;
        for (std::size_t i = 0; i < lines.size(); ++i) {
            const bool isOther = i == at && *edlValue(withoutMark(lines[i]), name) != value;
            out += isOther ? concat(withValue(withoutEnd(lines[i]), value), endOfLine(lines[i]))
                           : std::string(lines[i]);
        }
        return out;
    }

    static std::optional<std::string> headingValue(const std::string& text, const char* name) {
        const std::vector<std::string_view> lines = wholeLines(text);
        const std::size_t at = lineOf(lines, name);
        if (at == lines.size()) return {};
        return std::string(*edlValue(withoutMark(lines[at]), name));
    }

    // Behind the title, where there is one, and else in front of all.
    std::string withNewValue(const std::string& text, const char* name) const {
        const std::string value = saving_.log.parameter(name);
        if (value.empty() || wasThere(saving_.log, name)) return text;
        const std::vector<std::string_view> lines = wholeLines(text);
        const std::size_t title = lineOf(lines, "TITLE");
        std::size_t at = text.size() - withoutMark(text).size();
        if (title < lines.size()) {
            const std::string_view line = lines[title];
            if (endOfLine(line).empty()) return concat(text, end_, name, ": ", value);
            at = static_cast<std::size_t>(line.data() + line.size() - text.data());
        }
        return concat(text.substr(0, at), name, ": ", value, end_, text.substr(at));
    }

    Saving saving_;
    ChangedRows changed_;
    const EdlRows& now_ = changed_.rows();
    std::string end_;
    BlankLines each_;
    std::optional<std::string> state_;  // how the next event counts if nothing is said
    bool isInHeading_ = false;          // what is said of all
    bool isBegun_ = false;
    std::size_t at_ = 0;  // of all rows, where the last new one is
    std::optional<bool> keepsOrder_;
};

// Whether a list that was put together is read as it is meant.
class SameEvents {
public:
    SameEvents(const Saving& saving, const std::vector<unsigned>& rows, std::string_view text)
        : saving_(saving), rows_(rows), back_(readBack(text)) {}

    void require() const {
        if (back_.rowCount() != rows_.size()) refuse(counted(back_.rowCount(), "event"));
        ChangedRows meant(saving_.log);
        const EdlRows found(back_);
        for (unsigned i = 0; i < rows_.size(); ++i) {
            require(i, meant.now(rows_[i]), found.row(i));
            tellHalves(i, meant.rows());
        }
    }

private:
    // Of two lines of a transition that stood behind each other one may be left.
    void tellHalves(unsigned i, const EdlRows& log) const {
        const unsigned own = rows_[i];
        const std::size_t line = saving_.log.lineOf(own);
        const bool isBehindIt = i > 0 && rows_[i - 1] + 1 == own;
        if (own > 0 && !isBehindIt && goesOver(own - 1, log))
            tellHalfTransition(saving_.log.name, line, saving_.losses);
        const bool isInFront = i + 1 < rows_.size() && rows_[i + 1] == own + 1;
        if (!isInFront && goesOver(own, log))
            tellLostTransition(saving_.log.name, line, saving_.losses);
    }

    // Whether the row behind one goes over from it, in the file.
    bool goesOver(unsigned own, const EdlRows& log) const {
        return own + std::size_t{1} < saving_.log.source->rows && log.continues(own + 1);
    }

    Log readBack(std::string_view text) const {
        try {
            return readAgain(text);
        } catch (const Failure&) {
            refuse("no edit list: no event and no TITLE are left");
        }
    }

    void require(unsigned i, const EdlRow& meant, const EdlRow& found) const {
        for (std::size_t column = 0; column < edlColumns; ++column) {
            if (meant.event[column] == found.event[column]) continue;
            refuse(i, edlColumnNames[column], meant.event[column], found.event[column]);
        }
        if (meant.counting != found.counting) refuse(i, "FCM", meant.counting, found.counting);
        // What stands in front of all events stays there, whichever is the first.
        const bool isHeading = i == 0 || rows_[i] == 0;
        if (meant.before == found.before || isHeading) return;
        refuse(i, edlCommentsBeforeName(0), meant.before, found.before);
    }

    [[noreturn]] void refuse(unsigned i, const std::string& column, const std::string& meant,
                             const std::string& found) const {
        const std::size_t line = saving_.log.lineOf(rows_[i]);
        throw Failure{
            unwritable,
            concat(worded(saving_.log.name,
                          {line, column,
                           inQuotes(meant) + " is read as " + inQuotes(found) + " in an edit list",
                           "a text that it holds", "nothing is changed"}),
                   whatToDo())};
    }

    [[noreturn]] void refuse(const std::string& found) const {
        throw Failure{unwritable, concat(saving_.log.name, ": not changed, it would be read as ",
                                         found, whatToDo())};
    }

    std::string whatToDo() const {
        return concat("; write a table file, CSV or ALE of it with ",
                      saving_.log.opening.terms->saving);
    }

    const Saving& saving_;
    const std::vector<unsigned>& rows_;
    Log back_;
};

}  // namespace

std::unique_ptr<RowsInPlace> edlInPlace(const Saving& saving) {
    return std::make_unique<EdlInPlace>(saving);
}

void requireSameEvents(const Saving& saving, const InPlace& now, PatchedText& text) {
    SameEvents(saving, now.rows, text.beginning(*saving.log.source->input, SIZE_MAX)).require();
}

}  // namespace vek::formats
