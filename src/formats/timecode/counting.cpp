#include "formats/timecode/counting.h"

#include "formats/text/text_lines.h"
#include "formats/timecode/timeline_columns.h"

namespace vek::formats {

namespace {

unsigned columnOfTimeline(const Log& log, const char* name) {
    const unsigned column = log.findColumn(name);
    return column != noColumn && isTimeline(log) ? column : noColumn;
}

}  // namespace

LogCounting::LogCounting(const Log& log, const std::string& rate)
    : log_(log),
      fcm_(log.parameter("FCM")),
      fcmColumn_(log.findColumn("FCM")),
      rateColumn_(columnOfTimeline(log, "FPS")),
      recordRateColumn_(columnOfTimeline(log, "Record FPS")),
      hasOwnRates_(rateColumn_ != noColumn || recordRateColumn_ != noColumn),
      record_(recordColumns(log)) {
    readRate(rate);
    const bool isSaid = rate_ && rate_->counting != Counting::unsaid;
    countingOfAll_ = isSaid ? rate_->counting : countingOfFcm(fcm_);
}

void LogCounting::readRate(const std::string& rate) {
    std::optional<FrameRate> own = parseFrameRate(log_.parameter("FPS"));
    rate_ = rate.empty() ? own : parseFrameRate(rate);
    if (!rate_) oddRate_ = rate.empty() ? log_.parameter("FPS") : rate;
    if (!rate_ && oddRate_.empty()) rate_ = firstRateOfRows();
    isNamed_ = rate_ && !rate.empty();
    if (!isNamed_) return;
    isForced_ = rate_->counting != Counting::unsaid;
    if (!isForced_ && own && canDropFrames(rate_->nominal)) rate_->counting = own->counting;
}

std::string LogCounting::overruled() const {
    if (!isNamed_) return {};
    const std::string text = log_.parameter("FPS");
    const std::optional<FrameRate> own = parseFrameRate(text);
    const std::string counted = concat("counted at ", rateText(*rate_), ", not at ");
    if (own && (!own->isAsFastAs(*rate_) || areOther(own->counting))) {
        return concat(counted, "FPS ", text, " as the log says");
    }
    return areOther(countingOfFcm(fcm_)) ? concat(counted, "FCM ", fcm_, " as the log says") : "";
}

bool LogCounting::areOther(Counting own) const {
    const bool areSaid = own != Counting::unsaid && rate_->counting != Counting::unsaid;
    return areSaid && own != rate_->counting;
}

// Clips that lie on no timeline have no other one.
std::optional<FrameRate> LogCounting::firstRateOfRows() const {
    std::optional<FrameRate> rate;
    if (rateColumn_ == noColumn) return rate;
    for (unsigned row = 0; row < log_.rowCount() && !rate; ++row) {
        rate = parseFrameRate(log_.cell(row, rateColumn_));
    }
    return rate;
}

std::optional<FrameRate> LogCounting::rate(unsigned row, unsigned column) const {
    const std::optional<FrameRate> own = ownRate(row, column);
    return own ? own : rate_;
}

std::optional<FrameRate> LogCounting::ownRate(unsigned row, unsigned column) const {
    const bool isOnRecord = column == record_.start || column == record_.end;
    const unsigned rates = isOnRecord ? recordRateColumn_ : rateColumn_;
    return rates == noColumn ? std::nullopt : parseFrameRate(log_.cell(row, rates));
}

int LogCounting::nominalOfRow(unsigned row, unsigned column) const {
    const std::optional<FrameRate> own = rate(row, column);
    return own ? own->nominal : 0;
}

// What is said of the log's rate says nothing of another one.
Counting LogCounting::countingOfCell(unsigned row, unsigned column) const {
    const std::optional<FrameRate> own = rate(row, column);
    if (!own || !rate_) return counting(row);
    if (own->counting != Counting::unsaid) return own->counting;
    return own->isAsFastAs(*rate_) ? counting(row) : Counting::unsaid;
}

Counting LogCounting::countingOfRow(unsigned row) const {
    if (isForced_) return countingOfAll();
    const Counting own = countingOfFcm(log_.cell(row, fcmColumn_));
    return own != Counting::unsaid ? own : countingOfAll();
}

std::optional<Timecode> LogCounting::timecode(unsigned row, unsigned column,
                                              std::string_view cell) const {
    std::optional<Timecode> code = parseTimecode(trimmed(cell));
    if (code) code->dropFrame = code->dropFrame || counting(row, column) == Counting::dropFrame;
    return code;
}

std::vector<Problem> LogCounting::contradictions() const {
    std::vector<Problem> out;
    if (!oddRate_.empty()) {
        out.push_back({0, "", "FPS " + inQuotes(oddRate_),
                       "a rate such as 24, 29.97 or 29.97df, drop-frame at 29.97 and 59.94 only",
                       ""});
    }
    if (!rate_) return out;
    Counting fcm = countingOfFcm(fcm_);
    bool isOther =
        rate_->counting != Counting::unsaid && fcm != Counting::unsaid && fcm != rate_->counting;
    bool cannotDrop = fcm == Counting::dropFrame && !canDropFrames(rate_->nominal);
    if (isOther || cannotDrop) {
        out.push_back({0, "", "FCM " + inQuotes(fcm_),
                       "what FPS " + inQuotes(log_.parameter("FPS")) + " says", ""});
    }
    return out;
}

Counting countingOfFcm(std::string_view text) {
    std::optional<FrameRate> rate = parseFrameRate(concat("30 ", text));
    return rate ? rate->counting : Counting::unsaid;
}

}  // namespace vek::formats
