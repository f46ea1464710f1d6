#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/writing/writers.h"

/// What the events of an edit list say that a timeline has things of its own for: transitions,
/// gaps, markers, changes of speed and tracks.
namespace vek::formats {

/// A marker of an event's notes, "* LOC: 01:00:02:12 RED look".
struct EventMark {
    std::size_t line = 0;  ///< of the cell Comments, from 0 on
    std::string_view time;
    std::string_view color;
    std::string_view text;
};
/// Of a line that is one; nothing for others.
std::optional<EventMark> eventMark(std::string_view line);
/// The line with another time, colour and text where these are others.
std::string withEventMark(std::string_view line, const EventMark& now);

/// A transition as it is called in a timeline, and the way back: "D", "W001".
std::string transitionTypeOf(std::string_view kind);

class EditEvents {
public:
    explicit EditEvents(const Sheet& sheet);

    /// Whether the log has a column of kinds as edit lists have them.
    bool areThere() const { return kind_ != noColumn; }

    /// "D", "W001"; a cut where nothing else is said.
    std::string_view kind(unsigned row) const;
    bool isKey(unsigned row) const;
    /// Frames of the dissolve or wipe that the event begins with; nothing for others.
    std::optional<std::int64_t> transition(unsigned row) const;
    /// Whether the row is the further line of the event in front of it, and goes over to its clip.
    bool isContinued(unsigned row) const;
    /// Whether the event is black.
    bool isBlack(unsigned row) const;
    /// Tenths of a frame in a second at which the event's notes say that it is played; below 0 for
    /// one that is played backwards.
    std::optional<std::int64_t> speed(unsigned row) const;
    std::vector<EventMark> marks(unsigned row) const;
    /// The tracks of one timeline for that of the event: V and A for B.
    std::vector<std::string> tracks(std::string_view track) const;

private:
    std::string_view cell(unsigned row, unsigned column) const;

    const Sheet& sheet_;
    unsigned event_, reel_, kind_, length_, comments_;
};

}  // namespace vek::formats
