#include "formats/table_file/table_lines.h"

#include <algorithm>

#include <vekdb/host/text_util.h>
#include "formats/text/text_lines.h"

namespace vek::formats {

namespace {

bool isKnownType(std::string_view name) {
    std::string text(trimmed(name));
    return vekdb_string_to_fieldtype(text.c_str()) != DBFieldTypes::none;
}

bool hasOuterBlanks(std::string_view value) {
    return trimmed(value).size() != value.size();
}

class TableText {
public:
    TableText(std::string_view text, const Log& log)
        : walk_(text, LineWalk::Ends::lineFeed), log_(log) {}

    std::vector<Problem> problems() {
        std::string_view line;
        bool isHeader = true;
        while (isHeader && walk_.next(line)) isHeader = !sameText(firstValue(line), "VEKDB");
        walk_.next(line);
        if (walk_.next(line)) checkTypes(rawValues(line));
        if (walk_.next(line)) checkValues(rawValues(line));
        while (walk_.next(line) && !trimmed(line).empty()) checkValues(rawValues(line));
        return std::move(found_);
    }

private:
    static std::string_view firstValue(std::string_view line) {
        std::vector<std::string_view> values = rawValues(line);
        return values.empty() ? std::string_view() : trimmed(values[0]);
    }

    void checkTypes(const std::vector<std::string_view>& types) {
        for (std::size_t i = 0; i < types.size(); ++i) {
            if (!isKnownType(types[i]))
                add(i, "type " + inQuotes(types[i]),
                    "a known type; it is "
                    "read as text");
        }
    }

    void checkValues(const std::vector<std::string_view>& values) {
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (!hasOuterBlanks(values[i])) continue;
            add(i, inQuotes(values[i]), "no blanks at the ends, which are lost on reading");
        }
    }

    void add(std::size_t column, const std::string& what, const std::string& expected) {
        std::string name = log_.columnName(static_cast<unsigned>(column));
        found_.push_back({walk_.number(), name, what, expected, ""});
    }

    LineWalk walk_;
    const Log& log_;
    std::vector<Problem> found_;
};

}  // namespace

std::vector<std::string_view> rawValues(std::string_view line) {
    std::vector<std::string_view> values;
    std::size_t at = 0;
    while (at < line.size()) {
        bool isQuoted = line[at] == '"';
        std::size_t start = at;
        for (; at < line.size() && (isQuoted || line[at] != ','); ++at) {
            if (line[at] == '"' && at > start) isQuoted = !isQuoted;
        }
        std::string_view value = line.substr(start, at - start);
        if (value.size() >= 2 && value.front() == '"' && value.back() == '"') {
            value = value.substr(1, value.size() - 2);
        }
        values.push_back(value);
        ++at;
    }
    return values;
}

std::vector<Problem> problemsOfTableText(std::string_view text, const Log& log) {
    return TableText(text, log).problems();
}

}  // namespace vek::formats
