#include "formats/log/log.h"

#include <algorithm>
#include <new>
#include <optional>

#include <vekdb/host/text_util.h>
#include "formats/log/column_names.h"
#include "formats/text/suggestion.h"
#include "formats/text/text_lines.h"
#include "formats/text/written_names.h"

namespace vek::formats {

std::string worded(const std::string& file, const Problem& problem) {
    return problem.text(file);
}

void refuseName(const Log& log, std::string_view wanted, const Problem& why) {
    Failure failure{wrongUsage, log.name, why};
    failure.reason.noColumn = wanted.empty() ? unnamedAddress : wanted;
    throw failure;
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

bool isCalled(const vekdb& table, unsigned column, std::string_view name) {
    const char* const own = table.get_fieldname(column);
    return sameText(own == nullptr ? std::string_view() : own, name);
}

unsigned firstCalled(const vekdb& table, std::string_view name) {
    for (unsigned column = 0; column < table.get_num_fields(); ++column) {
        if (isCalled(table, column, name)) return column;
    }
    return noColumn;
}

// The table's own index of names; no value where there is no memory to ask it.
std::optional<unsigned> lookedUp(const vekdb& table, std::string_view name) noexcept {
    try {
        return table.get_fieldnum(cellText(name));
    } catch (const std::bad_alloc&) {
        return {};
    }
}

}  // namespace

// The table finds the first or the last of several, and a column by the names that it had, too.
unsigned Log::findColumn(std::string_view name) const noexcept {
    if (name.empty()) return firstCalled(*table, name);
    const std::optional<unsigned> known = lookedUp(*table, name);
    if (known == noColumn) return noColumn;
    const bool isCalledSo = known && isCalled(*table, *known, name);
    const unsigned column = isCalledSo ? *known : firstCalled(*table, name);
    const RepeatedName* repeated = repeatedNameOf(*this, column);
    return repeated == nullptr ? column : repeated->columns.front();
}

namespace {

[[noreturn]] void refuseRepeated(const Log& log, const RepeatedName& repeated,
                                 std::string_view wanted) {
    const std::string count = std::to_string(repeated.columns.size());
    refuseName(log, wanted,
               {0, "",
                wanted.empty() ? concat(count, " columns have no name")
                               : concat(count, " columns are named ", inQuotes(wanted)),
                concat("one of them: ", choicesOf(log, repeated)), ""});
}

[[noreturn]] void refuseUnknown(const Log& log, std::string_view wanted) {
    std::string near = nearest(wanted, log.columnNames());
    if (!near.empty()) near = concat("did you mean ", asWritten(near), "?");
    const bool isUnnamed = wanted.empty() && log.findColumn("") != noColumn;
    if (isUnnamed) near = concat("the one without a name is ", unnamedAddress);
    refuseName(log, wanted, {0, "", "there is no column " + inQuotes(wanted), "", near});
}

unsigned bracketedColumn(const Log& log, std::string_view wanted) {
    const std::optional<WrittenName> inner = unbracketed(wanted);
    if (!inner) return noColumn;
    if (inner->turn != 0) return columnOfTurn(log, inner->name, inner->turn);
    if (!inner->name.empty()) return log.columnNamed(inner->name);
    const unsigned unnamed = log.findColumn("");
    return repeatedNameOf(log, unnamed) == nullptr ? unnamed : noColumn;
}

// Says why a name finds no column.
[[noreturn]] void refuseColumn(const Log& log, std::string_view wanted) {
    if (wanted.empty()) refuseUnknown(log, wanted);
    const unsigned first = log.findColumn(wanted);
    if (first != noColumn) refuseRepeated(log, *repeatedNameOf(log, first), wanted);
    const std::optional<WrittenName> inner = unbracketed(wanted);
    if (!inner || inner->turn != 0) refuseUnknown(log, wanted);
    if (!inner->name.empty()) refuseColumn(log, inner->name);
    const RepeatedName* const unnamed = repeatedNameOf(log, log.findColumn(""));
    if (unnamed != nullptr) refuseRepeated(log, *unnamed, inner->name);
    refuseUnknown(log, wanted);
}

}  // namespace

unsigned Log::columnNamed(std::string_view wanted) const {
    if (wanted.empty()) return noColumn;
    const unsigned first = findColumn(wanted);
    if (first != noColumn) return repeatedNameOf(*this, first) == nullptr ? first : noColumn;
    const unsigned numbered = numberedColumn(*this, wanted);
    return numbered != noColumn ? numbered : bracketedColumn(*this, wanted);
}

unsigned Log::requireColumn(std::string_view wanted) const {
    const unsigned column = columnNamed(wanted);
    if (column == noColumn) refuseColumn(*this, wanted);
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
