#include "tools/vek/browse/row_stack.h"

#include <algorithm>
#include <numeric>

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

VDBView RowStack::chosen(const Selection& selection, const VDBView& below) const {
    std::vector<char> isBelow(log_.rowCount());
    for (unsigned row : rowsOf(below)) isBelow[row] = 1;
    std::vector<unsigned> rows = rowsOf(selectRows(log_, selection).view);
    std::erase_if(rows, [&](unsigned row) { return isBelow[row] == 0; });
    return viewOfRows(log_, rows);
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
    const bool isSorted = shown_.get() != levels_.back().view.get();
    std::vector<unsigned> shown;
    if (isSorted) shown = movedRows(shown_, first, count);
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
    if (!isSorted) {
        shown_ = levels_.back().view;
        return;
    }
    putIn(shown, std::size_t{behindPlace} + 1, first, count);
    shown_ = viewOfRows(log_, shown);
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
