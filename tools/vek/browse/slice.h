#pragma once

#include <chrono>

namespace vek::browse {

/// The time that work may take before somebody looks again whether a key came.
class Slice {
public:
    /// Tests set it so that small logs take several slices.
    static inline std::chrono::milliseconds longest{15};

    bool isOver() const { return Clock::now() - begin_ > longest; }

private:
    using Clock = std::chrono::steady_clock;

    Clock::time_point begin_ = Clock::now();
};

}  // namespace vek::browse
