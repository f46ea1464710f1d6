#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "formats/checking/findings.h"
#include "formats/choosing/sorted_values.h"
#include "formats/summing/clip_sums.h"

/// What a page tells of a log, worked out once.
namespace vek::page {

using namespace formats;

/// What a person asks of the page.
struct Wishes {
    std::string lanes = {};    ///< the column with a lane for each of its values, "" for reels
    std::string columns = {};  ///< those of the table, "" for those of the field map
    bool allColumns = false;
    std::string rate = {};
    const Gauge* gauge = nullptr;
    std::vector<std::string> options = {};  ///< by which the logs are read
};

/// Where a clip stands in its day, in seconds.
struct Span {
    double start = 0;
    double end = 0;
    bool isThere = false;
};

class LogOnPage {
public:
    /// The number is that of the log on its page, from 1 on.
    LogOnPage(Log log, Findings findings, unsigned number, const Wishes& wishes);
    LogOnPage(const LogOnPage&) = delete;
    LogOnPage& operator=(const LogOnPage&) = delete;

    const Log& log() const { return log_; }
    const Findings& findings() const { return findings_; }
    unsigned number() const { return number_; }
    const ClipRates& rates() const { return rates_; }
    const ClipPlaces& places() const { return counter_.places(); }
    const ClipTables& tables() const { return tables_; }
    const ClipSums& sums() const { return sums_; }
    /// Whether running times can be told.
    bool hasTime() const { return places().time.start != noColumn && rates_.nominal() != 0; }
    bool hasFilm() const { return places().keycode.start != noColumn; }
    std::string timeText(const ClipSums& sums) const;
    std::string filmText(const ClipSums& sums) const;

    unsigned rowCount() const { return log_.rowCount(); }
    /// Whether a row is a clip; of a timeline others are tracks, markers, transitions and parts.
    bool isClip(unsigned row) const { return counter_.isClip(row); }
    /// The values that a column has in clips.
    SortedValues valuesOfClips(unsigned column) const;
    bool isTagged(unsigned row) const { return tags_[row]; }
    std::size_t tagCount() const { return tagCount_; }
    /// The columns that the table shows at first.
    const std::vector<unsigned>& shown() const { return shown_; }
    /// Whether they are those of the field map, as `vek show` shows them.
    bool isFieldMap() const { return isFieldMap_; }
    /// Whether they are the first of so many that no browser would lay them out in time.
    bool isCut() const { return isCut_; }
    /// The column that gives lanes, noColumn for a single one.
    unsigned laneColumn() const { return laneColumn_; }
    Span span(unsigned row) const;

    /// The options by which the program reads the log.
    const std::vector<std::string>& options() const { return options_; }

    /// "log-1", "r1-12", what links name.
    std::string anchor() const { return "log-" + std::to_string(number_); }
    std::string anchorOfRow(unsigned row) const;
    /// The row of the table that began on a line of the file; noRow where none did.
    unsigned rowOfLine(std::size_t line) const;
    static constexpr unsigned noRow = 0xFFFFFFFF;

    /// "row 12: scene 67, take 1, 02:00:09:00 to 02:00:44:26, tagged".
    std::string describe(unsigned row) const;

private:
    void cutColumns();

    Log log_;
    Findings findings_;
    unsigned number_;
    ClipRates rates_;
    ClipCounter counter_;
    ClipTables tables_;
    ClipSums sums_;
    std::vector<bool> tags_;
    std::size_t tagCount_ = 0;
    std::vector<unsigned> shown_;
    bool isFieldMap_;
    bool isCut_ = false;
    unsigned laneColumn_;
    std::vector<std::string> options_;
};

}  // namespace vek::page
