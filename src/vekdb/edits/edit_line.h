#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "vekdb/edits/edit.h"

/// The edits in their order, in blocks: one more never moves those that are there. Edits that are
/// dropped let go of their memory a little with each one that is entered later, so that none has to
/// wait until all of a million have gone.
class EditLog::Line {
public:
    std::size_t size() const { return size_; }
    Edit& operator[](std::size_t at) { return (*blocks_[at / edits])[at % edits]; }
    const Edit& operator[](std::size_t at) const { return (*blocks_[at / edits])[at % edits]; }

    /// After this, entering one more needs no memory.
    void makeRoom();
    /// What stands from a place on goes.
    void dropFrom(std::size_t at) noexcept;
    void enter(Edit edit) noexcept;
    void clear() noexcept;

private:
    static constexpr std::size_t edits = 1024;  // of a block
    static constexpr std::size_t freed = 2048;  // rows and cells with each edit
    using Block = std::vector<Edit>;
    using Blocks = std::vector<std::unique_ptr<Block>>;

    void letGo() noexcept;

    Blocks blocks_;
    Blocks dropped_;
    std::size_t size_ = 0;
};
