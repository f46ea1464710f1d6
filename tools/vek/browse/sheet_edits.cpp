#include <algorithm>
#include <utility>

#include <vekdb/host/text_util.h>
#include "formats/log/column_edits.h"
#include "formats/log/column_names.h"
#include "formats/text/text_lines.h"
#include "tools/vek/browse/sheet.h"

namespace vek::browse {

namespace {

constexpr std::size_t fewRows = 64;    // that views follow one by one
constexpr unsigned mostAtOnce = 1024;  // so that none keeps a key waiting

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
    addTagged(0, log_.rowCount(), rows);
    return rows;
}

void Sheet::addTagged(unsigned from, unsigned to, Rows& rows) const {
    const unsigned column = log_.findColumn("Tag");
    for (unsigned row = from; column != noColumn && row < to; ++row) {
        if (isTag(log_.cell(row, column))) rows.push_back(row);
    }
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
    {
        const EditLog::Step step(edits_);
        // The cursor follows what is taken back last.
        const std::vector<EventSpeeds::Note> notes = movedSpeeds(row, column, text);
        edits_.set(row, column, text);
        for (const EventSpeeds::Note& note : notes) edits_.set(row, note.column, note.text);
    }
    settle();
}

std::vector<EventSpeeds::Note> Sheet::movedSpeeds(unsigned row, unsigned column,
                                                  std::string_view text) const {
    const EventSpeeds speeds(log_);
    if (!speeds.concern(column)) return {};
    const auto before = [&](unsigned at) { return log_.cell(row, at); };
    return speeds.moved(before, [&](unsigned at) { return at == column ? text : before(at); });
}

void Sheet::insertRow(bool isBehind) {
    unsigned at = row() == nowhere ? log_.rowCount() : row() + (isBehind ? 1 : 0);
    unmark();
    edits_.insertRows(at, 1);
    moveToRow(at);
    settle();
}

Sheet::Deleting::Deleting(Sheet& sheet, const Rows& rows)
    : sheet_(sheet), step_(sheet.edits_), goes_(sheet.log_.rowCount()), at_(sheet.log_.rowCount()) {
    for (unsigned row : rows) goes_[row] = 1;
    sheet_.unmark();
    if (rows.size() > fewRows) sheet_.rows_.suspend();
}

std::size_t Sheet::Deleting::step() {
    while (at_ > 0 && goes_[at_ - 1] == 0) --at_;
    const unsigned end = at_;
    while (at_ > 0 && goes_[at_ - 1] != 0 && end - at_ < mostAtOnce) --at_;
    return at_ == end ? 0 : sheet_.edits_.deleteRows(at_, end - at_);
}

void Sheet::deleteRows(const Rows& rows) {
    {
        Deleting deleting(*this, rows);
        while (deleting.step() > 0) {
        }
    }
    settle();
}

void Sheet::renameColumn(unsigned column, const std::string& name) {
    const unsigned other = log_.findColumn(name);
    if (name.empty()) throw Failure{wrongUsage, "a column needs a name"};
    if (other != noColumn && other != column) {
        throw Failure{wrongUsage, "there is a column " + inQuotes(name) + " already"};
    }
    edits_.renameColumn(column, name.c_str());
    askRangesByNewNames(log_);
    settle();
}

Sheet::Undoing::Undoing(Sheet& sheet, bool isRedo)
    : sheet_(sheet),
      isRedo_(isRedo),
      count_(isRedo ? sheet.edits_.editsToRedo() : sheet.edits_.editsToUndo()) {
    if (count_ > fewRows) sheet_.rows_.suspend();
}

Sheet::Undoing::~Undoing() {
    sheet_.last_ = last_;
}

std::size_t Sheet::Undoing::step() {
    if (count_ == 0 || (last_.edits > 0 && last_.isStepOver)) return 0;
    last_ = isRedo_ ? sheet_.edits_.redo(1) : sheet_.edits_.undo(1);
    return last_.edits;
}

// The cursor goes where something changed.
void Sheet::follow(const EditLog::Outcome& outcome) {
    if (outcome.row != EditLog::none && outcome.row < log_.rowCount()) moveToRow(outcome.row);
    for (std::size_t at = 0; outcome.column != EditLog::none && at < columns_.size(); ++at) {
        if (columns_[at].column == outcome.column && !columns_[at].isHidden) at_ = at;
    }
}

Sheet::Appending::Appending(Sheet& to, const Sheet& from, Rows rows)
    : to_(to),
      from_(from),
      step_(to.edits_),
      rows_(std::move(rows)),
      places_(sameColumns(to.log_, from.log_)),
      values_(places_.size()) {
    if (rows_.size() > fewRows) to_.rows_.suspend();
}

std::size_t Sheet::Appending::step() {
    if (done_ == rows_.size()) return 0;
    const unsigned row = rows_[done_++];
    for (std::size_t i = 0; i < places_.size(); ++i) {
        values_[i] = places_[i] == noColumn ? "" : from_.log_.cell(row, places_[i]);
    }
    to_.edits_.insertRow(to_.log_.rowCount(), values_.data(), values_.size());
    return 1;
}

std::size_t Sheet::Appending::lost() const {
    const std::vector<unsigned> back = sameColumns(from_.log_, to_.log_);
    return static_cast<std::size_t>(std::count(back.begin(), back.end(), noColumn));
}

void Sheet::rowsInserted(std::size_t edit, unsigned first, unsigned count) {
    if (origins_.empty()) origins_.count(log_.rowCount() - count);
    std::vector<unsigned> came(count, nowhere);
    const auto known = gone_.find(edit);
    if (known != gone_.end() && known->second.size() == count) came = std::move(known->second);
    if (known != gone_.end()) gone_.erase(known);
    origins_.insert(first, came);
    rows_.rowsInserted(first, count, place_);
    recovery_.rowsInserted(log_, first, count);
}

void Sheet::rowsDeleted(std::size_t edit, unsigned first, unsigned count) {
    if (origins_.empty()) origins_.count(log_.rowCount() + count);
    gone_[edit] = origins_.take(first, count);
    rows_.rowsDeleted(first, count);
    recovery_.rowsDeleted(first, count);
}

void Sheet::touch(unsigned row) {
    const unsigned origin = originOf(row);
    if (origin == nowhere) return;
    if (origin >= touched_.size()) touched_.resize(std::max(origin + 1, log_.rowCount()));
    touched_[origin] = true;
}

void Sheet::cellChanged(unsigned row, unsigned column) {
    touch(row);
    recovery_.cellChanged(log_, row, column);
}

void Sheet::columnsChanged() {
    areAllTouched_ = true;
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
    rows_.resume(place_);
    if (last_.edits > 0) follow(std::exchange(last_, {}));
    clampPlace();
    recovery_.flush();
}

}  // namespace vek::browse
