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

/// Blocks that are filled from their start on, by little and little.
namespace FillingBlock {

/// How large a block of about so many bytes is best: whole large pages from half a one on.
std::size_t goodSize(std::size_t bytes) noexcept;

/// A block of at least 1 byte; one of a large page or more begins on one. Throws bad_alloc.
void* allocate(std::size_t bytes);
void free(void* block, std::size_t bytes) noexcept;

}  // namespace FillingBlock
