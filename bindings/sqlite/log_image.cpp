#include "log_image.h"

#include <algorithm>

#include "guard.h"

namespace vek::sql {

void LogImage::note(Change::Kind kind, unsigned row, unsigned column, std::string_view before) {
    journal_.push_back({before_.size(), row, static_cast<std::uint16_t>(column), kind});
    try {
        before_ += before;
    } catch (...) {
        journal_.pop_back();
        throw;
    }
}

void LogImage::dropLast() noexcept {
    before_.resize(journal_.back().before);
    journal_.pop_back();
}

void LogImage::set(unsigned row, unsigned column, std::string_view text) {
    const std::string_view before = cell(row, column);
    if (before == text) return;
    note(Change::cell, row, column, before);
    const Result<void> done = log_.set(log_.at(row), log_.columns().at(placeOf(column)), text);
    lookups_.erase(column);
    if (done) return;
    dropLast();
    throw Refusal(done.reason());
}

void LogImage::setTagged(unsigned row, unsigned tagColumn, bool isTagged) {
    if (this->isTagged(row) != isTagged) set(row, tagColumn, isTagged ? "1" : "0");
}

void LogImage::setGone(unsigned row, bool isGone) {
    if (row >= gone_.size()) gone_.resize(std::max(row + 1, rowCount()));
    gone_[row] = isGone;
}

// A row that is added is there only when its coming can be taken back.
unsigned LogImage::addRow() {
    const unsigned row = rowCount();
    setGone(row, false);
    note(Change::added, row, 0, {});
    const Result<Row> added = log_.addRow();
    lookups_.clear();
    if (added) return row;
    dropLast();
    throw Refusal(added.reason());
}

void LogImage::removeRow(unsigned row) {
    setGone(row, false);
    note(Change::removed, row, 0, {});
    gone_[row] = true;
}

void LogImage::undo(const Change& change) {
    if (change.kind != Change::cell) return setGone(change.row, change.kind == Change::added);
    const Column column = log_.columns().at(placeOf(change.column));
    const std::string_view before = std::string_view(before_).substr(change.before);
    if (!log_.set(log_.at(change.row), column, before)) isBroken_ = true;
}

void LogImage::undoTo(std::size_t changes) noexcept {
    lookups_.clear();
    while (journal_.size() > changes) {
        try {
            undo(journal_.back());
        } catch (...) {
            isBroken_ = true;
        }
        dropLast();
    }
}

void LogImage::forgetJournal() {
    journal_.clear();
    before_.clear();
}

bool LogImage::isRenumbered() const {
    return std::any_of(journal_.begin(), journal_.end(),
                       [](const Change& change) { return change.kind != Change::cell; });
}

std::vector<unsigned> LogImage::rowsThere() const {
    std::vector<unsigned> rows;
    rows.reserve(rowCount());
    for (unsigned row = 0; row < rowCount(); ++row) {
        if (isThere(row)) rows.push_back(row);
    }
    return rows;
}

const ColumnLookup* LogImage::lookup(unsigned column) {
    Asked& asked = lookups_[column];
    if (asked.lookup == nullptr && ++asked.count > 1) {
        asked.lookup = std::make_unique<ColumnLookup>(
            rowCount(), [&](unsigned row) { return cell(row, column); });
    }
    return asked.lookup.get();
}

}  // namespace vek::sql
