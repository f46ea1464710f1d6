#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "formats/timecode/counting.h"
#include "formats/writing/clip_lengths.h"
#include "formats/writing/writers.h"

namespace vek::formats {

/// How a clip of a timeline lies over its neighbours. There it ends and begins within its
/// transitions; an edit list has the whole of a transition in the event that it goes over to.
struct Lap {
    unsigned transition = noColumn;  ///< the row of the one that the clip begins with
    unsigned from = noColumn;        ///< the clip it comes from; none for black
    std::int64_t length = 0;         ///< of that transition, in frames of the record
    std::int64_t lead = 0;           ///< frames by which the clip begins earlier
    std::int64_t tail = 0;           ///< frames by which it ends earlier
    std::int64_t late = 0;           ///< frames by which the transition begins later than it should

    bool goesOver() const { return transition != noColumn; }
};

/// What a transition is in an edit list, and whether that is all that it says.
struct TransitionKind {
    std::string kind;
    bool isWhole = true;
};
TransitionKind transitionKindOf(std::string_view type, std::string_view name);

class Laps {
public:
    /// `kind` is where the sheet says what its rows are, noColumn for a log that is no timeline.
    Laps(const Sheet& sheet, unsigned kind, const RangeColumns& source, const RangeColumns& record,
         const LogCounting& counting, const ClipLengths& lengths);

    const Lap& of(unsigned row) const;
    /// Whether the transition of a row is part of a clip's event. Others have no clip to go to.
    bool isOfClip(unsigned transition) const;
    /// How many frames of the record behind the beginning of a transition its clips meet, or its
    /// only one begins or ends; nothing where none lies beside it or it does not reach there.
    std::optional<std::int64_t> meetingIn(unsigned transition) const;
    /// A transition to black, whose lap stands for the black; null for others.
    const Lap* toBlack(unsigned transition) const;

private:
    unsigned clipAt(const std::string& place) const;
    bool isOther(const std::string& place) const;
    void add(unsigned transition, std::string_view place);
    std::int64_t startOf(unsigned row) const;
    bool canMove(unsigned row) const;

    const Sheet& sheet_;
    RangeColumns source_, record_;
    const ClipLengths& lengths_;
    std::map<std::string, unsigned> clips_;  // by place; noColumn for what is no event there
    std::map<unsigned, Lap> laps_;           // by the row of the clip
    std::map<unsigned, Lap> blacks_;         // by the row of the transition
    std::map<unsigned, unsigned> toClips_;   // by the row of the transition
    std::map<unsigned, std::int64_t> meetings_;
};

}  // namespace vek::formats
