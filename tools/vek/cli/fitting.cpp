#include "tools/vek/cli/fitting.h"

#include <algorithm>

namespace vek {

namespace {

// Finds widths for columns that are as wide as their cells, and each of which may be cut to a least
// one.
class Fitting {
public:
    Fitting(std::vector<std::size_t> widths, const std::vector<std::size_t>& leasts,
            std::size_t room)
        : widths_(std::move(widths)), leasts_(leasts), room_(room) {}

    std::vector<std::size_t> widths() {
        if (room_ == 0 || widths_.empty()) return widths_;
        dropColumns();
        widen(fittingCap());
        return widths_;
    }

private:
    // A lone column has what room there is.
    std::size_t capped(std::size_t i, std::size_t cap) const {
        return std::min(widths_[i], std::max(cap, std::min(leasts_[i], room_)));
    }

    std::size_t total(std::size_t cap) const {
        std::size_t sum = columnGap * (widths_.size() - 1);
        for (std::size_t i = 0; i < widths_.size(); ++i) sum += capped(i, cap);
        return sum;
    }

    // Leaves columns out at the right until the others fit, each cut to the least.
    void dropColumns() {
        std::size_t used = 0;
        for (std::size_t i = 0; i < widths_.size(); ++i) {
            used += capped(i, 0) + (i == 0 ? 0 : columnGap);
            if (i == 0 || used <= room_) continue;
            widths_.resize(i);
            return;
        }
    }

    // The widest cap under which all columns fit; narrow columns keep their width.
    std::size_t fittingCap() const {
        std::size_t fits = 1;
        std::size_t over = *std::max_element(widths_.begin(), widths_.end()) + 1;
        while (over - fits > 1) {
            std::size_t middle = fits + (over - fits) / 2;
            (total(middle) > room_ ? over : fits) = middle;
        }
        return fits;
    }

    // What a cap leaves unused goes to the columns that were cut, from the left.
    void widen(std::size_t cap) {
        std::size_t spare = room_ - std::min(room_, total(cap));
        for (std::size_t i = 0; i < widths_.size(); ++i) {
            const std::size_t width = capped(i, cap);
            const std::size_t more = std::min(widths_[i] - width, spare);
            spare -= more;
            widths_[i] = width + more;
        }
    }

    std::vector<std::size_t> widths_;
    const std::vector<std::size_t>& leasts_;
    std::size_t room_;
};

}  // namespace

std::vector<std::size_t> fittedWidths(const std::vector<std::size_t>& widths, std::size_t room) {
    return fittedWidths(widths, std::vector<std::size_t>(widths.size(), narrowestColumn), room);
}

std::vector<std::size_t> fittedWidths(const std::vector<std::size_t>& widths,
                                      const std::vector<std::size_t>& leasts, std::size_t room) {
    return Fitting(widths, leasts, room).widths();
}

}  // namespace vek
