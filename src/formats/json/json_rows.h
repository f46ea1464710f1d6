#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "formats/writing/sheet_row.h"
#include "formats/writing/writers.h"

namespace vek::formats {

/// The rows of a sheet as objects of JSON.
class JsonRows {
public:
    /// The sheet and the losses outlive this.
    JsonRows(const Sheet& sheet, Losses& losses);

    /// What stands in front of each cell: its name and what separates it.
    const std::vector<std::string>& fronts() const { return fronts_; }
    /// Adds the names and cells of a row, without braces.
    void add(std::string& line, unsigned row);

private:
    const Sheet& sheet_;
    SheetRow cells_;
    std::vector<std::string> fronts_;
    Losses& losses_;
};

}  // namespace vek::formats
