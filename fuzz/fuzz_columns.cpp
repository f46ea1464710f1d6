// Any bytes as what is stored and asked about columns: the first line as the text of a field map,
// the second as a list of columns to show. A map's own text gives the map again, and a list gives
// the columns that its pieces name.

#include <vector>

#include <vekdb/support/sexpr.h>
#include <vekdb/table.h>
#include <vekdb/views/field_map.h>
#include <vekdb/views/view.h>
#include <vekdb/views/view_rep.h>
#include "target.h"

namespace {

const std::vector<std::string> names = {"Name", "Scene", "Take 2", "Start", "name2", "A", "AB"};

vekdb& theTable() {
    static vekdb table([] {
        std::vector<DBFieldDesc> fields;
        for (const std::string& name : names) {
            fields.push_back({name.c_str(), DBFieldTypes::text});
        }
        return fields;
    }());
    return table;
}

FieldMap mapOf(const std::string& text) {
    const VDBView view(&theTable());
    view->add_param("V5_FIELD_MAP", text.c_str());
    return FieldMap(view);
}

// A number that no column has makes an entry without a name, which is written as none.
std::string entriesOf(const FieldMap& map) {
    std::string entries;
    for (unsigned i = 0; i < map.size(); ++i) {
        const int at = static_cast<int>(i);
        if (map.getName(at).empty()) continue;
        entries += std::string(map.isVisible(at) ? "+" : "-") + map.getName(at).c_str() + "\n";
    }
    return entries;
}

std::string checkMap(const std::string& text) {
    const FieldMap map = mapOf(text);
    const std::string entries = entriesOf(map);
    if (entries.empty()) return {};  // all columns are shown the next time
    const std::string again = entriesOf(mapOf(map.asString().c_str()));
    return entries == again ? "" : "another field map: " + again;
}

// What the pieces between the separators name, by a search through all names.
std::string piecesOf(const std::string& spec) {
    std::string found;
    for (std::size_t at = 0; at < spec.size();) {
        const std::size_t end = std::min(spec.find_first_of(",\t", at), spec.size());
        for (const std::string& name : names) {
            found += spec.compare(at, end - at, name) == 0 && end > at ? name + "\n" : "";
        }
        at = end + 1;
    }
    return found;
}

std::string shownBy(const VDBViewRep& view) {
    std::string shown;
    for (const SExpr* cell = view.fieldList(); cell != nullptr; cell = cell->next) {
        shown += names[static_cast<const SExprRef*>(cell->element)->column] + "\n";
    }
    return shown;
}

std::string checkSpec(const std::string& spec) {
    const VDBView view(new VDBViewRep(&theTable(), spec.c_str()));
    if (view->fieldSpecText() != spec) return "another text of the list";
    const std::string found = piecesOf(spec);
    const std::string shown = shownBy(*view);
    return shown == found ? "" : "another list: " + shown;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string text(fuzz::textOf(data, size));
    text = text.substr(0, text.find('\0'));
    const std::size_t end = std::min(text.find('\n'), text.size());
    fuzz::require(checkMap(text.substr(0, end)));
    fuzz::require(checkSpec(text.substr(std::min(end + 1, text.size()))));
    return 0;
}
