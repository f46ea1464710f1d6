#include "tools/vek/browse/row_stack.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "formats/choosing/select.h"

namespace vek::browse {

namespace {

VDBView viewOfRows(const Log& log, const std::vector<unsigned>& rows) {
    VDBView view(log.table.get());
    view->sizeIndexFor(static_cast<int>(rows.size()));
    for (unsigned row : rows) view->append(static_cast<int>(row));
    return view;
}

VDBView viewOfAll(const Log& log) {
    VDBView view(log.table.get());
    view->buildIndex();
    return view;
}

bool isWhole(const Log& log, const VDBView& view, unsigned added) {
    return view->get_num_records() + added == log.rowCount();
}

// All rows in their order have a new one at the end, wherever it came.
void appendLast(const Log& log, VDBView& view, unsigned count) {
    for (unsigned row = log.rowCount() - count; row < log.rowCount(); ++row) {
        view->append(static_cast<int>(row));
    }
}

// Puts the rows that came behind a place of a list.
void putIn(std::vector<unsigned>& rows, std::size_t at, unsigned first, unsigned count) {
    std::vector<unsigned> came(count);
    std::iota(came.begin(), came.end(), first);
    at = std::min(at, rows.size());
    rows.insert(rows.begin() + static_cast<std::ptrdiff_t>(at), came.begin(), came.end());
}

std::vector<unsigned> movedRows(const VDBView& view, unsigned first, unsigned count) {
    std::vector<unsigned> rows = rowsOf(view);
    for (unsigned& row : rows) row += row >= first ? count : 0;
    return rows;
}

}  // namespace

Selection rowsWhere(const std::string& condition) {
    Selection selection;
    selection.where = {condition};
    return selection;
}

Selection taggedRowsOnly() {
    Selection selection;
    selection.tagged = true;
    return selection;
}

RowStack::RowStack(const Log& log) : log_(log) {
    levels_.push_back({"", {}, viewOfAll(log)});
    show();
}

unsigned RowStack::placeOf(unsigned row) const {
    if (row < size() && rowAt(row) == row) return row;
    const int place = shown_->findViewIndexForBaseRow(row);
    return place < 0 ? nowhere : static_cast<unsigned>(place);
}

std::vector<unsigned> RowStack::chosenRows(const Selection& selection, const VDBView& below) const {
    std::vector<unsigned> rows = selectedRows(log_, selection);
    if (isWhole(log_, below, 0)) return rows;
    std::vector<char> isBelow(log_.rowCount());
    for (unsigned row : rowsOf(below)) isBelow[row] = 1;
    std::erase_if(rows, [&](unsigned row) { return isBelow[row] == 0; });
    return rows;
}

VDBView RowStack::chosen(const Selection& selection, const VDBView& below) const {
    return viewOfRows(log_, chosenRows(selection, below));
}

VDBView RowStack::sorted(const VDBView& view, const std::vector<unsigned>& order) const {
    VDBView made = viewOfRows(log_, rowsOf(view));
    if (!order.empty()) sortBy(order, made);
    if (!isReversed_) return made;
    std::vector<unsigned> rows = rowsOf(made);
    std::reverse(rows.begin(), rows.end());
    return viewOfRows(log_, rows);
}

void RowStack::show() {
    const VDBView& top = levels_.back().view;
    shown_ = order_.empty() && !isReversed_ ? top : sorted(top, order_);
}

void RowStack::filter(const std::string& name, const Selection& selection) {
    levels_.push_back({name, selection, chosen(selection, levels_.back().view)});
    show();
}

bool RowStack::unfilter() {
    if (levels_.size() == 1) return false;
    levels_.pop_back();
    show();
    return true;
}

void RowStack::sort(std::vector<unsigned> columns, bool isReversed) {
    order_ = std::move(columns);
    isReversed_ = isReversed;
    show();
}

void RowStack::refresh() {
    levels_.front().view = viewOfAll(log_);
    for (std::size_t i = 1; i < levels_.size(); ++i) {
        levels_[i].view = chosen(levels_[i].selection, levels_[i - 1].view);
    }
    show();
}

void RowStack::rowsInserted(unsigned first, unsigned count, unsigned behindPlace) {
    if (isSuspended_) return numbers_.insert(first, std::vector<unsigned>(count, nowhere));
    std::vector<unsigned> shown;
    const bool wasSorted = isSorted();
    if (wasSorted) shown = movedRows(shown_, first, count);
    for (Level& level : levels_) {
        if (isWhole(log_, level.view, count)) {
            appendLast(log_, level.view, count);
            continue;
        }
        std::vector<unsigned> rows = movedRows(level.view, first, count);
        const auto at = std::lower_bound(rows.begin(), rows.end(), first) - rows.begin();
        putIn(rows, static_cast<std::size_t>(at), first, count);
        level.view = viewOfRows(log_, rows);
    }
    if (!wasSorted) {
        shown_ = levels_.back().view;
        return;
    }
    putIn(shown, std::size_t{behindPlace} + 1, first, count);
    shown_ = viewOfRows(log_, shown);
}

void RowStack::rowsDeleted(unsigned first, unsigned count) {
    if (isSuspended_) numbers_.take(first, count);
}

// Of the rows that are shown meanwhile, none, nothing is to be told. All rows in their order follow
// quickly as they are.
void RowStack::suspend() {
    if (isSuspended_ || (!isSorted() && isWhole(log_, shown_, 0))) return;
    wasSorted_ = isSorted();
    if (wasSorted_) sortedRows_ = rowsOf(shown_);
    for (Level& level : levels_) {
        level.isWhole = isWhole(log_, level.view, 0);
        if (!level.isWhole) level.rows = rowsOf(level.view);
    }
    rowsBefore_ = log_.rowCount();
    numbers_.count(rowsBefore_);
    shown_ = VDBView(log_.table.get());
    for (Level& level : levels_) level.view = shown_;
    isSuspended_ = true;
}

/// Where the rows are that were there when the stack was suspended, and which ones came.
class RowStack::Moves {
public:
    explicit Moves(const RowList& numbers, unsigned rowsBefore) : now_(rowsBefore, nowhere) {
        for (unsigned row = 0; row < numbers.size(); ++row) {
            numbers[row] == nowhere ? came_.push_back(row) : void(now_[numbers[row]] = row);
        }
    }

