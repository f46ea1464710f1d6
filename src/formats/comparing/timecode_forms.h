#pragma once

#include <optional>
#include <string>

#include "formats/log/log.h"

namespace vek::formats {

/// How the timecodes of a log's column are written: 01:00:00:00, 1:00:00:00, 01:00:00;00,
/// 01.00.00.00, 01000000, or as a number of frames. No two of these are the same text, and so none
/// are taken for one.
class TimecodeForms {
public:
    TimecodeForms() = default;
    /// The first cell that has a value says whether they are timecodes, and some thousands behind
    /// it how they are written.
    TimecodeForms(const Log& log, unsigned column);

    /// False where no cell has a value.
    bool isKnown() const { return !first_.empty(); }
    /// What is told of a column whose timecodes are written otherwise than these, which are those
    /// of `as`: the first that is, and how many of the first rows with a value are.
    std::optional<Problem> others(const Log& log, unsigned column, const std::string& as) const;

private:
    std::string first_;
    unsigned forms_ = 0;
};

}  // namespace vek::formats
