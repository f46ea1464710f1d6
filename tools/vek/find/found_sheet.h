#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "formats/writing/writers.h"
#include "tools/vek/find/result.h"

namespace vek::find {

/// The rows of a result as those of a log: which file, which row, and the columns.
class ResultCells {
public:
    /// The result outlives this.
    explicit ResultCells(const Result& result);

    const std::vector<std::string>& names() const { return names_; }
    /// Valid until the next call.
    const std::vector<std::string_view>& of(std::size_t row);

private:
    const Result& result_;
    std::vector<std::string> names_;
    std::string number_;
    std::vector<std::string_view> cells_;
};

/// What was found as a sheet for writers that take one row after the other: rows that stand near
/// the one that is asked for are records meanwhile, and no others, so that memory does not hold all
/// of them a second time.
class FoundSheet {
public:
    /// The result outlives this.
    explicit FoundSheet(const Result& result);

    const Log& log() const { return log_; }
    Sheet sheet() const { return {log_, rows_, allColumns(log_)}; }

private:
    Log log_;  // its columns, and where its rows would stand
    VDBView rows_;
};

}  // namespace vek::find
