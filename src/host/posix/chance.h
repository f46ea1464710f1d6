#pragma once

#include <cstddef>
#include <cstdint>

/// Fills the words with bits that nobody outside of the process can foretell, as far as the system
/// has any.
void drawByChance(std::uint64_t* words, std::size_t count) noexcept;
