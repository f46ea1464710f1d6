#pragma once

#include <cstddef>
#include <string>

#include "formats/terms.h"

/// How much a log may be, so that a stranger's small file does not exhaust the machine.
namespace vek::formats {

struct Limits {
    std::size_t bytes = std::size_t{16} << 30;
    std::size_t cells = 0;  ///< 0: as many as the bytes give reason for
};

/// A Failure when an input is larger than it may be.
void requireBytes(const std::string& name, std::size_t bytes, const Limits& limits,
                  const Terms& terms);
/// How many bytes may come of what is packed: as many as there may be or, where nobody said how
/// many, 200 times the packed bytes and 64 MB.
std::size_t mostUnpacked(std::size_t packed, const Limits& limits);
/// A Failure when rows times columns are more than may be made of an input of so many bytes.
void requireCells(const std::string& name, std::size_t rows, std::size_t columns, std::size_t bytes,
                  const Limits& limits, const Terms& terms);

/// How much may be written.
struct OutputLimit {
    std::size_t bytes = 0;  ///< 0: as many as those that were read give reason for
    std::size_t read = 0;
};

/// A Failure when an output is larger.
void requireOutput(const std::string& name, std::size_t bytes, const OutputLimit& limit,
                   const Terms& terms);

}  // namespace vek::formats
