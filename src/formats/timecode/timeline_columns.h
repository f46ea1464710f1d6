#pragma once

#include <string_view>

#include "formats/log/log.h"
#include "formats/timecode/range_names.h"

/// What the columns of a log are called that is a timeline, and what its rows are.
namespace vek::formats {

/// The columns that every timeline has. Others come behind them when a row needs one.
namespace timeline {
constexpr const char* kind = "Kind";
constexpr const char* place = "Place";
constexpr const char* track = "Track";
constexpr const char* clipName = "Clip Name";
constexpr const char* reel = "Reel";
constexpr const char* sourceIn = sourceOfEvent.start;
constexpr const char* sourceOut = sourceOfEvent.end;
constexpr const char* recordIn = recordOfEvent.start;
constexpr const char* recordOut = recordOfEvent.end;
constexpr const char* rate = "FPS";
constexpr const char* recordRate = "Record FPS";
constexpr const char* marker = "Marker";
constexpr const char* color = "Color";
constexpr const char* note = "Note";
constexpr const char* file = "Source File";
constexpr const char* mediaStart = "Media Start";
constexpr const char* mediaFrames = "Media Frames";
constexpr const char* transition = "Transition";
constexpr const char* inOffset = "In Offset";
constexpr const char* outOffset = "Out Offset";
constexpr const char* effects = "Effects";
constexpr const char* enabled = "Enabled";
constexpr const char* frameColumns[] = {mediaFrames, inOffset, outOffset};  // numbers of frames
}  // namespace timeline

/// Whether the rows are those of a timeline, each with a rate of its own: the log has the columns
/// Kind and Place, and all of its rows a place.
bool isTimeline(const Log& log);

/// What a row of a timeline is, as its column Kind says.
enum class TimelineKind { clip, marker, note, transition, track, other };
/// Clips for all texts that no timeline has.
TimelineKind timelineKind(std::string_view text);

}  // namespace vek::formats
