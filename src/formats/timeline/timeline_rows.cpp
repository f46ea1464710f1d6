#include "formats/timeline/timeline_rows.h"

#include <algorithm>

#include "formats/input/limits.h"
#include "formats/text/text_lines.h"

namespace vek::formats {

namespace {

constexpr std::size_t nowhere = static_cast<std::size_t>(-1);

constexpr const char* alwaysThere[] = {timeline::kind,     timeline::place, timeline::track,
                                       timeline::clipName, timeline::reel,  timeline::sourceIn,
                                       timeline::sourceOut};

}  // namespace

std::string exactTimeColumn(std::string_view column) {
    return concat(column, " Exact");
}

TimelineRows::TimelineRows(Log& log, std::size_t bytes, bool hasRecord)
    : log_(log), builder_(log, std::vector<std::string>()), bytes_(bytes) {
    for (const char* name : alwaysThere) names_.place(name);
    if (hasRecord) {
        names_.place(timeline::recordIn);
        names_.place(timeline::recordOut);
    }
    names_.place(timeline::rate);
}

void TimelineRows::restore(std::vector<std::string> columns,
                           std::unordered_map<std::string, std::string> names) {
    names_ = {};
    for (const std::string& column : columns) names_.place(column);
    ownNames_ = std::move(names);
    isRestored_ = true;
}

void TimelineRows::begin(std::size_t line) {
    const std::size_t behindAll = waiting_.empty() ? 0 : waiting_.back().number;
    row_.line = line;
    row_.number = behindAll;
    isOwn_ = false;
}

void TimelineRows::beginOwn(std::size_t line, std::size_t number) {
    row_.line = line;
    row_.number = number;
    isOwn_ = isRestored_;
}

// A log that became a timeline has no columns but its own.
std::size_t TimelineRows::columnFor(std::string_view column) {
    if (isRestored_) {
        auto own = ownNames_.find(std::string(column));
        if (own != ownNames_.end()) return names_.place(own->second);
        if (isOwn_ && !names_.contains(column)) return nowhere;
    }
    return names_.place(column);
}

// A row of the log has its times where the log has them: another column of such a name is its own.
std::size_t TimelineRows::columnForTime(std::string_view column) {
    const bool isIn = !isOwn_ || ownNames_.contains(std::string(column));
    return isIn ? columnFor(column) : nowhere;
}

std::string& TimelineRows::cell(std::size_t column) {
    if (row_.cells.size() <= column) row_.cells.resize(column + 1);
    used_ = std::max(used_, column + 1);
    return row_.cells[column];
}

void TimelineRows::set(std::string_view column, std::string_view text) {
    if (text.empty()) return;
    const std::size_t at = columnFor(column);
    if (at != nowhere) cell(at) = text;
}

void TimelineRows::setOwnCell(std::string_view column, std::string_view text) {
    if (!isOwn_) return set(column, text);
    if (!text.empty() && names_.contains(column)) cell(names_.place(column)) = text;
}

void TimelineRows::setRate(const FrameRate& rate) {
    if (!isOwn_) setIfEmpty(timeline::rate, rateText(rate));
}

void TimelineRows::clear(std::string_view column) {
    const std::size_t at = columnFor(column);
    if (at < used_) row_.cells[at].clear();
}

bool TimelineRows::setIfEmpty(std::string_view column, std::string_view text) {
    const std::size_t at = columnFor(column);
    if (at == nowhere || text.empty()) return false;
    if (at < used_ && !row_.cells[at].empty()) return row_.cells[at] == text;
    cell(at) = text;
    return true;
}

void TimelineRows::setTime(const char* column, const ExactTime& time, const FrameRate& rate,
                           bool drops) {
    const std::size_t at = columnForTime(column);
    const bool isGiven = at < used_ && !row_.cells[at].empty();
    if (isGiven || at == nowhere) return;
    const std::optional<ExactTime::Frames> frames = time.frames(rate);
    const std::int64_t most = framesInDay(rate.nominal, false) * 4;
    if (!frames || frames->whole < 0 || frames->whole > most) {
        const std::string found = frames ? fractionText(time) : "a time beyond all bounds";
        return problem(row_.line, concat(column, " ", found), "a time between 0 and four days",
                       "the cell is empty");
    }
    cell(at) = timecodeText(frames->whole, rate.nominal, drops);
    if (frames->isExact) return;
    set(exactTimeColumn(column), fractionText(time));
    if (!betweenFrames_.empty()) betweenFrames_ += ", ";
    betweenFrames_ += concat(column, " ", fractionText(time));
}

void TimelineRows::tellBetweenFrames() {
    if (betweenFrames_.empty()) return;
    problem(row_.line, std::move(betweenFrames_), "times at which a frame begins",
            "the cells are the frames they are in, columns such as Source In Exact the times");
    betweenFrames_.clear();
}

void TimelineRows::end() {
    tellBetweenFrames();
    if (isRestored_) {
        waiting_.push_back(row_);
    } else {
        add(row_);
    }
    for (std::size_t i = 0; i < used_; ++i) row_.cells[i].clear();
    used_ = 0;
}

void TimelineRows::add(const Row& row) {
    std::size_t count = row.cells.size();
    while (count > 0 && row.cells[count - 1].empty()) --count;
    views_.assign(row.cells.begin(), row.cells.begin() + static_cast<std::ptrdiff_t>(count));
    requireCells(log_.name, ++rowCount_, names_.size(), bytes_, log_.opening.limits,
                 *log_.opening.terms);
    builder_.addWholeRow(row.line, views_.data(), count, {});
}

void TimelineRows::parameter(std::size_t line, std::string_view name, std::string_view value) {
    if (!value.empty()) restoreParameter(line, name, value);
}

void TimelineRows::restoreParameter(std::size_t line, std::string_view name,
                                    std::string_view value) {
    builder_.addParameter(line, name, value);
}

void TimelineRows::problem(std::size_t line, std::string found, std::string expected,
                           std::string outcome) {
    log_.report([&]() -> Problem {
        return {line, "", std::move(found), std::move(expected), std::move(outcome)};
    });
}

void TimelineRows::finish() {
    std::stable_sort(waiting_.begin(), waiting_.end(),
                     [](const Row& a, const Row& b) { return a.number < b.number; });
    for (const Row& row : waiting_) add(row);
    waiting_.clear();
    builder_.setColumns({names_.begin(), names_.end()});
    builder_.finish();
}

}  // namespace vek::formats
