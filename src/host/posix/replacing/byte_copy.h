#pragma once

#include <cstddef>

#include <sys/types.h>

/// Writes all bytes to an open file, however often the system has to be asked. 0, or the error.
/// What would end the process elsewhere, a reader that has gone or a limit of size, is an error.
int writeAll(int file, const char* from, std::size_t size);

/// Copies a file from its first byte to its end, to where the other one is written next; `size`
/// grows by what was copied. 0, or the error.
int copyAll(int from, int to, off_t& size);
