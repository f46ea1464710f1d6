#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The lines of CMX 3600 edit lists, as the reader and the writer both know them.
namespace vek::formats {

/// The columns that every edit list has. Those that only some have are FCM, how an event counts,
/// and Comments 2, 3, ..., which go on where Comments is full.
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

/// The event as a line.
std::string edlEventLine(const EdlEvent& event);

/// The text behind "NAME:", with or without the star of a comment; nothing for other lines.
std::optional<std::string_view> edlValue(std::string_view line, std::string_view name);

/// The text of "FCM: ...", which tells how the events behind it count; never that of a comment.
std::optional<std::string_view> edlCounting(std::string_view line);

/// "SPLIT: AUDIO DELAY= ...", which stands in front of the event that it is about.
bool isEdlSplit(std::string_view line);

/// Whether an "M2" line, a speed, is about this reel.
bool isEdlMotionOf(std::string_view line, std::string_view reel);
bool isEdlMotion(std::string_view line);

/// Whether a line begins with a number and yet is no event.
bool isOddEdlEvent(std::string_view line);

/// Comments cut where lines end, so that each piece has room in a table file. A line that is
/// longer itself is cut, and goes on behind a mark.
std::vector<std::string> edlPieces(std::string_view comments);
/// The way back, piece by piece.
void addEdlPiece(std::string& comments, std::string_view piece);

/// "Comments", "Comments 2", ...
std::string edlCommentsName(std::size_t piece);

}  // namespace vek::formats
