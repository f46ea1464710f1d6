#pragma once

#include <cstddef>

// Tells the system that all of a fresh block is about to be written, so that it
// may come in large pages, which are far fewer to set up. Nothing but speed
// depends on it; small blocks are left alone.
void expectFilling(void* block, std::size_t bytes) noexcept;
