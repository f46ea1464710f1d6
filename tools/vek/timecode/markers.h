#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/edl/edl_lines.h"
#include "formats/timecode/clip_columns.h"
#include "tools/vek/timecode/notes.h"
#include "tools/vek/timecode/work.h"

namespace vek::timecode {

/// The markers in an edit list's notes, which are times of the record. The work outlives them.
class Markers {
public:
    explicit Markers(Work& work);

    /// Whether these columns are all of the record.
    bool goWith(const std::vector<unsigned>& columns) const;

    /// The column where the record starts.
    unsigned record() const { return record_.start; }

    /// `moved` makes another text of a time and its text, or nothing; it is given the column of
    /// the notes and the line too. A line whose time it leaves, or that is no time of this record,
    /// is told.
    template <class Moved>
    void move(unsigned row, Moved moved) {
        for (unsigned column : notes_) {
            if (work_.log.cell(row, column).find(':') == std::string_view::npos) continue;
            work_.moveNote(row, column, [&](std::string_view line) {
                return movedLine(row, column, line, moved);
            });
        }
    }

private:
    template <class Moved>
    std::string movedLine(unsigned row, unsigned column, std::string_view line, Moved moved) {
        const std::string_view text = edlMarkerTime(line);
        if (text.empty()) return std::string(line);
        const std::optional<Timecode> code = timeOf(row, text);
        std::optional<std::string> now;
        if (code && isOfRecord(row, *code)) now = moved(*code, text, column, line);
        if (now) return withPart(line, text, *now);
        work_.leaveLine(row, column, line, "a time within the record of its event");
        return std::string(line);
    }

    std::optional<Timecode> timeOf(unsigned row, std::string_view text) const;
    bool isOfRecord(unsigned row, const Timecode& code) const;
    bool isWithin(unsigned row, const RangeColumns& pair, const Timecode& code) const;

    Work& work_;
    RangeColumns record_;
    RangeColumns source_;
    bool isWhole_;
    std::vector<unsigned> notes_;
};

}  // namespace vek::timecode
