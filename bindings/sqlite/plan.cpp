#include "plan.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <sstream>

#include "collations.h"
#include "guard.h"

namespace vek::sql {

namespace {

// How a condition is looked at. A text that stands in the statement is compared as a text; of a
// value that comes from elsewhere SQLite alone knows whether it is compared as a number.
constexpr char byNumber = 'n';
constexpr char byText = 't';
constexpr char byValue = 'v';
constexpr char byTimecode = 'c';
constexpr char not_ = '-';

bool isEquality(int op) {
    return op == SQLITE_INDEX_CONSTRAINT_EQ || op == SQLITE_INDEX_CONSTRAINT_IS;
}

bool isRange(int op) {
    return op == SQLITE_INDEX_CONSTRAINT_GT || op == SQLITE_INDEX_CONSTRAINT_GE ||
           op == SQLITE_INDEX_CONSTRAINT_LT || op == SQLITE_INDEX_CONSTRAINT_LE;
}

bool isTextInStatement(sqlite3_index_info* info, int at) {
    sqlite3_value* value = nullptr;
    return sqlite3_vtab_rhs_value(info, at, &value) == SQLITE_OK && value != nullptr &&
           sqlite3_value_type(value) == SQLITE_TEXT;
}

char kindOf(const TableFacts& facts, sqlite3_index_info* info, int at) {
    const auto& constraint = info->aConstraint[at];
    const int op = constraint.op;
    if (constraint.usable == 0 || (!isEquality(op) && !isRange(op))) return not_;
    // All values of a list at once are more than one look at the rows for each of them.
    if (sqlite3_vtab_in(info, at, -1) != 0) return not_;
    const int column = constraint.iColumn;
    if (column == -1 || column == facts.numberColumn) return byNumber;
    if (column >= facts.columns || !facts.isUtf8) return not_;
    const char* const collation = sqlite3_vtab_collation(info, at);
    const bool isText = isTextInStatement(info, at);
    if (sqlite3_stricmp(collation, "BINARY") == 0) {
        if (isText) return byText;
        return isEquality(op) ? byValue : not_;
    }
    return isText && sqlite3_stricmp(collation, timecodeCollation) == 0 ? byTimecode : not_;
}

struct Cost {
    double cost;
    double rows;

    void narrow(char kind, int op) {
        const bool equals = isEquality(op);
        if (kind == byNumber && equals) {
            *this = {1, 1};
        } else if (kind == byValue || (kind == byText && equals)) {
            *this = {10 + cost / 100, std::max(1.0, rows / 100)};
        } else {
            *this = {cost * 0.7, std::max(1.0, rows / 2)};
        }
    }
};

bool isInOrder(const TableFacts& facts, const sqlite3_index_info* info) {
    if (info->nOrderBy != 1 || info->aOrderBy[0].desc != 0) return false;
    return info->aOrderBy[0].iColumn == -1 || info->aOrderBy[0].iColumn == facts.numberColumn;
}

}  // namespace

int planQuery(const TableFacts& facts, sqlite3_index_info* info) {
    std::ostringstream plan;
    int taken = 0;
    Cost cost{facts.rows + 10.0, facts.rows + 1.0};
    for (int i = 0; i < info->nConstraint; ++i) {
        const char kind = kindOf(facts, info, i);
        if (kind == not_) continue;
        const auto& constraint = info->aConstraint[i];
        info->aConstraintUsage[i].argvIndex = ++taken;
        plan << static_cast<int>(constraint.op) << ' ' << constraint.iColumn << ' ' << kind << ' ';
        cost.narrow(kind, constraint.op);
    }
    info->idxStr = sqlite3_mprintf("%s", plan.str().c_str());
    if (info->idxStr == nullptr) return SQLITE_NOMEM;
    info->needToFreeIdxStr = 1;
    info->estimatedCost = cost.cost;
    info->estimatedRows = static_cast<sqlite3_int64>(cost.rows);
    info->orderByConsumed = isInOrder(facts, info) ? 1 : 0;
    return SQLITE_OK;
}

RowFilter::RowFilter(const TableFacts& facts, const char* plan, int count, sqlite3_value** values)
    : end_(std::numeric_limits<unsigned>::max()) {
    std::istringstream in(plan == nullptr ? "" : plan);
    texts_.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        int op = 0;
        int column = 0;
        char kind = not_;
        in >> op >> column >> kind;
        if (kind == byNumber)
            addNumber(op, values[i]);
        else if (column >= 0 && column < facts.columns)
            addText(op, column, kind, values[i]);
    }
}

// Rows count from 1 on. What is no whole number SQLite looks at alone.
void RowFilter::addNumber(int op, sqlite3_value* value) {
    if (sqlite3_value_numeric_type(value) != SQLITE_INTEGER) return;
    constexpr sqlite3_int64 most = std::numeric_limits<unsigned>::max() - 2;
    const sqlite3_int64 number = std::clamp(sqlite3_value_int64(value), sqlite3_int64{0}, most);
    const unsigned row = static_cast<unsigned>(number);  // that behind the one of the number
    const bool isLower = op == SQLITE_INDEX_CONSTRAINT_GT || op == SQLITE_INDEX_CONSTRAINT_GE;
    const bool isUpper = op == SQLITE_INDEX_CONSTRAINT_LT || op == SQLITE_INDEX_CONSTRAINT_LE;
    const unsigned from = op == SQLITE_INDEX_CONSTRAINT_GT ? row : row - (row == 0 ? 0 : 1);
    const unsigned to = op == SQLITE_INDEX_CONSTRAINT_LT ? row - (row == 0 ? 0 : 1) : row;
    if (!isUpper) first_ = std::max(first_, from);
    if (!isLower) end_ = std::min(end_, to);
}

void RowFilter::addText(int op, int column, char kind, sqlite3_value* value) {
    const int type = sqlite3_value_type(value);
    const bool isText = kind == byText || kind == byTimecode;
    if (type != SQLITE_TEXT && (isText || type != SQLITE_INTEGER)) return;
    texts_.emplace_back(textOf(value));
    checks_.push_back({op, static_cast<unsigned>(column), kind == byTimecode, texts_.back(),
                       EqualCells(texts_.back(), isText)});
}

bool RowFilter::Check::holds(std::string_view cell) const {
    if (!isTimecode && isEquality(op)) return equal.mayHold(cell);
    const int order = isTimecode ? compareTimecodes(cell, text) : cell.compare(text);
    switch (op) {
        case SQLITE_INDEX_CONSTRAINT_GT:
            return order > 0;
        case SQLITE_INDEX_CONSTRAINT_GE:
            return order >= 0;
        case SQLITE_INDEX_CONSTRAINT_LT:
            return order < 0;
        case SQLITE_INDEX_CONSTRAINT_LE:
            return order <= 0;
        default:
            return order == 0;
    }
}

bool RowFilter::takes(const LogImage& image, unsigned row) const {
    return std::all_of(checks_.begin(), checks_.end(), [&](const Check& check) {
        return check.holds(image.cell(row, check.column));
    });
}

bool RowFilter::find(LogImage& image, std::vector<unsigned>& rows) const {
    for (const Check& check : checks_) {
        if (check.isTimecode || !isEquality(check.op) || !check.equal.hasKey()) continue;
        const ColumnLookup* lookup = image.lookup(check.column);
        if (lookup == nullptr) continue;
        lookup->find(check.equal, rows);
        return true;
    }
    return false;
}

}  // namespace vek::sql
