#include "formats/timeline/edit_events.h"

#include <algorithm>
#include <charconv>

#include <vekdb/host/text_util.h>
#include "formats/edl/edl_lines.h"
#include "formats/edl/kinds_on_sheet.h"
#include "formats/text/text_lines.h"
#include "formats/timecode/clip_columns.h"
#include "formats/timecode/timeline_columns.h"
#include "formats/writing/sheet_facts.h"

namespace vek::formats {

namespace {

constexpr std::string_view colors[] = {"RED",   "GREEN", "BLUE",   "CYAN",   "MAGENTA", "YELLOW",
                                       "WHITE", "BLACK", "ORANGE", "PURPLE", "PINK",    "LAVENDER"};

bool isColor(std::string_view word) {
    return std::any_of(std::begin(colors), std::end(colors),
                       [&](std::string_view color) { return sameText(word, color); });
}

std::string_view firstWord(std::string_view text) {
    return text.substr(0, std::min(text.find_first_of(" \t"), text.size()));
}

}  // namespace

std::optional<EventMark> eventMark(std::string_view line) {
    EventMark mark;
    mark.time = edlMarkerTime(line);
    if (mark.time.empty()) return {};
    const auto behind = static_cast<std::size_t>(mark.time.data() + mark.time.size() - line.data());
    mark.text = trimmed(line.substr(behind));
    const std::string_view word = firstWord(mark.text);
    if (!isColor(word)) return mark;
    mark.color = word;
    mark.text = trimmed(mark.text.substr(word.size()));
    return mark;
}

std::string withEventMark(std::string_view line, const EventMark& now) {
    const std::optional<EventMark> came = eventMark(line);
    if (!came) return std::string(line);
    const auto at = static_cast<std::size_t>(came->time.data() - line.data());
    if (came->color == now.color && came->text == now.text) {
        return concat(line.substr(0, at), now.time, line.substr(at + came->time.size()));
    }
    return concat(line.substr(0, at), now.time, now.color.empty() ? "" : " ", now.color,
                  now.text.empty() ? "" : " ", now.text);
}

std::string transitionTypeOf(std::string_view kind) {
    return sameText(kind, "D") ? "SMPTE_Dissolve" : "SMPTE_Wipe";
}

EditEvents::EditEvents(const Sheet& sheet)
    : sheet_(sheet),
      event_(placeNamed(sheet, edlColumnNames[edlEvent])),
      reel_(placeNamed(sheet, edlColumnNames[edlReel])),
      kind_(isTimeline(sheet.log) ? noColumn : placeOfEdlKinds(sheet)),
      length_(placeNamed(sheet, edlColumnNames[edlLength])),
      comments_(placeNamed(sheet, edlCommentsName(0))) {}

std::string_view EditEvents::cell(unsigned row, unsigned column) const {
    return column == noColumn ? std::string_view() : trimmed(sheet_.cell(row, column));
}

std::string_view EditEvents::kind(unsigned row) const {
    const std::string_view own = cell(row, kind_);
    return own.empty() ? "C" : own;
}

bool EditEvents::isKey(unsigned row) const {
    return areThere() && asciiLower(kind(row).front()) == 'k';
}

std::optional<std::int64_t> EditEvents::transition(unsigned row) const {
    if (!areThere() || !isEdlTransition(kind(row)) || isKey(row)) return {};
    const std::string_view text = cell(row, length_);
    std::int64_t frames = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), frames);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    return isNumber && frames >= 0 && frames < 100'000 ? std::optional(frames) : std::nullopt;
}

bool EditEvents::isContinued(unsigned row) const {
    return areThere() && row > 0 && row < sheet_.rowCount() &&
           isEdlContinued(cell(row - 1, event_), cell(row, event_), kind(row));
}

bool EditEvents::isBlack(unsigned row) const {
    return areThere() && sameText(cell(row, reel_), "BL");
}

std::optional<std::int64_t> EditEvents::speed(unsigned row) const {
    if (!areThere() || comments_ == noColumn) return {};
    const std::string_view notes = sheet_.cell(row, comments_);
    if (notes.find("M2") == notes.npos && notes.find("m2") == notes.npos) return {};
    for (std::string_view line : split(notes, '\n')) {
        if (isEdlMotion(line) && isEdlMotionOf(line, cell(row, reel_)))
            return edlMotionTenths(line);
    }
    return {};
}

std::vector<EventMark> EditEvents::marks(unsigned row) const {
    std::vector<EventMark> marks;
    if (!areThere() || comments_ == noColumn) return marks;
    const std::string_view notes = sheet_.cell(row, comments_);
    if (notes.find(':') == notes.npos) return marks;
    std::size_t number = 0;
    for (std::string_view line : split(notes, '\n')) {
        std::optional<EventMark> mark = eventMark(line);
        if (mark) mark->line = number;
        if (mark) marks.push_back(*mark);
        ++number;
    }
    return marks;
}

std::vector<std::string> EditEvents::tracks(std::string_view track) const {
    struct Entry {
        const char* track;
        std::vector<std::string> tracks;
    };
    static const Entry entries[] = {{"B", {"V", "A"}},
                                    {"A/V", {"V", "A"}},
                                    {"A2/V", {"V", "A2"}},
                                    {"AA/V", {"V", "A", "A2"}},
                                    {"AA", {"A", "A2"}}};
    for (const Entry& entry : entries) {
        if (areThere() && sameText(track, entry.track)) return entry.tracks;
    }
    return {std::string(track)};
}

}  // namespace vek::formats
