#include "log_cursor.h"

#include <algorithm>

namespace vek::sql {

void LogCursor::filter(const char* plan, int count, sqlite3_value** values) {
    filter_.clear();
    filter_.emplace_back(table_.facts(), plan, count, values);
    isList_ = filter_[0].find(*image_, rows_);
    at_ = isList_ ? 0 : filter_[0].first();
    end_ = isList_ ? static_cast<unsigned>(rows_.size())
                   : std::min(filter_[0].end(), image_->rowCount());
    skip();
}

void LogCursor::next() {
    ++at_;
    skip();
}

void LogCursor::skip() {
    record_ = nullptr;
    while (!isAtEnd() && !takes()) ++at_;
}

const dbrecord& LogCursor::record() const {
    if (record_ == nullptr) record_ = image_->record(row());
    return *record_;
}

bool LogCursor::takes() const {
    const RowFilter& filter = filter_[0];
    if (isList_ && (row() < filter.first() || row() >= filter.end())) return false;
    return image_->isThere(row()) && filter.takes(*image_, row());
}

void LogCursor::column(sqlite3_context* context, int column) const {
    const TableColumns& columns = table_.columns();
    // What an UPDATE leaves as it is need not be said.
    if (sqlite3_vtab_nochange(context) != 0) return;
    if (column >= 0 && column < columns.number()) {
        answerText(context, image_->cellOf(record(), static_cast<unsigned>(column)));
    } else if (column == columns.number()) {
        sqlite3_result_int64(context, rowid());
    } else if (column == columns.line()) {
        const std::size_t line = image_->lineOf(row());
        if (line != 0) sqlite3_result_int64(context, static_cast<sqlite3_int64>(line));
    } else if (column == columns.tagged()) {
        sqlite3_result_int(context, image_->isTagged(row()) ? 1 : 0);
    } else if (const std::string rate = table_.rate(*image_); !rate.empty()) {
        answerText(context, rate);
    }
}

}  // namespace vek::sql
