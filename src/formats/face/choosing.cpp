#include <algorithm>

#include "formats/face/guarded.h"
#include "formats/face/inside.h"

namespace vek {

namespace {

// A page of rows that were chosen already, in their order.
formats::Selected pageOf(const formats::Log& log, const formats::Selected& all, std::size_t offset,
                         std::size_t limit) {
    std::size_t end = all.matched;
    if (limit != 0 && offset < end) end = std::min(end, offset + std::min(limit, end - offset));
    std::vector<unsigned> rows;
    for (std::size_t i = offset; i < end; ++i) {
        rows.push_back(all.view->baseIndex(static_cast<unsigned>(i)));
    }
    return {formats::viewOf(log, rows), all.matched};
}

}  // namespace

Choice& Choice::where(std::string_view condition) {
    conditions_.emplace_back(condition);
    return *this;
}

Choice& Choice::where(std::string_view column, Operator op, std::string_view text) {
    built_.push_back({std::string(column), op, std::string(text)});
    return *this;
}

Choice& Choice::any(bool isEnough) {
    any_ = isEnough;
    return *this;
}

Choice& Choice::at(std::string_view code) {
    at_ = code;
    return *this;
}

Choice& Choice::tagged(bool only) {
    tagged_ = only;
    return *this;
}

Choice& Choice::unique(std::string_view column) {
    unique_ = column;
    return *this;
}

Choice& Choice::duplicates(std::string_view column) {
    duplicates_ = column;
    return *this;
}

Choice& Choice::order(std::string_view columns) {
    order_ = columns;
    orderNames_.clear();
    return *this;
}

Choice& Choice::order(std::vector<std::string> columns) {
    order_.clear();
    orderNames_ = std::move(columns);
    return *this;
}

Choice& Choice::reverse(bool isReversed) {
    reverse_ = isReversed;
    return *this;
}

Choice& Choice::limit(std::size_t rows) {
    limit_ = rows;
    return *this;
}

Choice& Choice::offset(std::size_t rows) {
    offset_ = rows;
    return *this;
}

formats::Selection LogInside::selectionOf(const Choice& choice) const {
    formats::Selection selection;
    selection.where = choice.conditions_;
    for (const Choice::Built& built : choice.built_) {
        selection.conditions.push_back({log.requireColumn(built.column), built.op, built.text});
    }
    selection.any = choice.any_;
    selection.at = choice.at_;
    selection.tagged = choice.tagged_;
    selection.unique = choice.unique_;
    selection.duplicates = choice.duplicates_;
    selection.sort = choice.order_;
    for (const std::string& name : choice.orderNames_) {
        selection.sortColumns.push_back(log.requireColumn(name));
    }
    selection.reverse = choice.reverse_;
    return selection;
}

Result<View> Log::choose(const Choice& choice) const {
    return guarded([&]() -> Result<View> {
        const formats::Log& log = log_->log;
        const formats::Selection selection = log_->selectionOf(choice);
        formats::Selected selected = log_->kept ? formats::selectRows(log, selection, *log_->kept)
                                                : formats::selectRows(log, selection);
        selected = pageOf(log, selected, choice.offset_, choice.limit_);
        return View(log_, selected.view, selected.matched);
    });
}

Result<View> Log::chooseAmong(const std::vector<unsigned>& rows, const Choice& choice) const {
    return guarded([&]() -> Result<View> {
        const formats::Log& log = log_->log;
        std::vector<unsigned> shown = rows;
        std::erase_if(shown, [&](unsigned row) { return !log_->shows(row); });
        formats::Selection selection = log_->selectionOf(choice);
        selection.limit = choice.limit_;
        selection.offset = choice.offset_;
        const formats::Selected selected = formats::selectInOrder(log, selection, std::move(shown));
        return View(log_, selected.view, selected.matched);
    });
}

}  // namespace vek
