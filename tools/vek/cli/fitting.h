#pragma once

#include <cstddef>
#include <vector>

/// How wide columns are where there is not room for all of every cell.
namespace vek {

/// Between two columns.
constexpr std::size_t columnGap = 2;

/// A cut column still tells something; timecodes are whole.
constexpr std::size_t narrowestColumn = 12;

/// The widths that columns get in a room, from those that their widest cells would take: narrow
/// columns keep theirs, and the others share what is left. Columns for which there is no room at
/// all are left out at the right. No room, 0, is no limit.
std::vector<std::size_t> fittedWidths(const std::vector<std::size_t>& widths, std::size_t room);
/// The same with what each column is cut to at least.
std::vector<std::size_t> fittedWidths(const std::vector<std::size_t>& widths,
                                      const std::vector<std::size_t>& leasts, std::size_t room);

}  // namespace vek
