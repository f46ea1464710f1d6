#include "formats/choosing/conditions.h"

#include <algorithm>
#include <memory>

#include <vekdb/formats/timecode.h>
#include <vekdb/host/strxcmp.h>
#include <vekdb/host/text_search.h>
#include <vekdb/host/text_util.h>
#include "formats/text/text_lines.h"
#include "formats/text/written_names.h"

namespace vek::formats {

namespace {

template <class Holds>
RowTest testOfCell(const Log& log, unsigned column, Holds holds) {
    return [&log, column, holds](unsigned row) { return holds(log.cell(row, column)); };
}

bool holds(Operator op, int order) {
    switch (op) {
        case Operator::less:
            return order < 0;
        case Operator::lessOrEqual:
            return order <= 0;
        case Operator::greater:
            return order > 0;
        default:
            return order >= 0;
    }
}

struct OperatorText {
    const char* text;
    Operator op;
};

// Longer ones first, so that "<=" is not read as "<".
constexpr OperatorText operators[] = {
    {"==", Operator::equal},          {"!=", Operator::notEqual}, {"<=", Operator::lessOrEqual},
    {">=", Operator::greaterOrEqual}, {"<", Operator::less},      {">", Operator::greater},
    {"~", Operator::matches},         {"=", Operator::contains},
};

const OperatorText* operatorAt(std::string_view text) {
    for (const OperatorText& entry : operators) {
        if (text.starts_with(entry.text)) return &entry;
    }
    return nullptr;
}

// What other languages write for one of ours, and which it is. As it stands here it would look for
// a text that nobody meant.
struct ForeignOperator {
    const char* text;
    const char* ours;
};

constexpr ForeignOperator foreignOperators[] = {
    {"<>", "!="}, {"><", "!="}, {"=>", ">="}, {"=<", "<="}, {"=~", "~"},
};

const ForeignOperator* foreignOperatorAt(std::string_view text) {
    for (const ForeignOperator& one : foreignOperators) {
        if (text.starts_with(one.text)) return &one;
    }
    return nullptr;
}

// `written` begins with the operator, whatever stands in front of it.
void refuseForeign(std::string_view name, std::string_view written) {
    const ForeignOperator* const foreign = foreignOperatorAt(written);
    if (foreign == nullptr) return;
    const std::string_view value = written.substr(2);
    throw Failure{
        wrongUsage,
        "",
        {0, "",
         concat(inQuotes(concat(name, written)), " has no comparison ", inQuotes(foreign->text)),
         concat(name, foreign->ours, value), ""}};
}

// `rest` begins with the operator.
Condition conditionOf(const Log& log, std::string_view name, const OperatorText& entry,
                      std::string_view rest) {
    refuseForeign(name, rest);
    std::string value(rest.substr(std::string_view(entry.text).size()));
    bool isEmptyTest = entry.op == Operator::contains && value.empty();
    return {log.requireColumn(name), isEmptyTest ? Operator::empty : entry.op, value};
}

// "[c<d]=x": a name between brackets, and an operator behind it.
std::optional<Condition> bracketedCondition(const Log& log, std::string_view text) {
    std::optional<WrittenName> name = bracketedName(text);
    if (!name) return {};
    std::string_view rest = text.substr(name->size);
    rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
    const OperatorText* entry = operatorAt(rest);
    if (entry == nullptr) return {};
    return conditionOf(log, text.substr(0, name->size), *entry, rest);
}

// The name that a condition begins with, signs in it and all, with an operator behind it.
std::string nameWithSigns(const Log& log, std::string_view text) {
    for (const std::string& name : log.columnNames()) {
        if (name.empty() || !sameText(text.substr(0, name.size()), name)) continue;
        const std::string_view rest = text.substr(name.size());
        const std::size_t start = std::min(rest.find_first_not_of(' '), rest.size());
        if (operatorAt(rest.substr(start)) != nullptr) return name;
    }
    return {};
}

// "c<d=1" of a log that has no column c, and one that is called c<d.
void requireKnown(const Log& log, std::string_view name, std::string_view text) {
    if (log.findColumn(name) != noColumn) return;
    const std::string meant = nameWithSigns(log, text);
    if (meant.empty()) return;
    refuseName(log, name,
               {0, "", "there is no column " + inQuotes(name), "",
                concat("did you mean ", inBrackets(meant), text.substr(meant.size()), "?")});
}

[[noreturn]] void refuseCondition(const std::string& text) {
    throw Failure{wrongUsage,
                  "",
                  {0, "", inQuotes(text) + " is no condition",
                   "COLUMN=TEXT or one of ==, !=, <, <=, >, >=, ~ between the two", ""}};
}

}  // namespace

Condition parseCondition(const Log& log, const std::string& text) {
    if (std::optional<Condition> condition = bracketedCondition(log, text)) return *condition;
    for (std::size_t at = 1; at < text.size(); ++at) {
        const OperatorText* entry = operatorAt(std::string_view(text).substr(at));
        if (entry == nullptr) continue;
        const std::string_view name = trimmed(std::string_view(text).substr(0, at));
        requireKnown(log, name, text);
        return conditionOf(log, name, *entry, text.substr(at));
    }
    refuseCondition(text);
}

namespace {

// Where the operator stands; npos where there is none.
std::size_t operatorIn(std::string_view text) {
    const std::optional<WrittenName> name = bracketedName(text);
    for (std::size_t at = name ? name->size : 1; at < text.size(); ++at) {
        if (operatorAt(text.substr(at)) != nullptr) return at;
    }
    return text.npos;
}

}  // namespace

bool isCondition(const std::string& text) {
    return operatorIn(text) != text.npos;
}

void requireCondition(const std::string& text) {
    const std::size_t at = operatorIn(text);
    if (at == text.npos) refuseCondition(text);
    refuseForeign(std::string_view(text).substr(0, at), std::string_view(text).substr(at));
    if (text[at] == '~') Regex(text.substr(at + 1));
}

int comparePeople(std::string_view a, std::string_view b) {
    std::optional<Timecode> first = parseTimecode(a);
    std::optional<Timecode> second = parseTimecode(b);
    if (!first || !second) return compareAsRead(trimmed(a), trimmed(b));
    auto order = first->order() <=> second->order();
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

std::shared_ptr<const Regex> Regexes::of(const std::string& text) {
    std::shared_ptr<const Regex>& regex = made_[text];
    if (!regex) regex = std::make_shared<const Regex>(text);
    return regex;
}

RowTest testOf(const Log& log, const Condition& condition) {
    Regexes own;
    return testOf(log, condition, own);
}

RowTest testOf(const Log& log, const Condition& condition, Regexes& regexes) {
    const std::string& text = condition.text;
    switch (condition.op) {
        case Operator::empty:
            return testOfCell(log, condition.column, [](auto cell) { return cell.empty(); });
        case Operator::equal:
            return testOfCell(log, condition.column, [text](auto cell) { return cell == text; });
        case Operator::notEqual:
            return testOfCell(log, condition.column, [text](auto cell) { return cell != text; });
        case Operator::matches: {
            std::shared_ptr<const Regex> regex = regexes.of(text);
            return testOfCell(log, condition.column,
                              [regex](auto cell) { return regex->matches(cell); });
        }
        default:
            return testOfCell(log, condition.column, [text, op = condition.op](auto cell) {
                return !cell.empty() && holds(op, comparePeople(cell, text));
            });
    }
}

bool asksFor(const std::vector<Condition>& conditions, unsigned column) {
    return std::any_of(conditions.begin(), conditions.end(),
                       [&](const Condition& condition) { return condition.column == column; });
}

void askTable(const Log& log, const std::vector<Condition>& conditions) {
    using namespace TextSearch;
    // The query has one entry a column; the empty ones match everything.
    std::vector<Criteria> query(log.columnCount());
    for (const Condition& condition : conditions) {
        query[condition.column] = Criteria(Criterion(cellText(condition.text), eMatchContains));
    }
    log.table->setQuery(query);
}

}  // namespace vek::formats
