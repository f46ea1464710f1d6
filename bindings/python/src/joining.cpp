#include "joining.h"

#include <optional>
#include <string>

#include <vekdb/formats/comparing.h>
#include <vekdb/formats/merging.h>
#include "arguments.h"
#include "errors.h"
#include "texts.h"

namespace vekpy {

namespace {

py::object resultOf(const char* name) {
    return py::module_::import("vekdb._results").attr(name);
}

py::list strsOf(const std::vector<std::string>& texts) {
    py::list list;
    for (const std::string& text : texts) list.append(strOf(text));
    return list;
}

vek::MergeOptions::Prefer preferOf(const std::string& name) {
    if (name == "report") return vek::MergeOptions::report;
    if (name == "first") return vek::MergeOptions::first;
    if (name == "last") return vek::MergeOptions::last;
    if (name == "filled") return vek::MergeOptions::filled;
    throw py::value_error(
        "of two values 'report', 'first', 'last' or 'filled' is preferred, not '" + name + "'");
}

py::object conflictOf(const vek::MergeConflict& conflict) {
    const bool isCell = conflict.kind == vek::MergeConflict::cell;
    const py::object row = conflict.row ? py::object(py::int_(*conflict.row)) : py::none();
    return resultOf("Conflict")(isCell ? "cell" : "key", strOf(conflict.file), conflict.line,
                                strOf(conflict.column), strOf(conflict.value), strOf(conflict.kept),
                                row, strOf(conflict.text()));
}

py::object placeIn(const vek::Log& log, unsigned row) {
    const std::optional<unsigned> place = log.placeOf(log.row(row));
    return place ? py::object(py::int_(*place)) : py::none();
}

Shared logIn(py::handle value) {
    if (py::isinstance<SharedLog>(value)) return py::cast<Shared>(value);
    throw py::type_error("a Log is joined to a log, not " + typeName(value));
}

py::object differenceOf(const vek::RowDifference& row, const vek::Log& first,
                        const vek::Log& second) {
    static const char* const kinds[] = {"removed", "added", "changed"};
    py::list cells;
    for (const vek::CellDifference& cell : row.cells) {
        cells.append(
            resultOf("CellDifference")(strOf(cell.column), strOf(cell.before), strOf(cell.after)));
    }
    const py::object a = row.kind == vek::RowDifference::added ? py::none() : placeIn(first, row.a);
    const py::object b =
        row.kind == vek::RowDifference::removed ? py::none() : placeIn(second, row.b);
    return resultOf("RowDifference")(kinds[row.kind], a, b, strOf(row.key), cells);
}

}  // namespace

py::object merge(const Shared& into, const py::args& others, py::handle key,
                 const std::string& prefer, bool joinsUnlike, std::size_t mostConflicts) {
    vek::MergeOptions options;
    options.key = Text(key, "the name of a column").string();
    options.prefer = preferOf(prefer);
    options.joinsUnlike = joinsUnlike;
    options.mostConflicts = mostConflicts;
    std::vector<SharedLog*> all = {into.get()};
    for (py::handle other : others) all.push_back(logIn(other).get());
    const Holds holds(all);
    vek::Log& target = Holds::logOf(*into);
    std::vector<vek::Log> from;
    for (std::size_t i = 1; i < all.size(); ++i) from.push_back(Holds::logOf(*all[i]));
    const vek::Merged merged = valueOf(unlocked([&] { return vek::merge(target, from, options); }));
    py::list conflicts;
    for (const vek::MergeConflict& conflict : merged.conflicts) {
        conflicts.append(conflictOf(conflict));
    }
    return resultOf("Merged")(conflicts, merged.cells, merged.keys, strsOf(merged.notes));
}

py::object diff(const Shared& first, const Shared& second, py::handle key) {
    const Text column(key, "the name of a column");
    const Holds holds({first.get(), second.get()});
    const vek::Log& a = Holds::logOf(*first);
    const vek::Log& b = Holds::logOf(*second);
    const vek::Differences found =
        valueOf(unlocked([&] { return vek::compare(a, b, column.view()); }));
    py::list rows;
    for (const vek::RowDifference& row : found.rows) rows.append(differenceOf(row, a, b));
    return resultOf("Differences")(strsOf(found.onlyInFirst), strsOf(found.onlyInSecond), rows,
                                   strsOf(found.notes));
}

}  // namespace vekpy
