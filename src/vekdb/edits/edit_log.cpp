#include <vekdb/edit_log.h>

#include <algorithm>

#include <vekdb/table.h>
#include "vekdb/edits/edit.h"

EditLog::EditLog(vekdb& table) : table_(table) {}

EditLog::~EditLog() = default;

void EditLog::beginStep() noexcept {
    if (depth_++ == 0) isStepBegun_ = false;
}

void EditLog::endStep() noexcept {
    if (depth_ > 0) --depth_;
}

bool EditLog::canRedo() const {
    return depth_ == 0 && done_ < edits_.size();
}

void EditLog::forget() noexcept {
    saved_ = hasUnsavedEdits() ? nowhere : 0;
    edits_.clear();
    done_ = 0;
}

// Once there is room, an edit that was made can be entered whatever happens.
void EditLog::makeRoom() {
    if (done_ < edits_.capacity()) return;
    edits_.reserve(std::max<std::size_t>(16, 2 * edits_.capacity()));
}

void EditLog::make(Edit edit) {
    makeRoom();
    Late late = exchange(edit);
    enter(std::move(edit));
    tell(edits_.back(), done_ - 1, late);
    late.rethrow();
}

void EditLog::enter(Edit edit) noexcept {
    edits_.erase(edits_.begin() + static_cast<std::ptrdiff_t>(done_), edits_.end());
    if (saved_ != nowhere && saved_ > done_) saved_ = nowhere;
    edit.beginsStep = depth_ == 0 || !isStepBegun_;
    isStepBegun_ = true;
    edits_.push_back(std::move(edit));
    ++done_;
}

EditLog::Outcome EditLog::undo() {
    Outcome outcome;
    while (canUndo()) {
        Edit& edit = edits_[done_ - 1];
        stepOver(edit, true, outcome);
        if (edit.beginsStep) break;
    }
    return outcome;
}

EditLog::Outcome EditLog::redo() {
    Outcome outcome;
    while (canRedo()) {
        stepOver(edits_[done_], false, outcome);
        if (done_ < edits_.size() && edits_[done_].beginsStep) break;
    }
    return outcome;
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
