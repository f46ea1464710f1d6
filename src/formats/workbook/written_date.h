#pragma once

#include <optional>
#include <string_view>

namespace vek::formats {

/// The number that a sheet keeps for a moment which a workbook writes out: "2024-03-05",
/// "2024-03-05T13:45:00.5", "13:45:00". Nothing for other texts, for days before March 1900 but the
/// one that stands for none, 1899-12-30, and for those before 1904 where days count from there.
std::optional<double> writtenDate(std::string_view text, bool from1904);

}  // namespace vek::formats
