#pragma once

#include <vekdb/byte_marks.h>

/// Finds the marked bytes of a block of 64: a bit for each.
using FindMarks = std::uint64_t(const char* block, const ByteMarks::Kinds& kinds);

/// The way that goes by registers of so many bytes, or null where the machine has none.
FindMarks* findMarksIn(unsigned registerBytes);
