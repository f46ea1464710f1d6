#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace vek::formats {

/// Where the lines of a text end, for as long as somebody asks and also when the text is changed
/// in the meantime. Takes an eighth of the text.
class LineIndex {
public:
    explicit LineIndex(std::string_view text);
    /// The line of a byte, from 1 on.
    std::size_t line(std::size_t offset) const;

private:
    std::vector<std::uint64_t> ends_;    // a bit for each byte
    std::vector<std::uint32_t> before_;  // lines in front of every 64th word
};

}  // namespace vek::formats
