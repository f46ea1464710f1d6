#pragma once

#include <cstdint>
#include <optional>

#include "formats/timecode/counting.h"
#include "formats/writing/writers.h"

namespace vek::formats {

/// How many frames the clips of a sheet are long in the source and on the record, as the writers of
/// edit lists and of timelines both need it. All of these outlive it; the pairs are places on the
/// sheet, noColumn where there are none.
class ClipLengths {
public:
    ClipLengths(const Sheet& sheet, const LogCounting& counting, const RangeColumns& source,
                const RangeColumns& record);

    /// Nothing for a cell that holds none. Frames are dropped where the log says so.
    std::optional<Timecode> timecode(unsigned row, unsigned column) const;

    /// That of a row's source, where a timeline has one for each, else that of the record.
    FrameRate sourceRate(unsigned row) const;

    /// That of a row's record, where a timeline has another one for it, else that of the log.
    FrameRate recordRate(unsigned row) const;

    /// Frames at these rates. Nothing without two times, or for an end before its start.
    std::optional<std::int64_t> inSource(unsigned row) const;
    std::optional<std::int64_t> onRecord(unsigned row) const;

    /// Frames of the source as frames of the record, where the two run at other rates.
    std::int64_t asRecord(std::int64_t frames, unsigned row) const;

    /// Whether both times are there, and the end is before the start.
    bool endsBeforeStart(unsigned row, const RangeColumns& pair) const;

private:
    std::optional<std::int64_t> between(unsigned row, const RangeColumns& pair, int nominal) const;
    const FrameRate& rate() const { return *counting_.rate(); }
    FrameRate rateIn(unsigned row, unsigned column) const;

    const Sheet& sheet_;
    const LogCounting& counting_;
    RangeColumns source_, record_;
    unsigned rate_, recordRate_;  // places on the sheet
};

}  // namespace vek::formats
