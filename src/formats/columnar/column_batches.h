#pragma once

#include <cstdint>
#include <vector>

#include <vekdb/host/foreign_program.h>
#include "formats/writing/writers.h"

namespace vek::formats {

/// How much stands in a batch of rows.
struct ColumnBatch {
    std::size_t rows;
    std::vector<std::size_t> bytes;  ///< of the texts of each column
};

/// Writes the rows column by column, in batches of bounded size, one at least: for each column
/// where each of its cells begins and the last one ends, in 32 bits, and then their bytes. Bytes
/// that are no UTF-8 become U+FFFD, which is told. A Failure for a cell that is too long for that.
std::vector<ColumnBatch> writeBatches(const Sheet& sheet, ScratchFile& file,
                                      const std::string& output, Losses& losses);

}  // namespace vek::formats
