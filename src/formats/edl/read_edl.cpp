#include "formats/edl/edl_lines.h"
#include "formats/reading/readers.h"
#include "formats/reading/table_builder.h"
#include "formats/text/name_list.h"
#include "formats/text/text_lines.h"

namespace vek::formats {

namespace {

// An event, what belongs to it, and the line it stands on; 0 while there is none.
struct OpenEvent {
    EdlEvent cells;
    std::string counting;
    std::size_t line = 0;

    bool isOpen() const { return line != 0; }
};

void addComment(std::string& cell, std::string_view line) {
    if (!cell.empty()) cell += '\n';
    cell += trimmed(line);
}

class EdlReader {
public:
    EdlReader(std::string_view text, Log& log)
        : walk_(text), log_(log), builder_(log, edlColumnNames) {
        for (const std::string& name : edlColumnNames) columns_.place(name);
    }

    void read() {
        std::string_view line;
        while (walk_.next(line)) {
            if (!trimmed(line).empty()) take(line);
        }
        end();
        if (log_.rowCount() == 0 && log_.parameter("TITLE").empty()) refuse();
        builder_.setColumns({columns_.begin(), columns_.end()});
        builder_.finish();
        log_.lineEnd = walk_.lineEnd();
    }

private:
    void take(std::string_view line) {
        EdlEvent next;
        if (parseEdlEvent(line, next))
            begin(std::move(next));
        else if (!takeHeading(line) && !takeCounting(line) && !takeClipName(line))
            takeComment(line);
    }

    // The line before stays at hand: speeds of both may follow the two lines of a transition.
    void begin(EdlEvent next) {
        store(before_);
        before_ = std::move(open_);
        open_ = {std::move(next), counting_, walk_.number()};
        open_.cells[edlComments].swap(splits_);
        if (!waiting_.empty()) addComment(open_.cells[edlComments], waiting_);
        waiting_.clear();
        isBehindOddEvent_ = false;
    }

    bool isBehindFirst() const { return open_.isOpen(); }

    bool takeHeading(std::string_view line) {
        if (isBehindFirst()) return false;
        for (const char* name : {"TITLE", "FCM"}) {
            std::optional<std::string_view> value = edlValue(line, name);
            if (!value) continue;
            builder_.addParameter(walk_.number(), name, *value);
            return true;
        }
        return false;
    }

    // Counting that changes between two events, for all behind it.
    bool takeCounting(std::string_view line) {
        std::optional<std::string_view> value = edlCounting(line);
        if (value) counting_ = *value;
        return value.has_value();
    }

    // What follows an event that could not be read names no other event's clips.
    bool takeClipName(std::string_view line) {
        if (!open_.isOpen() || isBehindOddEvent_) return false;
        return takeClipName(line, "FROM CLIP NAME", open_.cells[edlClipName]) ||
               takeClipName(line, "TO CLIP NAME", open_.cells[edlToClipName]);
    }

    static bool takeClipName(std::string_view line, const char* name, std::string& cell) {
        std::optional<std::string_view> value = edlValue(line, name);
        if (!value || !cell.empty()) return false;
        cell = *value;
        return true;
    }

    void takeComment(std::string_view line) {
        if (isEdlSplit(line)) return addComment(splits_, line);
        if (isOddEdlEvent(line)) reportOddEvent(line);
        addComment(commentsFor(line), line);
    }

    std::string& commentsFor(std::string_view line) {
        if (!open_.isOpen()) return waiting_;
        bool isOfBefore = isEdlMotion(line) && before_.isOpen() &&
                          before_.cells[edlEvent] == open_.cells[edlEvent] &&
                          isEdlMotionOf(line, before_.cells[edlReel]) &&
                          !isEdlMotionOf(line, open_.cells[edlReel]);
        return (isOfBefore ? before_ : open_).cells[edlComments];
    }

    void reportOddEvent(std::string_view line) {
        isBehindOddEvent_ = true;
        log_.report([&]() -> Problem {
            return {walk_.number(), "", inQuotes(trimmed(line)),
                    "number, reel, track, kind and four timecodes",
                    "the line is kept as a comment"};
        });
    }

    void store(OpenEvent& event) {
        if (!event.isOpen()) return;
        std::vector<std::string> pieces = edlPieces(event.cells[edlComments]);
        event.cells[edlComments] = pieces[0];
        std::vector<std::string_view> cells(event.cells.begin(), event.cells.end());
        for (std::size_t i = 1; i < pieces.size(); ++i) put(edlCommentsName(i), pieces[i], cells);
        if (!event.counting.empty()) put("FCM", event.counting, cells);
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
        std::string& last = open_.isOpen() ? open_.cells[edlComments] : waiting_;
        if (!splits_.empty()) addComment(last, splits_);
        store(before_);
        store(open_);
        if (waiting_.empty()) return;
        std::vector<std::string> pieces = edlPieces(waiting_);
        for (std::size_t i = 0; i < pieces.size(); ++i) {
            builder_.addParameter(0, edlCommentsName(i), pieces[i]);
        }
    }

    [[noreturn]] void refuse() const {
        throw Failure{unreadable,
                      log_.name,
                      {1, "", "no event and no TITLE", "an edit list of CMX 3600 form", ""}};
    }

    LineWalk walk_;
    Log& log_;
    TableBuilder builder_;
    NameList columns_;
    OpenEvent before_;
    OpenEvent open_;
    std::string counting_;  // that changed behind the first event
    std::string splits_;    // for the event behind them
    std::string waiting_;   // in front of the first event
    bool isBehindOddEvent_ = false;
};

}  // namespace

void readEdl(std::string_view text, Log& log) {
    EdlReader(text, log).read();
}

}  // namespace vek::formats
