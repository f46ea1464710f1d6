#pragma once

#include <string_view>

/// Parameters that say how a log is kept, and nothing of what was shot.
namespace vek::formats {

/// Values that a table file does not keep as they are (table_file/exact_cells.h).
constexpr std::string_view exactCellsName = "vek exact cells";
/// Where an edit list has its blank lines (edl/blank_lines.h).
constexpr const char* listLayoutName = "vek blank lines";

/// Whether a parameter is one of these, or of the table file's own settings.
bool isTableFilesOwn(std::string_view parameterName);

}  // namespace vek::formats
