#include "formats/edl/kinds_on_sheet.h"

#include "formats/edl/edl_lines.h"
#include "formats/text/text_lines.h"
#include "formats/writing/sheet_facts.h"

namespace vek::formats {

unsigned placeOfEdlKinds(const Sheet& sheet) {
    const unsigned column = placeNamed(sheet, edlColumnNames[edlKind]);
    bool isFilled = false;
    for (unsigned row = 0; column != noColumn && row < sheet.rowCount(); ++row) {
        const std::string_view cell = trimmed(sheet.cell(row, column));
        if (!cell.empty() && !isEdlKind(cell)) return noColumn;
        isFilled = isFilled || !cell.empty();
    }
    return isFilled ? column : noColumn;
}

}  // namespace vek::formats
