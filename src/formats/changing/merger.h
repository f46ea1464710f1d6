#pragma once

#include <functional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include <vekdb/host/keyed_hash.h>
#include "formats/log/log.h"

namespace vek::formats {

/// Two values for one cell, or a key that one log has twice.
struct MergeConflict {
    enum Kind { cell, key };
    Kind kind = cell;
    std::string file;  ///< and line, of the value that is not taken or of the key's further row
    std::size_t line = 0;
    std::string column;
    std::string value;
    std::string kept;     ///< the other value, for a cell
    std::size_t row = 0;  ///< where that one is in the joined log, from 1 on
};

std::string worded(const MergeConflict& conflict);

/// Joins further logs to a first one, which must outlive it. What has no place there is said.
class Merger {
public:
    /// Which of two values a cell gets.
    enum class Prefer { report, first, last, filled };
    using Teller = std::function<void(const MergeConflict&)>;

    /// Conflicts go to `tell`.
    Merger(Log& into, Prefer prefer, Teller tell);

    /// From now on rows go together that have the same value here, where one of the two logs has
    /// it once.
    void useKey(const std::string& name);
    /// Columns that have one name go by their turn: the second to the second.
    void add(const Log& from);

    std::size_t conflicts() const { return conflicts_; }
    std::size_t repeatedKeys() const { return repeatedKeys_; }

private:
    using RowsOfKeys = std::unordered_map<std::string, std::vector<unsigned>, Quor::KeyedHash>;

    // How many rows of the log that is being added have a key, and how many had their turn.
    struct Turns {
        std::size_t count = 0;
        std::size_t done = 0;
    };

    void addColumns(const Log& from);
    unsigned addColumn(const Log& from, unsigned column);
    void addParameters(const Log& from);
    void append(const Log& from);
    unsigned addRows(const Log& from, unsigned row, unsigned count);
    void fill(const Log& from, unsigned row, unsigned target);
    void join(const Log& from);
    void joinRow(const Log& from, unsigned row, const std::string& key, Turns& turns);
    void addRow(const Log& from, unsigned row, const std::string& key);
    unsigned agreeingRow(const Log& from, unsigned row, const std::vector<unsigned>& targets,
                         std::size_t turn) const;
    bool agrees(const Log& from, unsigned row, unsigned target) const;
    std::string inOurForm(const Log& from, unsigned row, unsigned column) const;
    void settleRow(const Log& from, unsigned row, unsigned target);
    void settle(const Log& from, unsigned row, unsigned target, unsigned column,
                const std::string& value);
    void tellRepeated(const Log& log, unsigned row, unsigned column, const std::string& value);
    void store(unsigned row, unsigned column, std::string_view value);

    static constexpr unsigned noRow = 0xFFFFFFFF;

    Log& into_;
    Prefer prefer_;
    Teller tell_;
    unsigned key_ = noColumn;
    std::vector<unsigned> columns_;       // of the log that is being added, in ours
    RowsOfKeys rows_;                     // ours, by their keys
    std::unordered_set<unsigned> taken_;  // ours of repeated keys that a row of this log went to
    std::size_t conflicts_ = 0;
    std::size_t repeatedKeys_ = 0;
};

/// A Failure where two logs count their frames differently, by their rates (FPS) or by dropping
/// them (FPS or FCM): nothing in a joined log would tell which rows are which.
void requireSameCounting(const Log& into, const Log& from);

}  // namespace vek::formats
