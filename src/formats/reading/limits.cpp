#include "formats/reading/limits.h"

#include "formats/failure.h"

namespace vek::formats {

namespace {

// A log of a day has a million cells; a cell takes a byte of most formats.
constexpr std::size_t cellsOfAnyFile = std::size_t{1} << 24;
constexpr std::size_t cellsOfAByte = 16;

// Names stand in every row of some formats, and markup around every cell.
constexpr std::size_t outputOfAnyFile = std::size_t{256} << 20;
constexpr std::size_t outputOfAByte = 100;

std::size_t& inputs() {
    static std::size_t bytes = 0;
    return bytes;
}

std::size_t mostOutput() {
    if (limits().output != 0) return limits().output;
    return outputOfAnyFile + outputOfAByte * bytesRead();
}

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

void noteInput(std::size_t bytes) {
    inputs() += bytes;
}

std::size_t bytesRead() {
    return inputs();
}

void requireOutput(const std::string& name, std::size_t bytes) {
    if (bytes <= mostOutput()) return;
    throw Failure{unwritable,
                  concat(name, ": more than ", std::to_string(mostOutput()),
                         " bytes, expected no more from ", std::to_string(bytesRead()),
                         " that were read; shorten the names of the columns, or choose a format "
                         "that has them once, as csv; --max-output allows more")};
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
