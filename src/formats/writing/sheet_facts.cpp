#include "formats/writing/sheet_facts.h"

#include <algorithm>
#include <map>
#include <set>

#include "formats/input/input.h"
#include "formats/log/own_parameters.h"
#include "formats/text/text_lines.h"

namespace vek::formats {

namespace {

constexpr const char* untitled = "Untitled";

}  // namespace

std::vector<std::string> distinctNames(const Sheet& sheet, Losses& losses) {
    std::vector<std::string> names;
    std::set<std::string> used;
    std::map<std::string, std::size_t> numbers;  // the first that may be free, of each name
    for (unsigned i = 0; i < sheet.columns.size(); ++i) {
        std::string name = sheet.name(i);
        std::size_t& n = numbers.try_emplace(name, 2).first->second;
        while (used.contains(name)) name = sheet.name(i) + " " + std::to_string(n++);
        if (name != sheet.name(i)) {
            losses.add("columns of a name that another has, given a number", inQuotes(name));
        }
        used.insert(name);
        names.push_back(name);
    }
    return names;
}

std::string place(const Sheet& sheet, unsigned row, unsigned column) {
    return sheet.source(row) + ":" + std::to_string(sheet.line(row)) + ":" + sheet.name(column);
}

unsigned placeOnSheet(const Sheet& sheet, unsigned column) {
    if (column == noColumn) return noColumn;
    const auto at = std::find(sheet.columns.begin(), sheet.columns.end(), column);
    if (at == sheet.columns.end()) return noColumn;
    return static_cast<unsigned>(at - sheet.columns.begin());
}

unsigned placeNamed(const Sheet& sheet, std::string_view name) {
    return placeOnSheet(sheet, sheet.log.findColumn(std::string(name)));
}

std::vector<ParameterText> ownParameters(const Log& log) {
    std::vector<ParameterText> out;
    for (unsigned i = 0; i < log.table->get_num_params(); ++i) {
        std::string name = log.table->get_param_name(i);
        if (isTableFilesOwn(name)) continue;
        out.push_back({name, log.table->get_param_text(i)});
    }
    return out;
}

void loseParameters(const Log& log, Losses& losses) {
    for (const ParameterText& parameter : ownParameters(log)) {
        losses.add("parameters have no place in this format", inQuotes(parameter.name));
    }
}

std::string titleOfFile(const Sheet& sheet, const std::string& output, Losses& losses) {
    const std::string& path = sheet.log.name;
    const std::string name = path.substr(path.rfind('/') + 1);
    const std::string stem = name.substr(0, name.rfind('.'));
    if (!trimmed(stem).empty() && path != Input::standardInput) return stem;
    losses.addEach(concat(output, ": the log has no title, it is called ", untitled));
    return untitled;
}

void loseNames(const Log& log, const std::vector<unsigned>& columns, Losses& losses) {
    for (unsigned column : columns) {
        losses.add("column names have no place without a row", inQuotes(log.columnName(column)));
    }
}

void tellZerosOf(std::string_view line, const Sheet& sheet, unsigned row, Losses& losses) {
    tellZeros(
        line, sheet.columns.size(), [&](unsigned i) { return sheet.cell(row, i); },
        [&](unsigned i) { return place(sheet, row, i); }, losses);
}

}  // namespace vek::formats
