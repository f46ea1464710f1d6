#pragma once

#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

#include "formats/log/log.h"
#include "tools/vek/cli/command.h"

namespace vek {

/// Which rows of a log that is read again and again were not there before. Rows are the same
/// that have the same cells; one that there are more of is new as often as that. The row of a last
/// line that has no end may be written by half, and is none yet.
class NewRows {
public:
    /// To be called with each state of the log.
    void look(const Log& log);
    bool isNew(unsigned row) const { return isNew_[row]; }
    /// Whether the columns are others than before, so that all rows are new; at first they are.
    bool hasOtherColumns() const { return hasOtherColumns_; }

private:
    std::unordered_map<std::uint64_t, std::uint32_t> counts_;
    std::vector<bool> isNew_;
    std::vector<std::string> columns_;
    bool hasOtherColumns_ = true;
};

/// What a command does with a log that it follows.
struct Follower {
    std::function<Log()> read;
    std::function<void(const Log&)> show;
    std::function<bool()> isOutdated;  ///< for another reason than the log
    std::function<void()> rest;        ///< a second has passed without a change
};

/// Shows the log at first and whenever it has changed, until somebody ends the program or nobody
/// reads the output. Whatever is wrong with it later on is told and waited for. A Failure for
/// what is no file: it cannot be read again.
int follow(const std::string& path, const Follower& follower);

}  // namespace vek
