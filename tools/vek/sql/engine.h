#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "formats/log/log.h"

/// Runs SQL over logs that were read. `engine.cpp` alone knows SQLite, and can be left out.
namespace vek::sql {

/// A log and the names under which a statement finds it.
struct NamedLog {
    formats::Log log;
    std::vector<std::string> names;
};

struct Wishes {
    bool mayWrite = false;
    std::string rate = {};
    std::size_t mostBytes = 0;  ///< of the rows of an answer
    /// Makes a log of which these rows are left ready to be saved, and saves all that are. Both
    /// throw a Failure where that cannot be.
    std::function<void(const formats::Log& log, const std::vector<unsigned>& rows)> prepare = {};
    std::function<void()> commit = {};
};

struct Answer {
    formats::Log rows;        ///< what was asked for; no table where nothing was
    std::size_t changed = 0;  ///< rows that were changed, inserted or deleted
    std::vector<std::string> changedLogs;
};

/// Runs the statements one behind the other, as one transaction. A Failure where one cannot be;
/// nothing is saved then.
Answer run(std::vector<NamedLog> logs, const std::string& statements, const Wishes& wishes);

}  // namespace vek::sql
