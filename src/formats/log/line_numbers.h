#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vek::formats {

/// The lines that rows began on, in the order of the rows. Those that are equally far from each
/// other are kept together, so that a row a line, and rows without one, cost nothing.
class LineNumbers {
public:
    std::size_t size() const { return count_; }

    void push_back(std::uint32_t line);
    /// Rows behind those that are there have no line: 0.
    void resize(std::size_t count);
    std::uint32_t operator[](std::size_t row) const;

    /// The first row whose line is not before this one, where lines ascend; their number for none.
    std::size_t firstFrom(std::size_t line) const;

private:
    struct Run {
        std::uint32_t row;
        std::uint32_t line;
        std::uint32_t step;

        // Steps back wrap around, as the sum does.
        std::uint32_t lineOf(std::size_t at) const {
            return line + static_cast<std::uint32_t>(at - row) * step;
        }
    };

    std::vector<Run> runs_;
    std::size_t count_ = 0;
};

}  // namespace vek::formats
