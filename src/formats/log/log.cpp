#include "formats/log/log.h"

#include <algorithm>
#include <new>

#include <vekdb/host/text_util.h>
#include "formats/log/column_names.h"
#include "formats/text/suggestion.h"
#include "formats/text/text_lines.h"
#include "formats/text/written_names.h"

namespace vek::formats {

std::string worded(const std::string& file, const Problem& problem) {
    return problem.text(file);
}

std::string Log::columnName(unsigned column) const {
    const char* name = table->get_fieldname(column);
    return name == nullptr ? std::string() : std::string(name);
}

std::vector<std::string> Log::columnNames() const {
    std::vector<std::string> names;
    for (unsigned i = 0; i < columnCount(); ++i) names.push_back(columnName(i));
    return names;
}

namespace {

unsigned firstUnnamed(const vekdb& table) {
    for (unsigned column = 0; column < table.get_num_fields(); ++column) {
        const char* name = table.get_fieldname(column);
        if (name == nullptr || *name == '\0') return column;
    }
    return noColumn;
}

}  // namespace

unsigned Log::findColumn(std::string_view name) const {
    if (name.empty()) return firstUnnamed(*table);
    // The library finds the first or the last of several.
    unsigned column = table->get_fieldnum(cellText(name));
    const RepeatedName* repeated = repeatedNameOf(*this, column);
    return repeated == nullptr ? column : repeated->columns.front();
}

namespace {

[[noreturn]] void refuseRepeated(const Log& log, const RepeatedName& repeated,
                                 std::string_view wanted) {
    const std::string count = std::to_string(repeated.columns.size());
    throw Failure{wrongUsage,
                  log.name,
                  {0, "",
                   wanted.empty() ? concat(count, " columns have no name")
                                  : concat(count, " columns are named ", inQuotes(wanted)),
                   concat("one of them: ", choicesOf(log, repeated)), ""}};
}

[[noreturn]] void refuseUnknown(const Log& log, std::string_view wanted) {
    std::string near = nearest(wanted, log.columnNames());
    if (!near.empty()) near = concat("did you mean ", asWritten(near), "?");
    const bool isUnnamed = wanted.empty() && log.findColumn("") != noColumn;
    if (isUnnamed) near = concat("the one without a name is ", unnamedAddress);
    throw Failure{
        wrongUsage, log.name, {0, "", "there is no column " + inQuotes(wanted), "", near}};
}

// The only one that has the name; noColumn where none has.
unsigned onlyColumn(const Log& log, std::string_view wanted) {
    const unsigned column = log.findColumn(wanted);
    const RepeatedName* const repeated = repeatedNameOf(log, column);
    if (repeated != nullptr) refuseRepeated(log, *repeated, wanted);
    return column;
}

}  // namespace

unsigned Log::requireColumn(std::string_view wanted) const {
    if (wanted.empty()) refuseUnknown(*this, wanted);
    unsigned column = onlyColumn(*this, wanted);
    if (column == noColumn) column = numberedColumn(*this, wanted);
    if (column != noColumn) return column;
    const std::optional<WrittenName> inner = unbracketed(wanted);
    if (!inner) refuseUnknown(*this, wanted);
    if (inner->turn == 0 && !inner->name.empty()) return requireColumn(inner->name);
    column = inner->turn == 0 ? onlyColumn(*this, inner->name)
                              : columnOfTurn(*this, inner->name, inner->turn);
    if (column == noColumn) refuseUnknown(*this, wanted);
    return column;
}

std::string Log::parameter(const char* wanted) const {
    const char* value = table->get_param_val(wanted);
    return value == nullptr ? std::string() : std::string(value);
}

// Where memory ends the table leaves an empty name or value and says nothing.
bool Log::setParameter(const std::string& wanted, const std::string& value) {
    if (table->set_param_val(wanted.c_str(), value.c_str()) == noColumn) return false;
    const char* stored = table->get_param_val(wanted.c_str());
    if (stored == nullptr || (*stored == '\0' && !value.empty())) throw std::bad_alloc();
    return true;
}

bool canBeParameter(std::string_view name, std::string_view value) {
    constexpr std::string_view no("\"\n\r\t\0", 5);
    return !name.empty() && trimmed(name) == name && trimmed(value) == value &&
           name.find_first_of(no) == name.npos && value.find_first_of(no) == value.npos &&
           name.find(':') == name.npos && !sameText(name, "VEKDB");
}

void requireWhole(const Log& log) {
    if (log.notRead.empty()) return;
    throw Failure{unreadable,
                  log.name,
                  {0, "", "not changed, rows that were not read would be lost", "",
                   concat("repair the file, or write a copy with ", log.opening.terms->saving)}};
}

bool isDamaged(const Log& log) {
    const bool hasDamage = std::any_of(log.problems.begin(), log.problems.end(),
                                       [](const Problem& problem) { return problem.isDamage; });
    return (log.format == Format::table && hasDamage) || !log.notRead.empty();
}

}  // namespace vek::formats
