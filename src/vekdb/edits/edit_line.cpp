#include "vekdb/edits/edit_line.h"

#include <algorithm>

void EditLog::Line::makeRoom() {
    letGo();
    if (size_ < blocks_.size() * edits) return;
    auto block = std::make_unique<Block>();
    block->reserve(edits);
    const std::size_t most = dropped_.size() + blocks_.size() + 1;
    if (dropped_.capacity() < most) dropped_.reserve(2 * most);
    blocks_.push_back(std::move(block));
}

// Rows weigh as much as there are of them.
void EditLog::Line::letGo() noexcept {
    for (std::size_t done = 0; done < freed && !dropped_.empty(); ++done) {
        Block& block = *dropped_.back();
        if (block.empty()) {
            dropped_.pop_back();
            continue;
        }
        if (block.back().bulk != nullptr) done += block.back().bulk->records.size();
        block.pop_back();
    }
}

// A block that stays empty is there for what is entered next.
void EditLog::Line::dropFrom(std::size_t at) noexcept {
    const std::size_t kept = at / edits + 1;
    while (blocks_.size() > kept) {
        dropped_.push_back(std::move(blocks_.back()));
        blocks_.pop_back();
    }
    while (size_ > at && blocks_.size() == kept && blocks_.back()->size() > at % edits) {
        blocks_.back()->pop_back();
    }
    size_ = std::min(size_, at);
}

void EditLog::Line::enter(Edit edit) noexcept {
    blocks_[size_ / edits]->push_back(std::move(edit));
    ++size_;
}

void EditLog::Line::clear() noexcept {
    blocks_.clear();
    dropped_.clear();
    size_ = 0;
}
