#include "formats/writing/sheet_row.h"

#include <algorithm>

namespace vek::formats {

SheetRow::SheetRow(const Sheet& sheet) : sheet_(sheet), chosen_(sheet.columns.size()) {
    std::size_t behind = 0;
    for (std::size_t i = 0; i < sheet.columns.size(); ++i) {
        isInOrder_ = isInOrder_ && sheet.columns[i] == i;
        behind = std::max<std::size_t>(behind, sheet.columns[i] + 1);
    }
    all_.resize(behind);
}

const std::string_view* SheetRow::cells(unsigned row) {
    sheet_.record(row).fieldViews(all_.data(), static_cast<unsigned>(all_.size()));
    if (isInOrder_) return all_.data();
    for (std::size_t i = 0; i < chosen_.size(); ++i) chosen_[i] = all_[sheet_.columns[i]];
    return chosen_.data();
}

}  // namespace vek::formats
