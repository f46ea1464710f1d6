#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string_view>

#include "formats/json/json_tree.h"

namespace vek::formats {

/// How fast effects of a clip play its source, 1 where none of them says so: 2 takes twice as many
/// frames of it as there are on the record, 0 stands still, and below 0 it runs backwards.
inline std::optional<double> timeScalar(const JsonTree& tree, JsonTree::Node effects) {
    std::optional<double> scalar;
    for (JsonTree::Node effect : tree.elements(effects)) {
        const std::string schema = tree.text(tree.find(effect, "OTIO_SCHEMA"));
        const bool isStill = schema.starts_with("FreezeFrame");
        if (!isStill && !schema.starts_with("LinearTimeWarp")) continue;
        const JsonTree::Node own = tree.find(effect, "time_scalar");
        if (!isStill && own == JsonTree::none) continue;
        const double each = isStill ? 0 : std::strtod(tree.text(own).c_str(), nullptr);
        if (std::isfinite(each)) scalar = scalar.value_or(1) * each;
    }
    return scalar;
}

/// So many frames of the source lie on so many of the record.
inline std::int64_t playedFrames(std::int64_t frames, double scalar) {
    constexpr double most = 1e12;
    return std::llround(std::min(std::abs(static_cast<double>(frames) * scalar), most));
}

}  // namespace vek::formats
