#include "formats/input/limits.h"

#include <algorithm>

#include "formats/failure.h"

namespace vek::formats {

namespace {

// A log of a day has a million cells; a cell takes a byte of most formats.
constexpr std::size_t cellsOfAnyFile = std::size_t{1} << 24;
constexpr std::size_t cellsOfAByte = 16;

// Names stand in every row of some formats, and markup around every cell.
constexpr std::size_t outputOfAnyFile = std::size_t{256} << 20;
constexpr std::size_t outputOfAByte = 100;

std::size_t mostOutput(const OutputLimit& limit) {
    if (limit.bytes != 0) return limit.bytes;
    return outputOfAnyFile + outputOfAByte * limit.read;
}

std::size_t mostCells(const Limits& limits, std::size_t bytes) {
    if (limits.cells != 0) return limits.cells;
    return cellsOfAnyFile + cellsOfAByte * bytes;
}

}  // namespace

void requireBytes(const std::string& name, std::size_t bytes, const Limits& limits,
                  const Terms& terms) {
    if (bytes <= limits.bytes) return;
    throw Failure{unreadable,
                  name,
                  {0, "", concat("more than ", std::to_string(limits.bytes), " bytes"), "no more",
                   concat(terms.maxBytes, " allows more")}};
}

std::size_t mostUnpacked(std::size_t packed, const Limits& limits) {
    constexpr std::size_t ofAnyText = std::size_t{64} << 20;
    constexpr std::size_t ofEachByte = 200;
    if (limits.bytes != Limits().bytes) return limits.bytes;
    return std::min(limits.bytes, ofAnyText + ofEachByte * packed);
}

void requireOutput(const std::string& name, std::size_t bytes, const OutputLimit& limit,
                   const Terms& terms) {
    const std::size_t most = mostOutput(limit);
    if (bytes <= most) return;
    if (limit.bytes != 0) {
        throw Failure{unwritable,
                      name,
                      {0, "", concat("more than ", std::to_string(most), " bytes"), "no more",
                       concat(terms.maxOutput, " allows more")}};
    }
    throw Failure{unwritable,
                  concat(name, ": more than ", std::to_string(most), " bytes, expected no more ",
                         "from ", std::to_string(limit.read),
                         " that were read; shorten the names of the columns, or choose a format "
                         "that has them once, as csv; ",
                         terms.maxOutput, " allows more")};
}

void requireCells(const std::string& name, std::size_t rows, std::size_t columns, std::size_t bytes,
                  const Limits& limits, const Terms& terms) {
    const std::size_t most = mostCells(limits, bytes);
    if (columns == 0 || rows <= most / columns) return;
    throw Failure{unreadable,
                  name,
                  {0, "",
                   concat(counted(rows, "row"), " of ", counted(columns, "column"),
                          " are more than ", std::to_string(most), " cells"),
                   "no more", concat(terms.maxCells, " allows more")}};
}

}  // namespace vek::formats
