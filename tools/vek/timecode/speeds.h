#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "formats/edl/edl_lines.h"
#include "tools/vek/timecode/work.h"

namespace vek::timecode {

/// The notes of an edit list say how fast an event is played, in frames of the list's rate, and
/// from which time of its source, and name its reel. They go along with the times and the reel of
/// the event that were edited.
/// The work outlives them.
class Speeds {
public:
    /// `newNominal`: the frames a second that the log counts from now on.
    Speeds(Work& work, int newNominal);

    void move();

    /// Whether such edits are about speeds, as there are notes to hold them.
    bool concern(const std::vector<Edit>& edits) const;

private:
    bool keepsSource(unsigned row) const;
    bool isSpeed(std::string_view line) const;
    void notesOf(unsigned row, const EdlMove& move);
    std::string noteOf(unsigned row, unsigned column, std::string_view line, const EdlMove& move);
    void tellStrays(unsigned row, unsigned column);

    Work& work_;
    int newNominal_;
    unsigned start_;
    unsigned reel_;
    std::vector<unsigned> notes_;
    std::vector<unsigned> strays_;  // what stands in front of events
};

}  // namespace vek::timecode
