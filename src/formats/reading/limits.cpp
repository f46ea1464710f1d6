#include "formats/reading/limits.h"

#include "formats/failure.h"

namespace vek::formats {

namespace {

// A log of a day has a million cells; a cell takes a byte of most formats.
constexpr std::size_t cellsOfAnyFile = std::size_t{1} << 24;
constexpr std::size_t cellsOfAByte = 16;

std::size_t mostCells(std::size_t bytes) {
    if (limits().cells != 0) return limits().cells;
    return cellsOfAnyFile + cellsOfAByte * bytes;
}

}  // namespace

Limits& limits() {
    thread_local Limits limits;
    return limits;
}

void requireBytes(const std::string& name, std::size_t bytes) {
    if (bytes <= limits().bytes) return;
    throw Failure{unreadable,
                  name,
                  {0, "", concat("more than ", std::to_string(limits().bytes), " bytes"), "no more",
                   "--max-bytes allows more"}};
}

void requireCells(const std::string& name, std::size_t rows, std::size_t columns,
                  std::size_t bytes) {
    const std::size_t most = mostCells(bytes);
    if (columns == 0 || rows <= most / columns) return;
    throw Failure{unreadable,
                  name,
                  {0, "",
                   concat(counted(rows, "row"), " of ", counted(columns, "column"),
                          " are more than ", std::to_string(most), " cells"),
                   "no more", "--max-cells allows more"}};
}

}  // namespace vek::formats
