#include <vekdb/edit_log.h>

#include <vekdb/table.h>
#include "vekdb/edits/edit_line.h"

EditLog::EditLog(vekdb& table) : table_(table), edits_(std::make_unique<Line>()) {}

EditLog::~EditLog() = default;

void EditLog::beginStep() noexcept {
    if (depth_++ == 0) isStepBegun_ = false;
}

void EditLog::endStep() noexcept {
    if (depth_ > 0) --depth_;
}

bool EditLog::canRedo() const {
    return depth_ == 0 && done_ < edits_->size();
}

void EditLog::forget() noexcept {
    saved_ = hasUnsavedEdits() ? nowhere : 0;
    edits_->clear();
    done_ = 0;
}

// Once there is room, an edit that was made can be entered whatever happens.
void EditLog::make(Edit edit) {
    edits_->makeRoom();
    Late late = exchange(edit);
    enter(std::move(edit));
    tell((*edits_)[done_ - 1], done_ - 1, late);
    late.rethrow();
}

void EditLog::enter(Edit edit) noexcept {
    edits_->dropFrom(done_);
    if (saved_ != nowhere && saved_ > done_) saved_ = nowhere;
    edit.beginsStep = depth_ == 0 || !isStepBegun_;
    isStepBegun_ = true;
    edits_->enter(std::move(edit));
    ++done_;
}

EditLog::Outcome EditLog::undo(std::size_t atMost) {
    Outcome outcome;
    while (canUndo() && outcome.edits < atMost) {
        Edit& edit = (*edits_)[done_ - 1];
        stepOver(edit, true, outcome);
        outcome.isStepOver = edit.beginsStep;
        if (outcome.isStepOver) break;
    }
    return outcome;
}

EditLog::Outcome EditLog::redo(std::size_t atMost) {
    Outcome outcome;
    while (canRedo() && outcome.edits < atMost) {
        stepOver((*edits_)[done_], false, outcome);
        outcome.isStepOver = done_ == edits_->size() || (*edits_)[done_].beginsStep;
        if (outcome.isStepOver) break;
    }
    return outcome;
}

std::size_t EditLog::editsToUndo() const {
    if (!canUndo()) return 0;
    std::size_t first = done_ - 1;
    while (first > 0 && !(*edits_)[first].beginsStep) --first;
    return done_ - first;
}

std::size_t EditLog::editsToRedo() const {
    if (!canRedo()) return 0;
    std::size_t end = done_ + 1;
    while (end < edits_->size() && !(*edits_)[end].beginsStep) ++end;
    return end - done_;
}

void EditLog::stepOver(Edit& edit, bool isUndo, Outcome& outcome) {
    Late late = exchange(edit);
    isUndo ? --done_ : ++done_;
    ++outcome.edits;
    const bool isOfColumns = edit.kind == Edit::Kind::columns;
    outcome.hasOtherColumns |= isOfColumns;
    outcome.hasMovedRows |= edit.kind == Edit::Kind::rows;
    outcome.row = isOfColumns ? none : edit.row;
    outcome.column = isOfColumns || edit.kind == Edit::Kind::cell ? edit.column : none;
    tell(edit, isUndo ? done_ : done_ - 1, late);
    late.rethrow();
}

void EditLog::Follower::cellChanged(unsigned, unsigned) {}
void EditLog::Follower::tagChanged(unsigned) {}
void EditLog::Follower::columnsChanged() {}

void EditLog::tell(const Edit& edit, std::size_t place, Late& late) const {
    if (follower_ == nullptr) return;
    try {
        edit.tell(*follower_, place);
    } catch (...) {
        if (!late.thrown) late.thrown = std::current_exception();
    }
}

void EditLog::Edit::tell(Follower& follower, std::size_t place) const {
    switch (kind) {
        case Kind::cell:
            return follower.cellChanged(row, column);
        case Kind::tag:
            return follower.tagChanged(row);
        case Kind::columns:
            return follower.columnsChanged();
        case Kind::rows:
            isTakenOut ? follower.rowsDeleted(place, row, bulk->count)
                       : follower.rowsInserted(place, row, bulk->count);
    }
}
