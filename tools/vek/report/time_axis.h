#pragma once

#include <string>
#include <vector>

#include "tools/vek/report/log_on_page.h"

namespace vek::page {

/// Where seconds of a day stand on a line. Long stretches in which nothing was shot are folded, so
/// that the clips have the room; what is left of one is a gap of a fixed width.
class TimeAxis {
public:
    struct Stretch {
        double from;
        double to;
        double x;  ///< of its beginning
    };
    struct Tick {
        double x;
        std::string text;
    };

    /// Of spans that are all there, at least one, on a line of this length.
    TimeAxis(std::vector<Span> spans, double length);

    double x(double seconds) const;
    const std::vector<Stretch>& stretches() const { return stretches_; }
    double endOf(const Stretch& stretch) const {
        return stretch.x + (stretch.to - stretch.from) * scale_;
    }
    std::vector<Tick> ticks() const;

private:
    double scale_ = 1;  // of a second
    std::vector<Stretch> stretches_;
};

}  // namespace vek::page
