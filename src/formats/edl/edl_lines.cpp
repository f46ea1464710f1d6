#include "formats/edl/edl_lines.h"

#include <algorithm>
#include <utility>

#include <vekdb/formats/timecode.h>
#include <vekdb/host/text_util.h>
#include "formats/failure.h"
#include "formats/text/text_lines.h"
#include "formats/timecode/range_names.h"

namespace vek::formats {

const std::vector<std::string> edlColumnNames = {"Event",           "Reel",
                                                 "Track",           "Kind",
                                                 "Length",          sourceOfEvent.start,
                                                 sourceOfEvent.end, recordOfEvent.start,
                                                 recordOfEvent.end, "Clip Name",
                                                 "To Clip Name",    "Comments"};

namespace {

constexpr std::size_t codesInEvent = 4;
constexpr std::size_t roomInPiece = 4000;
constexpr std::size_t roomInNotedPiece = 1300;
constexpr std::string_view goesOn = "(goes on) ";

using Words = std::vector<std::string_view>;

Words words(std::string_view line) {
    Words out;
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

bool isNumber(std::string_view word) {
    return !word.empty() && std::all_of(word.begin(), word.end(), isAsciiDigit);
}

bool isCode(std::string_view word) {
    return word.size() == 11 && parseTimecode(word).has_value();
}

bool isSameCode(std::string_view a, std::string_view b) {
    const std::optional<Timecode> one = parseTimecode(trimmed(a));
    const std::optional<Timecode> other = parseTimecode(trimmed(b));
    return one && other && one->hours == other->hours && one->minutes == other->minutes &&
           one->seconds == other->seconds && one->frames == other->frames;
}

// "048.0" in tenths of a frame, without its sign.
std::optional<std::int64_t> tenthsOf(std::string_view speed) {
    const std::size_t point = speed.find('.');
    const std::string digits(speed.substr(0, point));
    if (!isNumber(digits) || digits.size() > 3) return {};
    const std::string_view behind = point == speed.npos ? "0" : speed.substr(point + 1);
    if (behind.size() != 1 || !isNumber(behind)) return {};
    return std::stoll(digits) * 10 + (behind[0] - '0');
}

// A speed is in frames of the list's rate; one that plays backwards has a minus.
std::optional<std::string> movedSpeed(std::string_view speed, const EdlMove& move) {
    if (move.nominal == move.newNominal) return std::string(speed);
    const bool isBack = speed.starts_with('-');
    const std::optional<std::int64_t> tenths = tenthsOf(speed.substr(isBack ? 1 : 0));
    if (!tenths) return {};
    const EdlSpeed now = edlSpeed(*tenths * move.newNominal, std::int64_t{10} * move.nominal);
    if (!now.isExact) return {};
    return concat(isBack ? "-" : "", now.text);
}

// The start of a speed's line, up to the speed, with another reel where it has the event's.
std::string withReel(std::string_view until, const EdlMove& move) {
    if (move.reel == move.newReel || !isEdlMotionOf(until, move.reel)) return std::string(until);
    const std::size_t at = until.find_first_not_of(" \t", until.find_first_of("2") + 1);
    const std::string_view behind = until.substr(at + move.reel.size());
    const std::size_t width = move.reel.size() + behind.size();
    std::string out = concat(until.substr(0, at), move.newReel, " ");
    if (move.newReel.size() < width) out.resize(at + width, ' ');
    return out;
}

// The text from one word to another, blanks between them as they are.
std::string_view from(std::string_view first, std::string_view last) {
    return {first.data(), static_cast<std::size_t>(last.data() + last.size() - first.data())};
}

// Words that say the kind, up to `last`: a key is "K", or "K B" for what it is laid over and "K O"
// for its end, with "(F)" behind it where it is faded.
std::size_t kindWords(const Words& parts, std::size_t last) {
    const std::size_t fade = sameText(parts[last], "(F)") && last >= 4 ? 1 : 0;
    const std::string_view tail = parts[last - fade];
    bool isTail = sameText(tail, "B") || sameText(tail, "O");
    bool isKey = isTail && last - fade >= 4 && sameText(parts[last - fade - 1], "K");
    return (isKey ? 2 : 1) + fade;
}

// How many words from the first on are those of a key.
std::size_t keyWords(const Words& parts) {
    std::size_t count = 1;
    const auto isNext = [&](std::string_view word) {
        return count < parts.size() && sameText(parts[count], word);
    };
    if (isNext("B") || isNext("O")) ++count;
    return isNext("(F)") ? count + 1 : count;
}

// Blanks in front of a field, fewer or more of them as it stands ahead of its place or behind.
std::string blanksFor(std::string_view came, std::ptrdiff_t& ahead) {
    std::string out(came);
    if (ahead == 0 || came.find_first_not_of(' ') != came.npos) return out;
    const auto old = static_cast<std::ptrdiff_t>(came.size());
    const std::ptrdiff_t size =
        std::max<std::ptrdiff_t>(old - ahead, std::min<std::ptrdiff_t>(old, 1));
    ahead -= old - size;
    out.resize(static_cast<std::size_t>(size), ' ');
    return out;
}

std::string padded(std::string_view text, std::size_t width) {
    std::string out(text);
    if (out.size() < width) out.resize(width, ' ');
    return out;
}

// The longest start of a text that fits, cut at a character and, where there is one, in front of
// a letter and behind one, as blanks at the ends of a cell may be lost.
std::size_t cutPlace(std::string_view text, std::size_t room) {
    std::size_t end = room;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
    std::size_t best = end;
    while (best > end / 2 && (isAsciiSpace(text[best]) || isAsciiSpace(text[best - 1]))) --best;
    if (best == end / 2) best = end;
    while (best > 0 && (static_cast<unsigned char>(text[best]) & 0xC0) == 0x80) --best;
    return best == 0 ? room : best;
}

// A table file changes some texts, and notes them in a parameter: such pieces must have room
// there, where a byte may take three.
std::size_t roomFor(std::string_view comments) {
    if (comments.find('\\') != std::string_view::npos) return roomInNotedPiece;
    for (std::string_view line : split(comments, '\n')) {
        if (line.size() > roomInPiece) return roomInNotedPiece;
    }
    return roomInPiece;
}

// A line in pieces that each have room.
void addLine(std::vector<std::string>& pieces, std::string_view line, std::size_t room) {
    bool fits = !pieces.empty() && pieces.back().size() + 1 + line.size() <= room;
    if (fits) {
        pieces.back() += concat("\n", line);
        return;
    }
    std::string start;
    while (line.size() + start.size() > room) {
        std::size_t cut = cutPlace(line, room - goesOn.size());
        pieces.push_back(concat(start, line.substr(0, cut)));
        line.remove_prefix(cut);
        start = goesOn;
    }
    pieces.push_back(concat(start, line));
}

std::string numbered(const std::string& name, std::size_t piece) {
    return piece == 0 ? name : concat(name, " ", std::to_string(piece + 1));
}

// A name goes where its place was kept.
std::string withName(const std::string& line, std::array<std::string, std::size(edlNames)>& names) {
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (names[i].empty() || !isEdlNamePlace(line, edlNames[i])) continue;
        return concat(line, " ", std::exchange(names[i], {}));
    }
    return line;
}

}  // namespace

std::optional<EdlFields> edlFields(std::string_view line) {
    Words parts = words(line);
    if (parts.size() < 8 || !startsWithNumber(parts[0])) return {};
    std::size_t codes = parts.size() - codesInEvent;
    if (!std::all_of(parts.begin() + static_cast<std::ptrdiff_t>(codes), parts.end(), isCode)) {
        return {};
    }
    bool hasLength = codes >= 5 && isNumber(parts[codes - 1]);
    std::size_t kindEnd = hasLength ? codes - 2 : codes - 1;
    std::size_t kind = kindEnd + 1 - kindWords(parts, kindEnd);
    if (kind < 3 || isNumber(parts[kind])) return {};
    EdlFields made{parts[0], from(parts[1], parts[kind - 2]), parts[kind - 1],
                   from(parts[kind], parts[kindEnd])};
    if (hasLength) made[edlLength] = parts[codes - 1];
    for (std::size_t i = 0; i < codesInEvent; ++i) made[edlSourceIn + i] = parts[codes + i];
    return made;
}

// The words of a kind have one blank between them.
bool parseEdlEvent(std::string_view line, EdlEvent& made) {
    const std::optional<EdlFields> fields = edlFields(line);
    if (!fields) return false;
    made = {};
    std::copy(fields->begin(), fields->end(), made.begin());
    made[edlKind].clear();
    for (std::string_view word : words((*fields)[edlKind])) {
        made[edlKind] += concat(made[edlKind].empty() ? "" : " ", word);
    }
    return true;
}

std::string withEdlFields(std::string_view line, const EdlFields& came, const EdlEvent& now) {
    EdlEvent old;
    parseEdlEvent(line, old);
    std::string out;
    std::size_t at = 0;
    std::ptrdiff_t ahead = 0;  // of where the old text stood
    for (std::size_t i = 0; i < came.size(); ++i) {
        if (i == edlLength && came[i].empty()) {
            if (now[i].empty()) continue;
            const std::string made = concat(
                padded("", 5 - std::min<std::size_t>(4, now[edlKind].size())), padded(now[i], 3));
            out += made;
            ahead += static_cast<std::ptrdiff_t>(made.size());
            continue;
        }
        const auto begin = static_cast<std::size_t>(came[i].data() - line.data());
        out += blanksFor(line.substr(at, begin - at), ahead);
        const std::string_view text = now[i] == old[i] ? came[i] : std::string_view(now[i]);
        out += text;
        ahead +=
            static_cast<std::ptrdiff_t>(text.size()) - static_cast<std::ptrdiff_t>(came[i].size());
        at = begin + came[i].size();
    }
    return concat(out, line.substr(at));
}

std::string edlEventLine(const EdlEvent& event) {
    std::string line =
        concat(event[edlEvent], "  ", padded(event[edlReel], 8), " ", padded(event[edlTrack], 5),
               " ", padded(event[edlKind], 4), " ", padded(event[edlLength], 3));
    for (std::size_t i = 0; i < codesInEvent; ++i) line += concat(" ", event[edlSourceIn + i]);
    return line;
}

std::optional<std::string_view> edlValue(std::string_view line, std::string_view name) {
    std::string_view rest = trimmed(line);
    if (rest.starts_with('*')) rest = trimmed(rest.substr(1));
    if (!sameText(rest.substr(0, name.size()), name)) return {};
    rest = trimmed(rest.substr(name.size()));
    if (!rest.starts_with(':')) return {};
    return trimmed(rest.substr(1));
}

std::optional<std::string_view> edlCounting(std::string_view line) {
    if (trimmed(line).starts_with('*')) return {};
    return edlValue(line, "FCM");
}

bool isEdlSplit(std::string_view line) {
    return !trimmed(line).starts_with('*') && edlValue(line, "SPLIT").has_value();
}

std::string_view edlSplitDelay(std::string_view line) {
    const Words parts = words(line.substr(line.find('=') + 1));
    return line.find('=') == line.npos || parts.empty() ? std::string_view() : parts.front();
}

std::string_view edlMarkerTime(std::string_view line) {
    const Words parts = words(edlValue(line, "LOC").value_or(""));
    const bool isTime = !parts.empty() && startsWithNumber(parts[0]) &&
                        parts[0].find_first_of(":;") != parts[0].npos;
    return isTime ? parts[0] : std::string_view();
}

bool isEdlMotion(std::string_view line) {
    line = trimmed(line);
    return line.size() > 2 && sameText(line.substr(0, 2), "M2") && isAsciiSpace(line[2]);
}

bool isEdlMotionOf(std::string_view line, std::string_view reel) {
    std::string_view rest = trimmed(trimmed(line).substr(2));
    bool isEnd = rest.size() == reel.size() ||
                 (rest.size() > reel.size() && isAsciiSpace(rest[reel.size()]));
    return isEnd && sameText(rest.substr(0, reel.size()), reel);
}

EdlSpeed edlSpeed(std::int64_t frames, std::int64_t over) {
    if (over <= 0 || frames < 0 || frames > INT64_MAX / 20) return {};
    const std::int64_t tenths = (frames * 20 + over) / (2 * over);
    if (tenths > 9999) return {};
    std::string digits = std::to_string(tenths);
    digits.insert(0, 4 - digits.size(), '0');
    return {concat(digits.substr(0, 3), ".", digits.substr(3)), tenths * over == frames * 10};
}

std::string edlMotionLine(const EdlEvent& event, const std::string& speed) {
    return concat("M2   ", padded(event[edlReel], 8), "       ", padded(speed, 20), " ",
                  event[edlSourceIn]);
}

std::optional<std::int64_t> edlMotionTenths(std::string_view line) {
    const Words parts = words(line);
    if (parts.size() < 3) return {};
    const std::string_view speed = parts[parts.size() - 2];
    const bool isBack = speed.starts_with('-');
    const std::optional<std::int64_t> tenths = tenthsOf(speed.substr(isBack ? 1 : 0));
    return tenths && isBack ? std::optional(-*tenths) : tenths;
}

std::optional<std::string> movedEdlMotion(std::string_view line, const EdlMove& move) {
    const Words parts = words(line);
    if (parts.size() < 3) return {};
    const bool isOfTime = isSameCode(parts.back(), move.sourceIn);
    const bool movesTime = move.newSourceIn != move.sourceIn || move.nominal != move.newNominal;
    if (movesTime && !isOfTime) return {};
    const std::string_view speed = parts[parts.size() - 2];
    const std::optional<std::string> now = movedSpeed(speed, move);
    if (!now) return {};
    const std::string_view until = from(line.substr(0, 0), speed.substr(0, 0));
    const std::string_view between = from(speed.substr(speed.size()), parts.back().substr(0, 0));
    return concat(withReel(until, move), *now, between,
                  movesTime ? move.newSourceIn : parts.back());
}

std::string movedEdlSpeeds(std::string_view notes, const EdlMove& move) {
    std::string moved;
    for (std::string_view line : split(notes, '\n')) {
        const std::optional<std::string> now =
            isEdlMotion(line) ? movedEdlMotion(line, move) : std::nullopt;
        moved += now ? std::string_view(*now) : line;
        moved += '\n';
    }
    moved.pop_back();
    return moved;
}

bool isEdlKind(std::string_view text) {
    return sameText(text, "C") || isEdlTransition(text);
}

bool isEdlTransition(std::string_view kind) {
    const Words parts = words(kind);
    if (parts.empty()) return false;
    if (sameText(parts[0], "K")) return keyWords(parts) == parts.size();
    if (parts.size() > 1) return false;
    const bool isWipe = sameText(kind.substr(0, 1), "W") && isNumber(parts[0].substr(1));
    return isWipe || sameText(parts[0], "D");
}

bool isEdlContinued(std::string_view numberBefore, std::string_view number, std::string_view kind) {
    return !number.empty() && number == numberBefore && isEdlTransition(kind);
}

bool isOddEdlEvent(std::string_view line) {
    const Words parts = words(line);
    if (parts.size() < 4) return false;
    const bool endsInCodes = std::all_of(parts.end() - codesInEvent, parts.end(), isCode);
    return startsWithNumber(parts[0]) || (endsInCodes && !parts[0].starts_with('*'));
}

std::vector<std::string> edlPieces(std::string_view comments) {
    if (comments.size() <= roomInPiece) return {std::string(comments)};
    std::vector<std::string> pieces;
    std::size_t room = roomFor(comments);
    for (std::string_view line : split(comments, '\n')) addLine(pieces, line, room);
    return pieces;
}

void addEdlPiece(std::string& comments, std::string_view piece) {
    if (piece.empty()) return;
    bool isRest = !comments.empty() && piece.starts_with(goesOn);
    if (!comments.empty() && !isRest) comments += '\n';
    comments += piece.substr(isRest ? goesOn.size() : 0);
}

std::string edlCommentsName(std::size_t piece) {
    return numbered(edlColumnNames[edlComments], piece);
}

std::string edlCommentsBeforeName(std::size_t piece) {
    return numbered(edlColumnNames[edlComments] + " Before", piece);
}

bool isEdlNamePlace(std::string_view line, const EdlName& name) {
    const std::optional<std::string_view> value = edlValue(line, name.text);
    return value && value->empty();
}

std::vector<std::string> inOrder(const EdlLines& lines) {
    std::vector<std::string> out = lines.before;
    const std::vector<std::string>& comments = lines.comments;
    auto at = comments.begin();
    for (; at != comments.end() && isEdlSplit(*at); ++at) out.push_back(*at);
    out.push_back(lines.event);
    for (; at != comments.end() && isEdlMotion(*at); ++at) out.push_back(*at);
    std::array<std::string, std::size(edlNames)> names = lines.names;
    for (std::size_t i = 0; i < names.size(); ++i) {
        const auto isPlace = [&](const std::string& line) {
            return isEdlNamePlace(line, edlNames[i]);
        };
        if (names[i].empty() || std::any_of(at, comments.end(), isPlace)) continue;
        out.push_back(concat("* ", edlNames[i].text, ": ", std::exchange(names[i], {})));
    }
    for (; at != comments.end(); ++at) out.push_back(withName(*at, names));
    return out;
}

}  // namespace vek::formats
