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
    const bool isQuoted = count > 1 && cells[1].data() == behind(cells[0]) + quotedGap;
    const std::size_t gap = isQuoted ? quotedGap : movedGap;
    for (std::size_t i = 1; i < count; ++i) {
        if (cells[i].data() != behind(cells[i - 1]) + gap) return {};
    }
    const char* const end = behind(cells[count - 1]);
    return CellRun{{begin, static_cast<std::size_t>(end - begin)}, count - 1, isQuoted};
}

}  // namespace vek::formats
