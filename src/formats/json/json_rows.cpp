#include "formats/json/json_rows.h"

#include "formats/json/bare_text.h"
#include "formats/json/json.h"
#include "formats/writing/sheet_facts.h"

namespace vek::formats {

JsonRows::JsonRows(const Sheet& sheet, Losses& losses)
    : sheet_(sheet), cells_(sheet), losses_(losses) {
    for (const std::string& name : distinctNames(sheet, losses)) {
        bool wasChanged = false;
        fronts_.push_back((fronts_.empty() ? "" : ", ") + jsonName(name, wasChanged) + ": ");
        if (wasChanged) losses.add("column names that are no UTF-8", inQuotes(name));
    }
}

void JsonRows::add(std::string& line, unsigned row) {
    const unsigned own = sheet_.view->baseIndex(row);
    const std::string_view* const cells = cells_.cells(row);
    for (unsigned i = 0; i < fronts_.size(); ++i) {
        bool wasChanged = false;
        line += fronts_[i];
        addJsonValue(line, cells[i], sheet_.log.bare.of(own, sheet_.columns[i]), wasChanged);
        if (wasChanged) losses_.add("cells that are no UTF-8", place(sheet_, row, i));
    }
}

}  // namespace vek::formats
