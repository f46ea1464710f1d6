#include <algorithm>
#include <numeric>

#include <vekdb/host/text_util.h>
#include "formats/log/column_names.h"
#include "formats/text/text_lines.h"
#include "tools/vek/browse/sheet.h"

namespace vek::browse {

namespace {

bool isTag(std::string_view cell) {
    return parseInt(cell) != 0;
}

}  // namespace

bool Sheet::isTagged(unsigned row) const {
    const unsigned column = log_.findColumn("Tag");
    return column != noColumn && isTag(log_.cell(row, column));
}

Sheet::Rows Sheet::taggedRows() const {
    Rows rows;
    const unsigned column = log_.findColumn("Tag");
    for (unsigned row = 0; column != noColumn && row < log_.rowCount(); ++row) {
        if (isTag(log_.cell(row, column))) rows.push_back(row);
    }
    return rows;
}

unsigned Sheet::tagColumn() {
    const unsigned column = log_.findColumn("Tag");
    if (column != noColumn) return column;
    return edits_.addColumn({"Tag", DBFieldTypes::text});
}

bool Sheet::canTag(const Rows& rows, Tagging how) const {
    return !rows.empty() && (how != Tagging::untag || log_.findColumn("Tag") != noColumn);
}

// A cell that says so already, in whatever words, stays as it is.
void Sheet::tagRow(unsigned row, Tagging how) {
    const unsigned column = tagColumn();
    const bool was = isTag(log_.cell(row, column));
    const bool wants = how == Tagging::invert ? !was : how == Tagging::tag;
    if (was != wants) edits_.set(row, column, wants ? "1" : "0");
}

void Sheet::tag(const Rows& rows, Tagging how) {
    if (!canTag(rows, how)) return;
    {
        const EditLog::Step step(edits_);
        for (unsigned row : rows) tagRow(row, how);
    }
    settle();
}

void Sheet::setCell(unsigned row, unsigned column, const std::string& text) {
    edits_.set(row, column, text);
    settle();
}

void Sheet::insertRow(bool isBehind) {
    unsigned at = row() == nowhere ? log_.rowCount() : row() + (isBehind ? 1 : 0);
    unmark();
    edits_.insertRows(at, 1);
    moveToRow(at);
    settle();
}

// From the last on, so that the numbers of the others stay; neighbours go together.
void Sheet::deleteRows(Rows rows) {
    std::sort(rows.begin(), rows.end());
    unmark();
    {
        const EditLog::Step step(edits_);
        while (!rows.empty()) {
            std::size_t run = 1;
            while (run < rows.size() &&
                   rows[rows.size() - run - 1] + 1 == rows[rows.size() - run]) {
                ++run;
            }
            edits_.deleteRows(rows[rows.size() - run], static_cast<unsigned>(run));
            rows.resize(rows.size() - run);
        }
    }
    settle();
}

void Sheet::renameColumn(unsigned column, const std::string& name) {
    const unsigned other = log_.findColumn(name);
    if (name.empty()) throw Failure{wrongUsage, "a column needs a name"};
    if (other != noColumn && other != column && log_.columnName(other) != "" &&
        sameText(log_.columnName(other), name)) {
        throw Failure{wrongUsage, "there is a column " + inQuotes(name) + " already"};
    }
    edits_.renameColumn(column, name.c_str());
    settle();
}

bool Sheet::undo() {
    const EditLog::Outcome outcome = edits_.undo();
    follow(outcome);
    return outcome.edits > 0;
}

bool Sheet::redo() {
    const EditLog::Outcome outcome = edits_.redo();
    follow(outcome);
    return outcome.edits > 0;
}

// The cursor goes where something changed.
void Sheet::follow(const EditLog::Outcome& outcome) {
    if (outcome.row != EditLog::none && outcome.row < log_.rowCount()) moveToRow(outcome.row);
    for (std::size_t at = 0; outcome.column != EditLog::none && at < columns_.size(); ++at) {
        if (columns_[at].column == outcome.column && !columns_[at].isHidden) at_ = at;
    }
    settle();
}

std::size_t Sheet::append(const Sheet& from, const Rows& rows) {
    const std::vector<unsigned> places = sameColumns(log_, from.log_);
    std::vector<std::string_view> values(places.size());
    {
        const EditLog::Step step(edits_);
        for (unsigned row : rows) {
            for (std::size_t i = 0; i < places.size(); ++i) {
                values[i] = places[i] == noColumn ? "" : from.log_.cell(row, places[i]);
            }
            edits_.insertRow(log_.rowCount(), values.data(), values.size());
        }
    }
    settle();
    const std::vector<unsigned> back = sameColumns(from.log_, log_);
    return static_cast<std::size_t>(std::count(back.begin(), back.end(), noColumn));
}

void Sheet::rowsInserted(std::size_t edit, unsigned first, unsigned count) {
    if (origins_.empty()) {
        origins_.resize(log_.rowCount() - count);
        std::iota(origins_.begin(), origins_.end(), 0u);
    }
    std::vector<unsigned> came(count, nowhere);
    const auto known = gone_.find(edit);
    if (known != gone_.end() && known->second.size() == count) came = std::move(known->second);
    if (known != gone_.end()) gone_.erase(known);
    origins_.insert(origins_.begin() + first, came.begin(), came.end());
    rows_.rowsInserted(first, count, place_);
    recovery_.rowsInserted(log_, first, count);
}

void Sheet::rowsDeleted(std::size_t edit, unsigned first, unsigned count) {
    if (origins_.empty()) {
        origins_.resize(log_.rowCount() + count);
        std::iota(origins_.begin(), origins_.end(), 0u);
    }
    const auto from = origins_.begin() + first;
    gone_[edit].assign(from, from + count);
    origins_.erase(from, from + count);
    recovery_.rowsDeleted(first, count);
}

void Sheet::cellChanged(unsigned row, unsigned column) {
    recovery_.cellChanged(log_, row, column);
}

void Sheet::columnsChanged() {
    keepRepeatedNames(log_);
    recovery_.columnsChanged(log_);
    fitColumns();
}

// A column that came is shown behind the others, one that went is not.
void Sheet::fitColumns() {
    const unsigned count = log_.columnCount();
    std::erase_if(columns_, [&](const Column& column) { return column.column >= count; });
    for (unsigned column = knownColumns_; column < count; ++column) columns_.push_back({column});
    knownColumns_ = count;
    at_ = columns_.empty() ? 0 : std::min(at_, columns_.size() - 1);
}

void Sheet::settle() {
    clampPlace();
    recovery_.flush();
}

}  // namespace vek::browse
