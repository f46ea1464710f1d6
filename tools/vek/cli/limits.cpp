#include "tools/vek/cli/limits.h"

#include <cstdint>

namespace vek {

namespace {

// A log of a day has a million cells; a cell takes a byte of most formats.
constexpr std::size_t cellsOfAnyFile = std::size_t{1} << 24;
constexpr std::size_t cellsOfAByte = 16;

struct Limits {
    std::size_t bytes = std::size_t{16} << 30;
    std::size_t cells = 0;  // 0: as many as the bytes give reason for
};

Limits& limits() {
    static Limits limits;
    return limits;
}

std::size_t mostCells(std::size_t bytes) {
    if (limits().cells != 0) return limits().cells;
    return cellsOfAnyFile + cellsOfAByte * bytes;
}

}  // namespace

std::vector<Option> limitOptions() {
    return {
        {"--max-bytes", "N", "refuse inputs of more bytes; 16 GiB as a rule"},
        {"--max-cells", "N",
         "refuse logs of more rows times columns; 16 million and 16 for each byte as a rule"},
    };
}

void setLimits(const Args& args) {
    limits().bytes = args.number("max-bytes", limits().bytes);
    limits().cells = args.number("max-cells", limits().cells);
}

void requireBytes(const std::string& name, std::size_t bytes) {
    if (bytes <= limits().bytes) return;
    throw Failure{unreadable, name + ": more than " + std::to_string(limits().bytes) +
                                  " bytes, expected no more; --max-bytes allows more"};
}

void requireCells(const std::string& name, std::size_t rows, std::size_t columns,
                  std::size_t bytes) {
    const std::size_t most = mostCells(bytes);
    if (columns == 0 || rows <= most / columns) return;
    throw Failure{unreadable, name + ": " + counted(rows, "row") + " of " +
                                  counted(columns, "column") + " are more than " +
                                  std::to_string(most) +
                                  " cells, expected no more; --max-cells allows more"};
}

}  // namespace vek
