#pragma once

#include <string>
#include <string_view>

#include <vekdb/byte_marks.h>
#include "formats/writing/sheet_row.h"

/// Rows of a sheet as lines of text, where no cell needs more than to be copied, as in nearly
/// every row. Whoever asks writes the others, cell by cell.
namespace vek::formats {

/// Cells with a separator between them.
class PlainLines {
public:
    /// Besides the separator, `special` are up to three bytes that no cell of such a line holds.
    PlainLines(const Sheet& sheet, char separator, std::string_view special);

    /// The line of a row with an end behind it; empty where a cell needs more. Valid until the
    /// next call.
    std::string_view line(unsigned row, std::string_view end);

private:
    bool isPlain(const char* begin, const char* end) const;

    SheetRow row_;
    char separator_;
    ByteMarks::Kinds kinds_;
    std::string line_;
};

/// Cells as strings of JSON, each behind a text of its own.
class PlainJsonLines {
public:
    /// `before` stands in front of each cell's opening quote.
    PlainJsonLines(const Sheet& sheet, std::vector<std::string> before);

    std::string_view line(unsigned row, std::string_view begin, std::string_view end);

private:
    SheetRow row_;
    std::vector<std::string> before_;
    std::size_t fixed_ = 0;  // bytes of a line besides its cells
    std::string line_;
};

}  // namespace vek::formats
