#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tools/vek/cli/command.h"

/// How much a log may be, so that a stranger's small file does not exhaust the machine.
namespace vek {

/// --max-bytes and --max-cells.
std::vector<Option> limitOptions();
/// What the options say holds for all logs that are read from then on.
void setLimits(const Args& args);

/// A Failure when an input is larger than it may be.
void requireBytes(const std::string& name, std::size_t bytes);
/// A Failure when rows times columns are more than may be made of an input of so many bytes.
void requireCells(const std::string& name, std::size_t rows, std::size_t columns,
                  std::size_t bytes);

}  // namespace vek
