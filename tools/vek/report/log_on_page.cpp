#include "tools/vek/report/log_on_page.h"

#include <algorithm>
#include <numeric>

#include "formats/choosing/select.h"
#include "formats/log/mapped_columns.h"
#include "formats/text/text_lines.h"
#include "formats/text/width.h"
#include "formats/writing/writers.h"

namespace vek::page {

namespace {

constexpr double secondsInDay = 24 * 60 * 60;
constexpr std::size_t mostColumnsUnasked = 256;
constexpr int rateForPlaces = 30;  // of frames within a second, where the log says none

std::vector<unsigned> columnsOf(const Log& log, const Wishes& wishes) {
    if (!wishes.columns.empty()) return columnList(log, wishes.columns);
    return wishes.allColumns ? allColumns(log) : mappedColumns(log);
}

unsigned laneColumnOf(const Log& log, const Wishes& wishes) {
    if (!wishes.lanes.empty()) return log.requireColumn(wishes.lanes);
    return reelColumn(log);
}

double secondsOf(const Timecode& code, int nominal) {
    const int rate = nominal != 0 ? nominal : rateForPlaces;
    return (code.hours * 60.0 + code.minutes) * 60.0 + code.seconds +
           static_cast<double>(code.frames) / std::max(rate, code.frames + 1);
}

}  // namespace

LogOnPage::LogOnPage(Log log, Findings findings, unsigned number, const Wishes& wishes)
    : log_(std::move(log)),
      findings_(std::move(findings)),
      number_(number),
      rates_{LogCounting(log_, wishes.rate), *wishes.gauge},
      counter_(log_, rates_),
      tags_(taggedRows(log_)),
      shown_(columnsOf(log_, wishes)),
      isFieldMap_(shown_ == mappedColumns(log_)),
      laneColumn_(laneColumnOf(log_, wishes)),
      options_(wishes.options) {
    std::vector<unsigned> rows(rowCount());
    std::iota(rows.begin(), rows.end(), 0u);
    tables_ = tablesOf(counter_, log_, rows, clipGroupColumns(log_));
    for (unsigned row : rows) {
        if (counter_.isClip(row)) addTo(sums_, counter_.clip(row));
    }
    tagCount_ = static_cast<std::size_t>(std::count(tags_.begin(), tags_.end(), true));
    if (wishes.columns.empty() && !wishes.allColumns) cutColumns();
}

void LogOnPage::cutColumns() {
    if (shown_.size() <= mostColumnsUnasked) return;
    shown_.resize(mostColumnsUnasked);
    isFieldMap_ = false;
    isCut_ = true;
}

SortedValues LogOnPage::valuesOfClips(unsigned column) const {
    SortedValues all = sortedValues(log_, column);
    if (sums_.clips == rowCount()) return all;
    std::vector<bool> isOfClip(all.values.size());
    for (unsigned row = 0; row < rowCount(); ++row) {
        if (isClip(row)) isOfClip[all.placeOf[row]] = true;
    }
    SortedValues own;
    std::vector<std::uint32_t> places;
    bool isSame = false;
    for (std::size_t i = 0; i < all.values.size(); ++i) {
        isSame = isSame && all.isSameAsBefore[i];
        places.push_back(static_cast<std::uint32_t>(own.values.size()));
        if (!isOfClip[i]) continue;
        own.values.push_back(all.values[i]);
        own.isSameAsBefore.push_back(isSame);
        isSame = true;
    }
    for (std::uint32_t place : all.placeOf) own.placeOf.push_back(places[place]);
    return own;
}

std::string LogOnPage::timeText(const ClipSums& sums) const {
    return timecodeText(sums.frames, rates_.nominal(), sums.dropFrame);
}

std::string LogOnPage::filmText(const ClipSums& sums) const {
    return footageText(sums.perforations, rates_.gauge);
}

// An end that is missing or before its start makes a clip that is only a place.
Span LogOnPage::span(unsigned row) const {
    const RangeColumns& time = places().time;
    if (time.start == noColumn) return {};
    const std::optional<Timecode> start = parseTimecode(log_.cell(row, time.start));
    if (!start) return {};
    const double from = secondsOf(*start, rates_.counting.nominal(row, time.start));
    const std::optional<Timecode> end = parseTimecode(log_.cell(row, time.end));
    if (!end) return {from, from, true};
    double to = secondsOf(*end, rates_.counting.nominal(row, time.end));
    if (isOverMidnight(*start, *end)) to += secondsInDay;
    return {from, std::max(from, to), true};
}

std::string LogOnPage::anchorOfRow(unsigned row) const {
    return "r" + std::to_string(number_) + "-" + std::to_string(log_.numberOf(row));
}

unsigned LogOnPage::rowOfLine(std::size_t line) const {
    const std::size_t row = log_.lines.firstFrom(line);
    const bool isThere = line != 0 && row < log_.lines.size() && log_.lines[row] == line;
    return isThere ? static_cast<unsigned>(row) : noRow;
}

std::string LogOnPage::describe(unsigned row) const {
    constexpr std::size_t widest = 40;
    const auto cell = [&](unsigned column) { return fitted(log_.cell(row, column), widest); };
    std::string text = "row " + std::to_string(log_.numberOf(row));
    if (places().scene != noColumn) text += ", scene " + cell(places().scene);
    if (places().take != noColumn) text += ", take " + cell(places().take);
    if (places().time.start != noColumn) {
        text += ", " + cell(places().time.start) + " to " + cell(places().time.end);
    }
    return isTagged(row) ? text + ", tagged" : text;
}

}  // namespace vek::page
