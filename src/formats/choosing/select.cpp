#include "formats/choosing/select.h"

#include <algorithm>

#include "formats/choosing/conditions.h"
#include "formats/choosing/ranges.h"
#include "formats/choosing/same_values.h"
#include "formats/text/text_lines.h"
#include "formats/text/written_names.h"

namespace vek::formats {

namespace {

// For each row of the table whether it is still wanted.
using Marks = std::vector<char>;

// Puts conditions together, of which all must hold or, with `any`, one. Each is tested only for
// the rows that those before it leave open.
class Choosing {
public:
    Choosing(const Log& log, bool any, Regexes* regexes)
        : log_(log), any_(any), regexes_(regexes), marks_(log.rowCount(), !any) {}

    void add(const Condition& condition) {
        if (condition.op != Operator::contains) return apply(test(condition));
        if (isOfLabelRange(log_, condition.column)) return apply(labelRangeTest(log_, condition));
        if (any_ || asksFor(asked_, condition.column)) ask();
        asked_.push_back(condition);
    }

    template <class Holds>
    void apply(const Holds& holds) {
        for (unsigned row = 0; row < marks_.size(); ++row) {
            if (marks_[row] != any_) marks_[row] = holds(row);
        }
    }

    Marks marks() {
        ask();
        return std::move(marks_);
    }

private:
    RowTest test(const Condition& condition) const {
        return regexes_ == nullptr ? testOf(log_, condition) : testOf(log_, condition, *regexes_);
    }

    void ask() {
        if (asked_.empty()) return;
        askTable(log_, asked_);
        log_.table->tag_matching_records(0);
        apply([this](unsigned row) { return log_.table->get_record(row)->get_tag() != 0; });
        asked_.clear();
    }

    const Log& log_;
    bool any_;
    Regexes* regexes_;
    Marks marks_;
    std::vector<Condition> asked_;  // by one query of the table, still to be put
};

Marks rowsThatHold(const Log& log, const Selection& selection) {
    Choosing choosing(log, selection.any, selection.regexes);
    for (const std::string& text : selection.where) choosing.add(parseCondition(log, text));
    for (const Condition& condition : selection.conditions) choosing.add(condition);
    if (!selection.at.empty()) choosing.apply(codeTest(log, selection.at));
    return choosing.marks();
}

void keepAmong(const std::vector<unsigned>& rows, Marks& marks) {
    Marks isThere(marks.size(), 0);
    for (unsigned row : rows) isThere[row] = marks[row];
    marks.swap(isThere);
}

class Tags {
public:
    explicit Tags(const Log& log) : log_(log), column_(log.findColumn("Tag")) {}

