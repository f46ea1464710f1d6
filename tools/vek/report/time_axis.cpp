#include "tools/vek/report/time_axis.h"

#include <algorithm>
#include <cmath>

namespace vek::page {

namespace {

constexpr double foldedWidth = 16;
constexpr std::size_t mostFolds = 24;
constexpr double betweenTicks = 72;

using Stretches = std::vector<TimeAxis::Stretch>;

// The spans put together where they touch.
Stretches unionOf(std::vector<Span>& spans) {
    std::sort(spans.begin(), spans.end(),
              [](const Span& a, const Span& b) { return a.start < b.start; });
    Stretches all;
    for (const Span& span : spans) {
        if (all.empty() || span.start > all.back().to)
            all.push_back({span.start, span.end, 0});
        else
            all.back().to = std::max(all.back().to, span.end);
    }
    return all;
}

double lengthOf(const Stretches& all) {
    double sum = 0;
    for (const TimeAxis::Stretch& each : all) sum += each.to - each.from;
    return sum;
}

// The shortest gap that is folded: a good part of all that was shot, and among the longest.
double shortestFold(const Stretches& busy) {
    constexpr double leastSeconds = 30;
    std::vector<double> gaps;
    for (std::size_t i = 1; i < busy.size(); ++i) gaps.push_back(busy[i].from - busy[i - 1].to);
    double least = std::max(leastSeconds, lengthOf(busy) / 12);
    if (gaps.size() <= mostFolds) return least;
    std::nth_element(gaps.begin(), gaps.begin() + mostFolds, gaps.end(), std::greater<>());
    return std::max(least, gaps[mostFolds] + 1);
}

Stretches foldedAt(const Stretches& busy) {
    const double least = shortestFold(busy);
    Stretches folded = {busy.front()};
    for (const TimeAxis::Stretch& each : busy) {
        if (each.from - folded.back().to >= least)
            folded.push_back(each);
        else
            folded.back().to = std::max(folded.back().to, each.to);
    }
    return folded;
}

std::string clockText(double seconds) {
    const auto whole = static_cast<long long>(std::llround(seconds)) % (24 * 60 * 60);
    const auto pair = [](long long n) {
        return std::string(n < 10 ? "0" : "") + std::to_string(n);
    };
    return pair(whole / 3600) + ":" + pair(whole / 60 % 60) + ":" + pair(whole % 60);
}

// The shortest step of a clock that takes at least so many seconds.
double stepOf(double least) {
    for (double step : {1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600, 7200, 14400}) {
        if (step >= least) return step;
    }
    return 6 * 3600;
}

}  // namespace

TimeAxis::TimeAxis(std::vector<Span> spans, double length) {
    stretches_ = foldedAt(unionOf(spans));
    const double folds = foldedWidth * static_cast<double>(stretches_.size() - 1);
    // A clip without a length is still somewhere.
    for (Stretch& each : stretches_) each.to = std::max(each.to, each.from + 1);
    scale_ = (length - folds) / lengthOf(stretches_);
    double x = 0;
    for (Stretch& each : stretches_) {
        each.x = x;
        x = endOf(each) + foldedWidth;
    }
}

double TimeAxis::x(double seconds) const {
    const auto behind =
        std::upper_bound(stretches_.begin(), stretches_.end(), seconds,
                         [](double wanted, const Stretch& each) { return wanted < each.from; });
    const Stretch& stretch = behind == stretches_.begin() ? stretches_.front() : behind[-1];
    return stretch.x + (std::clamp(seconds, stretch.from, stretch.to) - stretch.from) * scale_;
}

std::vector<TimeAxis::Tick> TimeAxis::ticks() const {
    std::vector<Tick> ticks;
    const double step = stepOf(betweenTicks / scale_);
    for (const Stretch& each : stretches_) {
        const double end = ticks.empty() ? -betweenTicks : ticks.back().x;
        if (each.x - end >= betweenTicks) ticks.push_back({each.x, clockText(each.from)});
        for (double at = std::ceil(each.from / step) * step; at <= each.to; at += step) {
            if (!ticks.empty() && x(at) - ticks.back().x < betweenTicks) continue;
            ticks.push_back({x(at), clockText(at)});
        }
    }
    return ticks;
}

}  // namespace vek::page
