#pragma once

#include <cstddef>
#include <string>

/// How much a log may be, so that a stranger's small file does not exhaust the machine.
namespace vek::formats {

struct Limits {
    std::size_t bytes = std::size_t{16} << 30;
    std::size_t cells = 0;   ///< 0: as many as the bytes give reason for
    std::size_t output = 0;  ///< bytes; 0: as many as those that were read give reason for
};

/// What holds for all logs that this thread reads from now on.
Limits& limits();

/// A Failure when an input is larger than it may be.
void requireBytes(const std::string& name, std::size_t bytes);
/// Adds up the inputs of the program.
void noteInput(std::size_t bytes);
std::size_t bytesRead();
/// A Failure when an output is larger than may be made of what was read.
void requireOutput(const std::string& name, std::size_t bytes);
/// A Failure when rows times columns are more than may be made of an input of so many bytes.
void requireCells(const std::string& name, std::size_t rows, std::size_t columns,
                  std::size_t bytes);

}  // namespace vek::formats
