#include "tools/vek/cli/fitting.h"

#include <algorithm>

namespace vek {

namespace {

std::size_t total(const std::vector<std::size_t>& widths, std::size_t cap) {
    std::size_t sum = widths.empty() ? 0 : columnGap * (widths.size() - 1);
    for (std::size_t width : widths) sum += std::min(width, cap);
    return sum;
}

// Leaves columns out at the right until the others fit, each cut to the narrowest.
void dropColumns(std::vector<std::size_t>& widths, std::size_t room) {
    std::size_t used = 0;
    for (std::size_t i = 0; i < widths.size(); ++i) {
        used += std::min(widths[i], narrowestColumn) + (i == 0 ? 0 : columnGap);
        if (i == 0 || used <= room) continue;
        widths.resize(i);
        return;
    }
}

// The widest cap under which all columns fit; narrow columns keep their width.
std::size_t fittingCap(const std::vector<std::size_t>& widths, std::size_t room) {
    std::size_t fits = 1;
    std::size_t over = *std::max_element(widths.begin(), widths.end()) + 1;
    while (over - fits > 1) {
        std::size_t middle = fits + (over - fits) / 2;
        (total(widths, middle) > room ? over : fits) = middle;
    }
    return fits;
}

// What a cap leaves unused goes to the columns that were cut, from the left.
void widen(std::vector<std::size_t>& widths, std::size_t cap, std::size_t room) {
    std::size_t spare = room - std::min(room, total(widths, cap));
    for (std::size_t& width : widths) {
        std::size_t more = width > cap ? std::min(width - cap, spare) : 0;
        spare -= more;
        width = std::min(width, cap) + more;
    }
}

}  // namespace

std::vector<std::size_t> fittedWidths(std::vector<std::size_t> widths, std::size_t room) {
    if (room == 0 || widths.empty()) return widths;
    dropColumns(widths, room);
    widen(widths, fittingCap(widths, room), room);
    return widths;
}

}  // namespace vek
