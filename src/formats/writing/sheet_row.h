#pragma once

#include <string_view>
#include <vector>

#include "formats/writing/writers.h"

namespace vek::formats {

/// The cells of a sheet's rows, fetched a row at a time.
class SheetRow {
public:
    explicit SheetRow(const Sheet& sheet);

    std::size_t size() const { return sheet_.columns.size(); }
    /// One for each column of the sheet; valid until the next call, or until the row is changed.
    const std::string_view* cells(unsigned row);

private:
    const Sheet& sheet_;
    bool isInOrder_ = true;  ///< its columns are the first of the log, each at its place
    std::vector<std::string_view> all_;
    std::vector<std::string_view> chosen_;
};

}  // namespace vek::formats
