#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace vek::formats {

/// The cells of a row as one piece of text, to be looked at as a whole. As they were loaded they
/// stand one behind the other, and between each two of them the same bytes: a NUL, or where they
/// stand as they were quoted a NUL, a comma and a quote.
struct CellRun {
    std::string_view text;
    std::size_t gaps = 0;
    bool isQuoted = false;

    /// Nothing where they stand otherwise. Empty cells at the end of a row do not count.
    static std::optional<CellRun> of(const std::string_view* cells, std::size_t count);
};

}  // namespace vek::formats
