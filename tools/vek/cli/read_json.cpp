#include "tools/vek/cli/json.h"
#include "tools/vek/cli/readers.h"

#include <unordered_map>

namespace vek {

namespace {

// The columns are all names there are, in the order in which they come first.
class NameList {
public:
    std::size_t place(const std::string& name) {
        auto [entry, isNew] = places_.try_emplace(name, names_.size());
        if (isNew) names_.push_back(name);
        return entry->second;
    }
    const std::vector<std::string>& names() const { return names_; }

private:
    std::unordered_map<std::string, std::size_t> places_;
    std::vector<std::string> names_;
};

}  // namespace

void readJson(std::string_view text, Log& log) {
    JsonRows parsed = parseJsonRows(text);
    if (parsed.errorLine != 0) {
        throw Failure{unreadable, worded(log.name, {parsed.errorLine, "", parsed.error,
                                                    "JSON objects of names and values", ""})};
    }
    NameList columns;
    for (const JsonRow& row : parsed.rows) {
        for (const std::string& name : row.names) columns.place(name);
    }
    TableBuilder builder(log, columns.names());
    for (const JsonRow& row : parsed.rows) {
        std::vector<std::string_view> cells(columns.names().size());
        for (std::size_t i = 0; i < row.names.size(); ++i) {
            cells[columns.place(row.names[i])] = row.values[i];
        }
        builder.addRow(row.line, cells);
    }
    builder.finish();
}

}  // namespace vek
