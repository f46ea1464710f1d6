#pragma once

#include <chrono>

namespace vek::browse {

/// The time that work may take before somebody looks again whether a key came.
class Slice {
public:
    bool isOver() const { return Clock::now() - begin_ > longest; }

private:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::milliseconds longest{15};

    Clock::time_point begin_ = Clock::now();
};

}  // namespace vek::browse
