#pragma once

#include <vekdb/formats/timecode.h>
#include "formats/log/log.h"
#include "formats/timecode/clip_columns.h"

namespace vek::formats {

/// What a log says about how its timecodes count: the rate of its parameter FPS (or another one
/// that a person names), and whether frames are dropped, by the rate ("29.97df"), the parameter
/// FCM ("DROP FRAME") or, row by row, the column FCM that edit lists have. On the record a timeline
/// counts so, but for rows with a rate for it in their column Record FPS; what else is timed in one
/// of its rows counts at the row's own rate, its column FPS.
class LogCounting {
public:
    /// `rate` "" is the log's own; one that says how it counts goes before all the log says. The
    /// log must outlive this.
    explicit LogCounting(const Log& log, const std::string& rate = {});

    /// Nothing where the log has none, or one that cannot be read.
    const std::optional<FrameRate>& rate() const { return rate_; }
    /// 0 where the rate is not known.
    int nominal() const { return rate_ ? rate_->nominal : 0; }
    /// The text that could not be read as a rate, "" when there is none.
    const std::string& oddRate() const { return oddRate_; }

    /// "counted at 25, not at FPS 24 as the log says", where a person names another rate than the
    /// log, or another counting; "" where they agree.
    std::string overruled() const;

    /// The rate at which a cell counts; that of the log where the row has none of its own.
    std::optional<FrameRate> rate(unsigned row, unsigned column) const;
    std::optional<FrameRate> ownRate(unsigned row, unsigned column) const;
    int nominal(unsigned row, unsigned column) const {
        return hasOwnRates_ ? nominalOfRow(row, column) : nominal();
    }
    /// Where a timeline has the rates of its rows, or noColumn.
    unsigned rateColumn() const { return rateColumn_; }
    /// Where it has those of their record, if not all have one, or noColumn.
    unsigned recordRateColumn() const { return recordRateColumn_; }

    /// What is said for a row, and for one of its cells.
    Counting counting(unsigned row) const {
        return fcmColumn_ == noColumn ? countingOfAll() : countingOfRow(row);
    }
    Counting counting(unsigned row, unsigned column) const {
        return hasOwnRates_ ? countingOfCell(row, column) : counting(row);
    }
    /// What is said, whatever the rows say.
    Counting countingOfAll() const { return countingOfAll_; }

    /// The cell's timecode, drop-frame where the log says so and not only where a semicolon does.
    std::optional<Timecode> timecode(unsigned row, unsigned column) const {
        return timecode(row, column, log_.cell(row, column));
    }
    /// The same of a cell that was looked up.
    std::optional<Timecode> timecode(unsigned row, unsigned column, std::string_view cell) const;

    /// What is wrong with what is said of the whole log: a rate that is none, an FCM against it.
    std::vector<Problem> contradictions() const;

private:
    void readRate(const std::string& rate);
    bool areOther(Counting own) const;
    std::optional<FrameRate> firstRateOfRows() const;
    int nominalOfRow(unsigned row, unsigned column) const;
    Counting countingOfRow(unsigned row) const;
    Counting countingOfCell(unsigned row, unsigned column) const;

    const Log& log_;
    std::optional<FrameRate> rate_;
    bool isForced_ = false;
    bool isNamed_ = false;  // by a person
    std::string oddRate_;
    std::string fcm_;
    unsigned fcmColumn_;
    unsigned rateColumn_;
    unsigned recordRateColumn_;
    bool hasOwnRates_;
    RangeColumns record_;
    Counting countingOfAll_ = Counting::unsaid;
};

/// "DROP FRAME", "NON-DROP FRAME", "NON DROP FRAME", ...
Counting countingOfFcm(std::string_view text);

}  // namespace vek::formats
