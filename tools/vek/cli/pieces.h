#pragma once

#include <string>
#include <vector>

#include "formats/choosing/select.h"
#include "formats/log/log.h"
#include "tools/vek/cli/command.h"

/// The rows of a log as they go to several files.
namespace vek {

/// The rows of one file.
struct Piece {
    std::vector<unsigned> rows;
    std::string path;
};
using Pieces = std::vector<Piece>;

/// A piece for all rows of a view that have the same values in some columns, in the order of their
/// first rows. They have no paths yet.
Pieces piecesOf(const Log& log, const VDBView& view, const std::vector<unsigned>& columns);

/// What would be written: a line for each file.
struct PlannedFile {
    std::string path;
    std::size_t rows;
};
void printPlan(const std::vector<PlannedFile>& files, const Args& args);

}  // namespace vek
