#pragma once

#include <cstddef>

// Memory that comes in large pages is set up with far fewer steps. Nothing but speed depends
// on any of this.

// Tells the system that all of a fresh block is about to be written, so that it may come in
// large pages; small blocks are left alone.
void expectFilling(void* block, std::size_t bytes) noexcept;

/// A large text begins on a large page, so that it has whole ones from its start on.
namespace LargePages {

/// How many bytes more a block of so many needs for that; 0 for small ones.
std::size_t slackFor(std::size_t bytes) noexcept;
/// Where a text begins in a block that has so much slack.
char* startIn(char* block, std::size_t slack) noexcept;

}  // namespace LargePages

/// A block that is filled from its start on, by little and little; one of a list of such blocks.
/// A large one stands on whole large pages.
class alignas(std::max_align_t) FillingBlock {
public:
    /// Room for at least so many bytes behind the block's own. Throws BadAlloc.
    static FillingBlock* allocate(std::size_t bytes, FillingBlock* next);
    static void free(FillingBlock* block) noexcept;

    FillingBlock* next() const { return next_; }
    char* begin() { return reinterpret_cast<char*>(this + 1); }
    char* end() const { return end_; }

private:
    FillingBlock(FillingBlock* next, void* memory, char* end)
        : next_(next), memory_(memory), end_(end) {}

    FillingBlock* next_;
    void* memory_;  // as the allocator gave it
    char* end_;
};
