#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "formats/log/log.h"

namespace vek::formats {

/// Finds rows that have the same value in one column, the case of all letters ignored. No value is
/// copied: a row stands for its value.
class SameValues {
public:
    SameValues(const Log& log, unsigned column);

    /// The first row that was asked for and has the value of this one: itself where there is none.
    unsigned firstOf(unsigned row);

private:
    struct Place {
        std::uint32_t hash = 0;
        std::uint32_t behindRow = 0;  // 0 where nobody is
    };

    std::uint32_t hashOf(std::string_view value);
    Place& find(std::uint32_t hash, std::string_view value);
    bool isSame(std::string_view other, std::string_view value);
    void grow();

    const Log& log_;
    unsigned column_;
    std::vector<Place> places_;  // as many as a power of two, at most half of them taken
    std::size_t taken_ = 0;
    std::string folded_;
    std::string other_;
};

}  // namespace vek::formats
