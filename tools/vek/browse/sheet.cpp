#include "tools/vek/browse/sheet.h"

#include <algorithm>

#include "formats/choosing/select.h"
#include "formats/log/mapped_columns.h"

namespace vek::browse {

Sheet::Sheet(Log log, Opening opening, const std::optional<FileMark>& mark)
    : log_(std::move(log)),
      opening_(std::move(opening)),
      edits_(*log_.table),
      rows_(log_),
      recovery_(log_.path),
      mark_(mark) {
    edits_.follow(this);
    recovery_.begin(mark_);
    for (unsigned column : mappedColumns(log_)) columns_.push_back({column});
    knownColumns_ = log_.columnCount();
    keep(1);
}

// Edits that were all taken back are nothing to recover.
Sheet::~Sheet() {
    if (!edits_.hasUnsavedEdits()) recovery_.remove();
}

void Sheet::clampPlace() {
    place_ = rows_.size() == 0 ? 0 : std::min(place_, rows_.size() - 1);
    if (hasMark() && marked_ >= rows_.size()) unmark();
}

void Sheet::moveTo(unsigned place) {
    place_ = place;
    clampPlace();
}

void Sheet::moveBy(long long rows) {
    const long long wanted = static_cast<long long>(place_) + rows;
    moveTo(wanted < 0 ? 0 : static_cast<unsigned>(std::min<long long>(wanted, nowhere)));
}

void Sheet::moveToColumn(std::size_t at) {
    if (columns_.empty()) return;
    at_ = std::min(at, columns_.size() - 1);
    if (columns_[at_].isHidden) moveColumns(at_ == 0 ? 1 : -1);
}

void Sheet::moveColumns(int by) {
    std::size_t at = at_;
    for (;;) {
        if (by < 0 ? at == 0 : at + 1 >= columns_.size()) break;
        at += by < 0 ? std::size_t(-1) : 1;
        if (!columns_[at].isHidden) break;
    }
    if (at < columns_.size() && !columns_[at].isHidden) at_ = at;
}

bool Sheet::moveToRow(unsigned row) {
    const unsigned place = rows_.placeOf(row);
    if (place == nowhere) return false;
    moveTo(place);
    return true;
}

bool Sheet::isMarked(unsigned place) const {
    if (!hasMark()) return false;
    return std::min(marked_, place_) <= place && place <= std::max(marked_, place_);
}

unsigned Sheet::chosenCount() const {
    if (row() == nowhere) return 0;
    return hasMark() ? std::max(marked_, place_) - std::min(marked_, place_) + 1 : 1;
}

Sheet::Rows Sheet::chosenRows() const {
    Rows rows;
    if (row() == nowhere) return rows;
    rows.reserve(chosenCount());
    const unsigned from = hasMark() ? std::min(marked_, place_) : place_;
    const unsigned to = hasMark() ? std::max(marked_, place_) : place_;
    for (unsigned place = from; place <= to; ++place) rows.push_back(rows_.rowAt(place));
    return rows;
}

Sheet::Rows Sheet::shownRows() const {
    return rowsOf(rows_.shown());
}

void Sheet::widen(int by, std::size_t shownWidth) {
    if (columns_.empty()) return;
    const long long wanted = static_cast<long long>(shownWidth) + by;
    columns_[at_].width = static_cast<std::size_t>(std::clamp<long long>(wanted, 3, 1000));
}

void Sheet::hide() {
    const auto isShown = [](const Column& column) { return !column.isHidden; };
    if (std::count_if(columns_.begin(), columns_.end(), isShown) < 2) return;
    columns_[at_].isHidden = true;
    const std::size_t before = at_;
    moveColumns(1);
    if (at_ == before) moveColumns(-1);
}

void Sheet::showAllColumns() {
    std::vector<char> isThere(log_.columnCount());
    for (Column& column : columns_) {
        column.isHidden = false;
        isThere[column.column] = 1;
    }
    for (unsigned column = 0; column < log_.columnCount(); ++column) {
        if (!isThere[column]) columns_.push_back({column});
    }
}

void Sheet::moveColumn(int by) {
    const std::size_t from = at_;
    moveColumns(by);
    if (at_ == from) return;
    const Column moved = columns_[from];
    columns_.erase(columns_.begin() + static_cast<std::ptrdiff_t>(from));
    columns_.insert(columns_.begin() + static_cast<std::ptrdiff_t>(at_), moved);
}

// The cursor stays with its row where that is still shown.
void Sheet::filter(const std::string& name, const Selection& selection) {
    const unsigned at = row();
    rows_.filter(name, selection);
    unmark();
    if (at == nowhere || !moveToRow(at)) moveTo(0);
}

bool Sheet::unfilter() {
    const unsigned at = row();
    if (!rows_.unfilter()) return false;
    unmark();
    if (at == nowhere || !moveToRow(at)) moveTo(0);
    return true;
}

void Sheet::sort(std::vector<unsigned> columns, bool isReversed) {
    const unsigned at = row();
    rows_.sort(std::move(columns), isReversed);
    unmark();
    if (at != nowhere) moveToRow(at);
}

void Sheet::refresh() {
    const unsigned at = row();
    rows_.refresh();
    unmark();
    if (at == nowhere || !moveToRow(at)) clampPlace();
}

}  // namespace vek::browse
