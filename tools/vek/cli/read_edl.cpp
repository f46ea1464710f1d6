#include <array>
#include <optional>

#include "host/text_util.h"
#include "tools/vek/cli/readers.h"
#include "tools/vek/cli/timecode.h"

namespace vek {

namespace {

enum Column {
    event,
    reel,
    track,
    kind,
    length,
    sourceIn,
    sourceOut,
    recordIn,
    recordOut,
    clipName,
    toClipName,
    comments,
    columns
};

const std::vector<std::string> columnNames = {
    "Event",      "Reel",      "Track",      "Kind",      "Length",       "Source In",
    "Source Out", "Record In", "Record Out", "Clip Name", "To Clip Name", "Comments"};

using Event = std::array<std::string, columns>;

std::vector<std::string_view> words(std::string_view line) {
    std::vector<std::string_view> out;
    while (!(line = trimmed(line)).empty()) {
        std::size_t end = 0;
        while (end < line.size() && !isAsciiSpace(line[end])) ++end;
        out.push_back(line.substr(0, end));
        line.remove_prefix(end);
    }
    return out;
}

bool startsWithNumber(std::string_view word) {
    return !word.empty() && isAsciiDigit(word.front());
}

std::string joined(const std::vector<std::string_view>& parts, std::size_t from, std::size_t to) {
    std::string out;
    for (std::size_t i = from; i < to; ++i) out += concat(out.empty() ? "" : " ", parts[i]);
    return out;
}

// Number, reel, track, kind, perhaps a length, and four timecodes. A reel may hold blanks. False
// for other lines.
bool parseEvent(std::string_view line, Event& made) {
    std::vector<std::string_view> parts = words(line);
    if (parts.size() < 8 || !startsWithNumber(parts[0])) return false;
    std::size_t codes = parts.size() - 4;
    for (std::size_t i = codes; i < parts.size(); ++i) {
        if (parts[i].size() != 11 || !parseTimecode(parts[i])) return false;
    }
    bool hasLength = codes >= 5 && startsWithNumber(parts[codes - 1]);
    std::size_t kindAt = hasLength ? codes - 2 : codes - 1;
    if (kindAt < 3) return false;
    made = {};
    made[event] = parts[0];
    made[reel] = joined(parts, 1, kindAt - 1);
    made[track] = parts[kindAt - 1];
    made[kind] = parts[kindAt];
    if (hasLength) made[length] = parts[codes - 1];
    for (std::size_t i = 0; i < 4; ++i) made[sourceIn + i] = parts[codes + i];
    return true;
}

// The text behind "NAME:", with or without the star of a comment; nothing for other lines.
std::optional<std::string_view> valueOf(std::string_view line, std::string_view name) {
    std::string_view rest = trimmed(line);
    if (rest.starts_with('*')) rest = trimmed(rest.substr(1));
    if (!sameText(rest.substr(0, name.size()), name)) return {};
    rest = trimmed(rest.substr(name.size()));
    if (!rest.starts_with(':')) return {};
    return trimmed(rest.substr(1));
}

class EdlReader {
public:
    EdlReader(std::string_view text, Log& log)
        : walk_(text), log_(log), builder_(log, columnNames) {}

    void read() {
        std::string_view line;
        while (walk_.next(line)) {
            if (!trimmed(line).empty()) take(line);
        }
        store();
        if (!waiting_.empty()) builder_.addParameter(0, "Comments", waiting_);
        if (log_.rowCount() == 0 && log_.parameter("TITLE").empty()) refuse();
        builder_.finish();
        log_.endsLinesWithCr = walk_.sawCr();
    }

private:
    void take(std::string_view line) {
        Event next;
        if (parseEvent(line, next)) {
            store();
            open_ = std::move(next);
            open_[comments].swap(waiting_);
            openLine_ = walk_.number();
        } else if (!takeHeading(line) && !takeClipName(line)) {
            reportOddEvent(line);
            addComment(isOpen() ? open_[comments] : waiting_, line);
        }
    }

    // Only in front of the first event: behind it, counting that changes is a comment there.
    bool takeHeading(std::string_view line) {
        if (isOpen() || log_.rowCount() > 0) return false;
        for (const char* name : {"TITLE", "FCM"}) {
            std::optional<std::string_view> value = valueOf(line, name);
            if (!value) continue;
            builder_.addParameter(walk_.number(), name, *value);
            return true;
        }
        return false;
    }

    bool takeClipName(std::string_view line) {
        if (!isOpen()) return false;
        return takeClipName(line, "FROM CLIP NAME", open_[clipName]) ||
               takeClipName(line, "TO CLIP NAME", open_[toClipName]);
    }

    static bool takeClipName(std::string_view line, const char* name, std::string& cell) {
        std::optional<std::string_view> value = valueOf(line, name);
        if (!value || !cell.empty()) return false;
        cell = *value;
        return true;
    }

    void reportOddEvent(std::string_view line) {
        std::vector<std::string_view> parts = words(line);
        if (parts.size() < 4 || !startsWithNumber(parts[0])) return;
        log_.problems.push_back({walk_.number(), "", inQuotes(trimmed(line)),
                                 "number, reel, track, kind and four timecodes",
                                 "the line is kept as a comment"});
    }

    static void addComment(std::string& cell, std::string_view line) {
        if (!cell.empty()) cell += '\n';
        cell += trimmed(line);
    }

    void store() {
        if (isOpen()) builder_.addRow(openLine_, {open_.begin(), open_.end()});
        open_ = {};
        openLine_ = 0;
    }

    bool isOpen() const { return openLine_ != 0; }

    [[noreturn]] void refuse() const {
        throw Failure{unreadable, log_.name +
                                      ":1: no event and no TITLE, expected an edit list "
                                      "of CMX 3600 form"};
    }

    LineWalk walk_;
    Log& log_;
    TableBuilder builder_;
    Event open_;
    std::size_t openLine_ = 0;  // 0 while no event is open
    std::string waiting_;
};

}  // namespace

void readEdl(std::string_view text, Log& log) {
    EdlReader(text, log).read();
}

}  // namespace vek
