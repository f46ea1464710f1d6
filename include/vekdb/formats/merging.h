#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include <vekdb/formats/log.h>

/// Logs joined: rows put behind those of a first one, or rows of one key joined field by field.
/// What does not go together is told as values.
namespace vek {

/// Two values for one cell, or a key that one log has twice. A value.
struct MergeConflict {
    /// Two values for a cell, or a key once more.
    enum Kind { cell, key };
    Kind kind = cell;         ///< which of them
    std::string file = {};    ///< the log that has the value that is not taken, or the key again
    std::size_t line = 0;     ///< of it there, from 1 on
    std::string column = {};  ///< the name of the one of the cell or key
    std::string value = {};   ///< the one that is not taken, or the key
    std::string kept = {};    ///< the other one, for a cell
    std::optional<unsigned> row = {};  ///< its place in the joined log: Log::at

    /// "FILE:LINE:COLUMN: ...", as people read it.
    std::string text() const;
};

/// How logs are joined.
struct MergeOptions {
    /// Which of two values for one cell is taken: none, so that the one that is there stays and
    /// the other is told; the first or the last log's; or the last one that is not empty.
    enum Prefer { report, first, last, filled };

    /// The column whose values say which rows are one, or several with commas between them; "" puts
    /// all rows behind each other.
    std::string key = {};
    Prefer prefer = report;
    /// Also logs of two frame rates, or of which one drops frames and the other does not.
    bool joinsUnlike = false;
    /// More are counted and not kept.
    std::size_t mostConflicts = 1000;
};

/// What is said of logs that were joined.
struct Merged {
    std::vector<MergeConflict> conflicts;  ///< the first of them, in their order
    std::size_t cells = 0;                 ///< conflicts of cells, those behind the first included
    std::size_t keys = 0;                  ///< and of keys
    std::vector<std::string> notes;        ///< parameters that differ, or have no room

    /// Whether everything went together.
    bool isWhole() const noexcept { return cells == 0 && keys == 0 && notes.empty(); }
};

/// Joins further logs to the first one, which is changed. Columns go by their names, case ignored;
/// new ones are added, and timecodes take the form of the first log's column. A row whose key is
/// there already fills the empty cells of that row. Rows that were removed from a log are left out.
/// The others stay as they are and may end afterwards. No value when a column is not there or a log
/// cannot be joined; the logs in front of that one have been joined then.
Result<Merged> merge(Log& into, const std::vector<Log>& others, const MergeOptions& options = {});

}  // namespace vek
