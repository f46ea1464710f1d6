#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The lines of CMX 3600 edit lists, as the reader and the writer both know them.
namespace vek::formats {

/// The columns that every edit list has. Those that only some have are FCM, how an event counts,
/// Comments Before, what stands between that and the event, and Comments 2, 3, ..., which go on
/// where Comments is full. Where a clip's name does not stand at once behind the event Comments
/// hold "* FROM CLIP NAME:" without the name in its place.
enum EdlColumn {
    edlEvent,
    edlReel,
    edlTrack,
    edlKind,
    edlLength,
    edlSourceIn,
    edlSourceOut,
    edlRecordIn,
    edlRecordOut,
    edlClipName,
    edlToClipName,
    edlComments,
    edlColumns
};

extern const std::vector<std::string> edlColumnNames;

using EdlEvent = std::array<std::string, edlColumns>;

/// Number, reel, track, kind ("C", "D", "W001", "K B", "K", "K O"), perhaps a length, and four
/// timecodes. A reel may hold blanks. False for other lines.
bool parseEdlEvent(std::string_view line, EdlEvent& made);

/// Where the fields of such a line stand in it, up to the last timecode; a length that is not there
/// is empty.
using EdlFields = std::array<std::string_view, edlRecordOut + 1>;
std::optional<EdlFields> edlFields(std::string_view line);
/// The line with other fields, each at its old place where the blanks around it leave room.
std::string withEdlFields(std::string_view line, const EdlFields& came, const EdlEvent& now);

/// The event as a line.
std::string edlEventLine(const EdlEvent& event);

/// The text behind "NAME:", with or without the star of a comment; nothing for other lines.
std::optional<std::string_view> edlValue(std::string_view line, std::string_view name);

/// The text of "FCM: ...", which tells how the events behind it count; never that of a comment.
std::optional<std::string_view> edlCounting(std::string_view line);

/// "SPLIT: AUDIO DELAY= ...", which stands in front of the event that it is about.
bool isEdlSplit(std::string_view line);
/// By how much, "00:00:00:12", where it lies in the line; "" where it does not say so.
std::string_view edlSplitDelay(std::string_view line);

/// The record's time in a marker's note, "* LOC: 10:00:02:12 RED ...", where it lies in the line;
/// "" for other lines.
std::string_view edlMarkerTime(std::string_view line);

/// Whether an "M2" line, a speed, is about this reel.
bool isEdlMotionOf(std::string_view line, std::string_view reel);
bool isEdlMotion(std::string_view line);

/// The speed at which so many frames in `over` parts of a second are played, as an M2 line has it:
/// "048.0"; "" for one of more than three digits. `isExact` where it is no other number.
struct EdlSpeed {
    std::string text;
    bool isExact = false;
};
EdlSpeed edlSpeed(std::int64_t frames, std::int64_t over);
/// The line of an event that is played so.
std::string edlMotionLine(const EdlEvent& event, const std::string& speed);

/// The speed that such a line says, in tenths of a frame, below 0 for one that is played backwards;
/// nothing for a line that says none.
std::optional<std::int64_t> edlMotionTenths(std::string_view line);

/// Times of an event before and after a change, and the whole frames a second that they count.
struct EdlMove {
    std::string_view sourceIn;
    std::string_view newSourceIn;
    int nominal;
    int newNominal;
    std::string_view reel = {};
    std::string_view newReel = {};
};
/// A speed's line as the change leaves it, its fields at their places. Another event's reel in it
/// stays. Nothing for one that is about another time than the event's where that changes, and for
/// a speed that tenths of a frame cannot say.
std::optional<std::string> movedEdlMotion(std::string_view line, const EdlMove& move);

/// Notes with the speeds of an event as a change leaves them; other lines stay, and so do speeds
/// that cannot go along. This is the one rule for whoever changes the reel or the source of one.
std::string movedEdlSpeeds(std::string_view notes, const EdlMove& move);

/// Whether a text is a kind of event that all lists have: a cut, a dissolve, a wipe or a key.
bool isEdlKind(std::string_view text);
/// Whether such a kind goes over from another clip.
bool isEdlTransition(std::string_view kind);

/// Whether an event is the further line of the one before, as both have a number: what is gone over
/// to stands behind what it comes from.
bool isEdlContinued(std::string_view numberBefore, std::string_view number, std::string_view kind);

/// Whether a line begins with a number, or ends in four timecodes, and yet is no event.
bool isOddEdlEvent(std::string_view line);

/// Comments cut where lines end, so that each piece has room in a table file. A line that is
/// longer itself is cut, and goes on behind a mark.
std::vector<std::string> edlPieces(std::string_view comments);
/// The way back, piece by piece.
void addEdlPiece(std::string& comments, std::string_view piece);

/// "Comments", "Comments 2", ...; "Comments Before", "Comments Before 2", ...
std::string edlCommentsName(std::size_t piece);
std::string edlCommentsBeforeName(std::size_t piece);

/// The two notes that name clips, in the order in which they are written, and their columns.
struct EdlName {
    const char* text;
    EdlColumn column;
};
constexpr EdlName edlNames[] = {{"FROM CLIP NAME", edlClipName}, {"TO CLIP NAME", edlToClipName}};

/// Whether a line of comments only keeps the place of a clip's name.
bool isEdlNamePlace(std::string_view line, const EdlName& name);

/// What an event is written as: the lines before it, then splits, which begin the comments, its own
/// line, speeds, names and the other comments.
struct EdlLines {
    std::vector<std::string> before;
    std::vector<std::string> comments;
    std::string event;
    std::array<std::string, std::size(edlNames)> names;
};
std::vector<std::string> inOrder(const EdlLines& lines);

}  // namespace vek::formats
