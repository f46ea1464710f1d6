#pragma once

#include <cstddef>

/// From now on this process, and what it becomes, gets an input/output error from a file that it
/// reads so far from its start, and from a read of so many bytes at once. False where the system
/// does not let that be arranged.
bool failReads(std::size_t farFromStart, std::size_t atOnce);
