#include "formats/columnar/engine_names.h"

#include <set>

#include <vekdb/host/text_util.h>
#include "formats/text/letters.h"
#include "formats/text/width.h"
#include "formats/writing/sheet_facts.h"

namespace vek::formats {

namespace {

std::string lowerOf(std::string_view name) {
    std::string lower;
    addLower(lower, name);
    return lower;
}

std::string textualName(const std::string& name, std::size_t place, Losses& losses) {
    if (name.empty()) {
        const std::string made = concat("Column ", std::to_string(place + 1));
        losses.add("columns without a name, given one", made);
        return made;
    }
    if (isUtf8(name)) return name;
    losses.add("column names that are no UTF-8", inQuotes(name));
    return withoutBrokenBytes(name);
}

}  // namespace

void requireColumns(const Sheet& sheet, const std::string& output) {
    if (!sheet.columns.empty()) return;
    throw Failure{unwritable, output, {0, "", "no columns", "a column at least", ""}};
}

std::string withoutBrokenBytes(std::string_view text) {
    return std::string(toUTF8(fromUTF8(cellText(text))).view());
}

std::vector<std::string> namesForEngines(const Sheet& sheet, Losses& losses) {
    std::vector<std::string> names;
    std::set<std::string> used;
    for (const std::string& distinct : distinctNames(sheet, losses)) {
        const std::string name = textualName(distinct, names.size(), losses);
        std::string tried = name;
        for (unsigned n = 2; !used.insert(lowerOf(tried)).second; ++n) {
            tried = concat(name, " ", std::to_string(n));
        }
        if (tried != name) {
            losses.add("columns whose names differ in capitals alone, given a number",
                       inQuotes(name));
        }
        names.push_back(tried);
    }
    return names;
}

}  // namespace vek::formats