    const std::vector<unsigned>& came() const { return came_; }
    /// Rows of then as they are now, without those that went.
    std::vector<unsigned> moved(const std::vector<unsigned>& rows) const {
        std::vector<unsigned> moved;
        moved.reserve(rows.size() + came_.size());
        for (unsigned row : rows) {
            if (now_[row] != nowhere) moved.push_back(now_[row]);
        }
        return moved;
    }

private:
    std::vector<unsigned> now_;
    std::vector<unsigned> came_;
};

void RowStack::resume(Level& level, const Moves& moves) {
    if (level.isWhole) {
        level.view = viewOfAll(log_);
        return;
    }
    const std::vector<unsigned> moved = moves.moved(std::exchange(level.rows, {}));
    std::vector<unsigned> rows(moved.size() + moves.came().size());
    std::merge(moved.begin(), moved.end(), moves.came().begin(), moves.came().end(), rows.begin());
    level.view = viewOfRows(log_, rows);
}

void RowStack::resume(unsigned behindPlace) {
    if (!isSuspended_) return;
    const Moves moves(numbers_, rowsBefore_);
    numbers_.clear();
    isSuspended_ = false;
    for (Level& level : levels_) resume(level, moves);
    shown_ = levels_.back().view;
    if (!wasSorted_) return;
    std::vector<unsigned> rows = moves.moved(std::exchange(sortedRows_, {}));
    const auto at = std::min<std::size_t>(std::size_t{behindPlace} + 1, rows.size());
    rows.insert(rows.begin() + static_cast<std::ptrdiff_t>(at), moves.came().begin(),
                moves.came().end());
    shown_ = viewOfRows(log_, rows);
}

std::vector<std::string> RowStack::path() const {
    std::vector<std::string> names;
    for (const Level& level : levels_) {
        if (!level.name.empty()) names.push_back(level.name);
    }
    std::string order;
    for (unsigned column : order_) {
        order += (order.empty() ? "by " : ", ") + log_.columnName(column);
    }
    if (isReversed_) order += order.empty() ? "reversed" : " reversed";
    if (!order.empty()) names.push_back(order);
    return names;
}

}  // namespace vek::browse
