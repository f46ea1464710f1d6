#include "formats/writing/cell_run.h"

namespace vek::formats {

namespace {

constexpr std::size_t movedGap = 1;
constexpr std::size_t quotedGap = 3;

const char* behind(std::string_view cell) {
    return cell.data() + cell.size();
}

}  // namespace

std::optional<CellRun> CellRun::of(const std::string_view* cells, std::size_t count) {
    while (count > 0 && cells[count - 1].empty()) --count;
    if (count == 0) return CellRun{};
    const char* const begin = cells[0].data();
    const char* const end = behind(cells[count - 1]);
    std::size_t size = 0;
    for (std::size_t i = 0; i < count; ++i) size += cells[i].size();
    const std::size_t gaps = count - 1;
    const bool isQuoted = size + gaps * quotedGap == static_cast<std::size_t>(end - begin);
    const std::size_t gap = isQuoted ? quotedGap : movedGap;
    for (std::size_t i = 1; i < count; ++i) {
        if (cells[i].data() != behind(cells[i - 1]) + gap) return {};
    }
    return CellRun{{begin, static_cast<std::size_t>(end - begin)}, gaps, isQuoted && gaps > 0};
}

}  // namespace vek::formats