    bool areNone() const { return column_ == noColumn; }
    bool has(unsigned row) const {
        if (areNone()) return false;
        const std::string_view cell = log_.cell(row, column_);
        return cell.size() == 1 ? cell[0] >= '1' && cell[0] <= '9' : isTag(cell);
    }

private:
    const Log& log_;
    unsigned column_;
};

void keepTagged(const Log& log, Marks& marks) {
    Tags tags(log);
    for (unsigned row = 0; row < marks.size(); ++row) marks[row] = marks[row] && tags.has(row);
}

// The first of the rows that have a value.
void keepFirstOfEach(const Log& log, unsigned column, Marks& marks) {
    SameValues seen(log, column);
    for (unsigned row = 0; row < marks.size(); ++row) {
        if (marks[row]) marks[row] = seen.firstOf(row) == row;
    }
}

// Every row whose value another row has, too. No value is no duplicate.
void keepRepeated(const Log& log, unsigned column, Marks& marks) {
    SameValues seen(log, column);
    Marks isRepeated(marks.size(), 0);
    for (unsigned row = 0; row < marks.size(); ++row) {
        if (!marks[row] || log.cell(row, column).empty()) continue;
        const unsigned first = seen.firstOf(row);
        if (first != row) isRepeated[first] = isRepeated[row] = 1;
    }
    marks.swap(isRepeated);
}

std::vector<unsigned> markedRows(const Marks& marks) {
    std::vector<unsigned> rows;
    for (unsigned row = 0; row < marks.size(); ++row) {
        if (marks[row]) rows.push_back(row);
    }
    return rows;
}

bool isEveryRow(const Log& log, const std::vector<unsigned>& rows) {
    if (rows.size() != log.rowCount()) return false;
    const auto isOther = [next = 0u](unsigned row) mutable { return row != next++; };
    return std::none_of(rows.begin(), rows.end(), isOther);
}

VDBView untaggedViewOf(const Log& log, const std::vector<unsigned>& rows) {
    VDBView view(log.table.get());
    if (isEveryRow(log, rows)) {
        view->displayAllRecords();
        return view;
    }
    view->sizeIndexFor(static_cast<int>(rows.size()));
    for (unsigned row : rows) view->append(static_cast<int>(row));
    return view;
}

void cutToPage(const Selection& selection, std::vector<unsigned>& rows) {
    std::size_t skipped = std::min(selection.offset, rows.size());
    rows.erase(rows.begin(), rows.begin() + static_cast<std::ptrdiff_t>(skipped));
    if (selection.limit != 0 && rows.size() > selection.limit) rows.resize(selection.limit);
}

bool hasConditions(const Selection& selection) {
    return !selection.where.empty() || !selection.conditions.empty() || !selection.at.empty();
}

Marks chosenRows(const Log& log, const Selection& selection, const std::vector<unsigned>* among) {
    Marks marks(log.rowCount(), 1);
    if (hasConditions(selection)) marks = rowsThatHold(log, selection);
    if (among != nullptr) keepAmong(*among, marks);
    if (selection.tagged) keepTagged(log, marks);
    if (!selection.duplicates.empty()) {
        keepRepeated(log, log.requireColumn(selection.duplicates), marks);
    }
    if (!selection.unique.empty()) {
        keepFirstOfEach(log, log.requireColumn(selection.unique), marks);
    }
    return marks;
}

void putInOrderAsked(const Log& log, const Selection& selection, std::vector<unsigned>& rows) {
    std::vector<unsigned> order = selection.sortColumns;
    if (!selection.sort.empty()) order = columnList(log, selection.sort);
    if (!order.empty()) rows = sortedRows(log, rows, order);
    if (selection.reverse) std::reverse(rows.begin(), rows.end());
    cutToPage(selection, rows);
}

Selected inOrderAsked(const Log& log, const Selection& selection, std::vector<unsigned> rows) {
    Selected selected{{}, rows.size()};
    putInOrderAsked(log, selection, rows);
    selected.view = viewOf(log, rows);
    return selected;
}

Selected select(const Log& log, const Selection& selection, const std::vector<unsigned>* among) {
    return inOrderAsked(log, selection, markedRows(chosenRows(log, selection, among)));
}

void keepFirstOfEach(const Log& log, unsigned column, std::vector<unsigned>& rows) {
    SameValues seen(log, column);
    std::erase_if(rows, [&](unsigned row) { return seen.firstOf(row) != row; });
}

}  // namespace

void sortBy(const std::vector<unsigned>& columns, VDBView& view) {
    std::vector<int> fields(columns.begin(), columns.end());
    fields.push_back(-1);
    view->set_sortfields(fields.data());
    view->sort(0, 0);
    view->set_sortfield(0);
}

bool narrows(const Selection& selection) {
    return hasConditions(selection) || selection.tagged || !selection.unique.empty() ||
           !selection.duplicates.empty();
}

Wanted wantedRows(const Selection& selection) {
    return selection.any ? Wanted() : selection.where;
}

Selected selectRows(const Log& log, const Selection& selection) {
    return select(log, selection, nullptr);
}

std::vector<unsigned> selectedRows(const Log& log, const Selection& selection) {
    std::vector<unsigned> rows = markedRows(chosenRows(log, selection, nullptr));
    putInOrderAsked(log, selection, rows);
    return rows;
}

Selected selectRows(const Log& log, const Selection& selection,
                    const std::vector<unsigned>& among) {
    return select(log, selection, &among);
}

Selected selectInOrder(const Log& log, const Selection& selection, std::vector<unsigned> among) {
    Selection unlessRepeated = selection;
    unlessRepeated.unique.clear();
    const Marks marks = chosenRows(log, unlessRepeated, &among);
    std::erase_if(among, [&](unsigned row) { return marks[row] == 0; });
    if (!selection.unique.empty()) {
        keepFirstOfEach(log, log.requireColumn(selection.unique), among);
    }
    return inOrderAsked(log, selection, std::move(among));
}

std::vector<unsigned> sortedRows(const Log& log, const std::vector<unsigned>& rows,
                                 const std::vector<unsigned>& columns) {
    VDBView sorted = untaggedViewOf(log, rows);
    sortBy(columns, sorted);
    return rowsOf(sorted);
}

std::vector<bool> taggedRows(const Log& log) {
    const Tags tags(log);
    std::vector<bool> are(log.rowCount());
    for (unsigned row = 0; row < are.size(); ++row) are[row] = tags.has(row);
    return are;
}

VDBView viewOf(const Log& log, const std::vector<unsigned>& rows) {
    VDBView view = untaggedViewOf(log, rows);
    const Tags tags(log);
    if (tags.areNone()) return view;
    // Rows in another order are looked at in the table's, where they stand one behind the other.
    const bool areMany = rows.size() > log.rowCount() / 4;
    const std::vector<bool> all = areMany ? taggedRows(log) : std::vector<bool>();
    for (unsigned i = 0; i < rows.size(); ++i) {
        if (areMany ? all[rows[i]] : tags.has(rows[i])) view->set_tag(i, 1);
    }
    return view;
}

std::vector<unsigned> rowsOf(const VDBView& view) {
    std::vector<unsigned> rows;
    rows.reserve(view->get_num_records());
    for (unsigned i = 0; i < view->get_num_records(); ++i) rows.push_back(view->baseIndex(i));
    return rows;
}

std::vector<unsigned> columnList(const Log& log, const std::string& names) {
    // A name that holds a comma itself is taken whole.
    if (log.findColumn(names) != noColumn) return {log.requireColumn(names)};
    std::vector<unsigned> columns;
    for (std::string_view name : splitNames(names)) {
        columns.push_back(log.requireColumn(trimmed(name)));
    }
    return columns;
}

}  // namespace vek::formats
