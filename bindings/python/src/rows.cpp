#include "rows.h"

#include <vekdb/table.h>
#include <vekdb/views/view_rep.h>

#include "errors.h"

namespace vekpy {

RowList::RowList(Shared log, std::vector<unsigned> rows, std::size_t matched,
                 std::shared_ptr<RowList> base, const Hold& hold)
    : log_(std::move(log)),
      rows_(std::move(rows)),
      matched_(matched),
      base_(std::move(base)),
      seen_(base_ ? base_->drops_ : hold.rowRemovals()) {}

// A view of a view of a view ... goes without a call within a call for each.
RowList::~RowList() {
    while (base_ && base_.use_count() == 1) base_ = std::exchange(base_->base_, nullptr);
}

bool RowList::isBehind(const Hold& hold) const {
    return seen_ != (base_ ? base_->drops_ : hold.rowRemovals());
}

const std::vector<unsigned>& RowList::rows(const Hold& hold) {
    std::vector<RowList*> stack;
    for (RowList* list = this; list != nullptr; list = list->base_.get()) stack.push_back(list);
    for (; !stack.empty(); stack.pop_back()) {
        if (stack.back()->isBehind(hold)) stack.back()->follow(hold);
    }
    return rows_;
}

void RowList::follow(const Hold& hold) {
    const std::size_t before = rows_.size();
    if (base_) {
        std::vector<char> isThere(hold->table().get_num_records());
        for (unsigned row : base_->rows_) isThere[row] = 1;
        std::erase_if(rows_, [&](unsigned row) { return isThere[row] == 0; });
        seen_ = base_->drops_;
    } else {
        std::erase_if(rows_, [&](unsigned row) { return !hold.shows(row); });
        seen_ = hold.rowRemovals();
    }
    if (rows_.size() != before) ++drops_;
}

void RowList::put(std::vector<unsigned> rows, std::size_t matched) {
    rows_ = std::move(rows);
    matched_ = matched;
    ++drops_;
}

void RowList::remove(std::size_t first, std::size_t behind) {
    rows_.erase(rows_.begin() + static_cast<std::ptrdiff_t>(first),
                rows_.begin() + static_cast<std::ptrdiff_t>(behind));
    ++drops_;
}

unsigned placeOf(py::ssize_t index, std::size_t size) {
    const auto count = static_cast<py::ssize_t>(size);
    const py::ssize_t place = index < 0 ? index + count : index;
    if (place >= 0 && place < count) return static_cast<unsigned>(place);
    throw py::index_error("row " + std::to_string(index) + " of " + std::to_string(count));
}

std::vector<std::size_t> placesOf(const py::slice& slice, std::size_t size) {
    py::ssize_t start = 0, stop = 0, step = 0, count = 0;
    if (!slice.compute(static_cast<py::ssize_t>(size), &start, &stop, &step, &count)) {
        throw py::error_already_set();
    }
    std::vector<std::size_t> places;
    places.reserve(static_cast<std::size_t>(count));
    for (py::ssize_t i = 0; i < count; ++i) {
        places.push_back(static_cast<std::size_t>(start + i * step));
    }
    return places;
}

std::vector<unsigned> rowsOf(const vek::View& view) {
    std::vector<unsigned> rows(view.size());
    for (unsigned i = 0; i < rows.size(); ++i) rows[i] = view.view()->baseIndex(i);
    return rows;
}

std::vector<unsigned> shownRows(const Hold& hold) {
    std::vector<unsigned> rows(hold->size());
    for (unsigned i = 0; i < rows.size(); ++i) rows[i] = hold->at(i).index();
    return rows;
}

vek::View viewOf(const Hold& hold, const std::vector<unsigned>& rows) {
    return valueOf(hold->chooseAmong(rows));
}

}  // namespace vekpy
