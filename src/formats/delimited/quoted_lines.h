#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "formats/writing/sheet_row.h"

namespace vek::formats {

/// Rows as lines of text whose cells keep the quotes that they had, where no cell needs more than
/// to be copied between them. Whoever asks writes the others, cell by cell.
class QuotedLines {
public:
    QuotedLines(const Sheet& sheet, char separator) : row_(sheet), separator_(separator) {}

    /// Without an end. Of each cell of the row it is said how it stood; empty where a cell needs
    /// more. Valid until the next call.
    std::string_view line(unsigned row, const std::vector<std::string_view>& came);

private:
    char* makeRoom(const std::string_view* cells);
    bool hasQuotesAroundCellsAlone(std::string_view line, std::size_t quoted) const;
    bool arePlainOutside(std::string_view line, const std::string_view* cells,
                         const std::vector<std::string_view>& came) const;

    SheetRow row_;
    char separator_;
    std::string line_;
};

}  // namespace vek::formats
