#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "formats/checking/problem_list.h"
#include "formats/log/column_names.h"
#include "formats/text/text_lines.h"
#include "formats/timecode/counting.h"
#include "formats/timecode/exact_time.h"
#include "formats/timeline/timeline_rows.h"
#include "tools/vek/cli/edits.h"

namespace vek::timecode {

inline constexpr int fastestWritten = 100;                 // two digits of frames
inline constexpr std::int64_t mostFrames = 1'000'000'000;  // of a length

/// A log whose timecodes are to be changed: what is found out about it, and the edits so far.
struct Work {
    Log& log;
    LogCounting counting;
    std::vector<unsigned> rows;
    std::vector<Edit> edits;
    ProblemList odd;  // cells that stay as they are
    std::size_t overMidnight = 0;
    std::unordered_map<std::uint64_t, std::size_t> notes = {};  // edits of cells of several lines
    mutable std::unordered_map<unsigned, unsigned> exactColumns = {};  // by the columns of times

    int nominal(unsigned row, unsigned column) const { return counting.nominal(row, column); }

    bool drops(unsigned row, unsigned column) const {
        std::optional<Timecode> code = counting.timecode(row, column);
        return code && code->dropFrame;
    }

    void put(unsigned row, unsigned column, const std::string& after) {
        const std::string_view before = log.cell(row, column);
        if (before == after) return;
        edits.push_back({row, static_cast<unsigned short>(column), after});
    }

    static std::uint64_t placeOf(unsigned row, unsigned column) {
        return std::uint64_t{row} << 32 | column;
    }

    // A cell whose lines are changed one kind after the other, as it is so far.
    std::string_view note(unsigned row, unsigned column) const {
        const auto edit = notes.find(placeOf(row, column));
        return edit == notes.end() ? log.cell(row, column) : edits[edit->second].after;
    }

    // Every line of such a cell, as `moved` makes it.
    template <class Moved>
    void moveNote(unsigned row, unsigned column, Moved moved) {
        std::string after;
        for (std::string_view line : split(note(row, column), '\n')) {
            after += moved(line);
            after += '\n';
        }
        after.pop_back();
        if (after == note(row, column)) return;
        const auto [edit, isNew] = notes.try_emplace(placeOf(row, column), edits.size());
        if (isNew) return put(row, column, after);
        edits[edit->second].after = std::move(after);
    }

    void leaveLine(unsigned row, unsigned column, std::string_view line, const char* expected) {
        odd.add(0, {log.lineOf(row), log.columnName(column), inQuotes(line), expected,
                    "the line stays as it is"});
    }

    // The moment itself, where a timeline has it beside a time that is between two frames.
    template <class Move>
    void moveExact(unsigned row, unsigned column, Move move) {
        const ExactTime moved = move(exactTime(row, column));
        if (moved.isKnown()) put(row, exactColumn(column), fractionText(moved));
    }

    // Not known where there is none.
    ExactTime exactTime(unsigned row, unsigned column) const {
        const unsigned exact = exactColumn(column);
        return exact == noColumn ? ExactTime::unknown()
                                 : ExactTime::of(trimmed(log.cell(row, exact)));
    }

    unsigned exactColumn(unsigned column) const {
        if (counting.rateColumn() == noColumn) return noColumn;
        const auto [exact, isNew] = exactColumns.try_emplace(column, noColumn);
        if (isNew) exact->second = log.findColumn(exactTimeColumn(log.columnName(column)));
        return exact->second;
    }

    void leave(unsigned row, unsigned column, const std::string& expected,
               const char* what = "the cell stays as it is") {
        odd.add(0, {log.lineOf(row), log.columnName(column), inQuotes(log.cell(row, column)),
                    expected, what});
    }
};

/// The cell's timecode. Nothing for an empty cell, and for one that is none, which is told.
std::optional<Timecode> codeOf(Work& work, unsigned row, unsigned column);

std::optional<std::int64_t> wholeNumber(std::string_view text);
/// "48" or "00:00:02:00": so many frames, counted as the row counts.
std::optional<std::int64_t> lengthOf(std::string_view text, int nominal, bool drops);
/// Whether it is a length as a timecode that counting leaves out, such as 00:01:00;00.
bool isNoFrame(std::string_view text, int nominal, bool drops);
/// Says which cells and lines stay as they are, and how many went past midnight.
void tellOdd(const Work& work);
/// A frame of the day; what is past midnight begins anew, and is counted.
std::int64_t inDay(Work& work, std::int64_t frames, std::int64_t day);

}  // namespace vek::timecode
