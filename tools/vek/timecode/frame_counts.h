#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "formats/timecode/clip_columns.h"
#include "tools/vek/timecode/work.h"

namespace vek::timecode {

/// Where an edit list has the lengths of its transitions, in frames; noColumn for other logs.
unsigned transitionColumn(const Log& log);

/// The columns of a log that hold lengths as numbers of frames: Duration, from which ends are
/// worked out, and every other one whose numbers are those between the same two times in each row.
/// The work outlives them.
class FrameCounts {
public:
    explicit FrameCounts(const Work& work);

    const std::vector<unsigned>& columns() const { return columns_; }
    bool has(unsigned column) const;
    /// "Long goes along, as lengths in frames between Start and End", of those that only their
    /// numbers tell.
    const std::vector<std::string>& notes() const { return notes_; }

    /// The number in such a cell; nothing for another text.
    std::optional<std::int64_t> frames(unsigned row, unsigned column) const;

    /// The times of a row that have so many frames between them, nothing where none have; and
    /// whether any of its times have a length.
    struct Found {
        std::optional<RangeColumns> times;
        std::int64_t start = 0;   ///< in frames
        std::int64_t length = 0;  ///< between the first times of the row
        bool areTimed = false;
    };
    Found timesWith(std::int64_t frames, unsigned row) const;

private:
    bool isKnown(unsigned column) const;
    std::optional<RangeColumns> timesOfAll(unsigned column) const;
    std::optional<std::int64_t> between(const RangeColumns& pair, unsigned row) const;

    const Work& work_;
    std::vector<RangeColumns> pairs_;
    std::vector<unsigned> columns_;
    std::vector<std::string> notes_;
};

}  // namespace vek::timecode
