#include "log_binding.h"

#include "arguments.h"
#include "arrow_streams.h"
#include "choosing.h"
#include "columns.h"
#include "errors.h"
#include "joining.h"
#include "opening.h"
#include "row_maker.h"
#include "saving.h"
#include "texts.h"

namespace vekpy {

namespace {

using namespace py::literals;

std::size_t sizeOf(const Shared& log) {
    return Hold(*log)->size();
}

// Walks the rows as they are at each step.
struct Walk {
    Shared log;
    unsigned next = 0;
    RowMaker maker = {};

    py::object take() {
        const Hold hold(*log, Hold::glance);
        if (next >= hold->size()) return {};
        return maker.row(log, hold->at(next++).index());
    }
};

Row rowAt(const Shared& log, py::ssize_t index) {
    const Hold hold(*log, Hold::glance);
    return {log, hold->at(placeOf(index, hold->size())).index()};
}

py::object get(const Shared& log, const py::object& key) {
    if (py::isinstance<py::slice>(key)) return py::cast(part(log, nullptr, key));
    if (PyIndex_Check(key.ptr()) != 0) return newRow(rowAt(log, indexIn(key)));
    const Hold hold(*log);
    return py::cast(columnOf(log, hold.columnNamed(key), hold));
}

void setRow(const Shared& log, py::handle key, py::handle cells) {
    const py::ssize_t place = indexIn(key);
    const py::dict given = dictIn(cells, "a row");
    const Hold hold(*log);
    const unsigned row = hold->at(placeOf(place, hold->size())).index();
    storeCells(hold, row, cellsOf(hold, given, {}));
}

bool has(const Shared& log, const py::object& row) {
    if (!py::isinstance<Row>(row)) return false;
    const Row& wanted = py::cast<const Row&>(row);
    return wanted.log == log && Hold(*log).shows(wanted.index);
}

void removeRows(const Shared& log, const std::vector<unsigned>& rows) {
    const Hold hold(*log);
    hold.removeRows(viewOf(hold, rows));
}

void removeAt(const Shared& log, const py::object& key) {
    const bool isSlice = py::isinstance<py::slice>(key);
    const py::ssize_t index = isSlice ? 0 : indexIn(key);
    const Hold hold(*log);
    std::vector<unsigned> rows;
    if (isSlice) {
        for (std::size_t place : placesOf(key, hold->size())) {
            rows.push_back(hold->at(static_cast<unsigned>(place)).index());
        }
    } else {
        rows.push_back(hold->at(placeOf(index, hold->size())).index());
    }
    hold.removeRows(viewOf(hold, rows));
}

void requireOwn(bool isOwn) {
    if (!isOwn) throw py::value_error("the rows are those of another log");
}

void remove(const Shared& log, const py::object& rows) {
    if (py::isinstance<Row>(rows)) {
        const Row& row = py::cast<const Row&>(rows);
        requireOwn(row.log == log);
        Hold(*log).requireRow(row.index);
        return removeRows(log, {row.index});
    }
    if (!py::isinstance<RowList>(rows)) {
        throw py::type_error("a Row or a View is removed from a log, not " + typeName(rows));
    }
    const View view = py::cast<View>(rows);
    requireOwn(view->log() == log);
    const Hold hold(*log);
    hold.removeRows(viewOf(hold, view->rows(hold)));
}

py::list column(const Shared& log, py::handle name) {
    const Hold hold(*log);
    return textsOf(hold, hold.columnNamed(name), shownRows(hold));
}

py::list tuples(const Shared& log, const py::args& names) {
    const Hold hold(*log);
    return tuplesOf(hold, columnsNamed(hold, names), shownRows(hold));
}

Column addColumn(const Shared& log, py::handle name) {
    const Text text(name, "the name of a column");
    const Hold hold(*log);
    const vek::Column added = valueOf(hold->addColumn(text.view()));
    hold.forgetNames();
    return columnOf(log, added.index(), hold);
}

void removeColumn(const Shared& log, py::handle name) {
    const Hold hold(*log);
    hold.removeColumn(hold.columnNamed(name));
}

void renameColumn(const Shared& log, py::handle old, py::handle name) {
    const Text text(name, "the name of a column");
    const Hold hold(*log);
    requireDone(hold->renameColumn(hold.columnAt(hold.columnNamed(old)), text.view()));
    hold.forgetNames();
}

py::list parameters(const Shared& log) {
    const Hold hold(*log);
    py::list pairs;
    for (const vek::Parameter& parameter : hold->parameters()) {
        pairs.append(py::make_tuple(strOf(parameter.name), strOf(parameter.value)));
    }
    return pairs;
}

py::object parameter(const Shared& log, py::handle name) {
    const Text text(name, "the name of a parameter");
    const Hold hold(*log);
    const std::optional<std::string> value = hold->parameter(text.view());
    return value ? py::object(strOf(*value)) : py::none();
}

void setParameter(const Shared& log, py::handle name, py::handle value) {
    const Text named(name, "the name of a parameter");
    const Text text(value, "a parameter");
    requireDone(Hold(*log)->setParameter(named.view(), text.view()));
}

py::list problems(const Shared& log) {
    const py::object make = py::module_::import("vekdb._results").attr("Problem");
    const Hold hold(*log);
    py::list list;
    for (const vek::Problem& problem : hold->problems()) {
        list.append(make(problem.line, strOf(problem.column), strOf(problem.found),
                         strOf(problem.expected), strOf(problem.outcome), problem.isDamage,
                         strOf(problem.text(hold->name()))));
    }
    return list;
}

py::object save(const Shared& log, bool keepsOld) {
    const Hold hold(*log);
    return savedOf(valueOf(unlocked([&] { return hold->save(keepsOld); })));
}

Shared copy(const Shared& log) {
    const Hold hold(*log);
    return std::make_shared<SharedLog>(valueOf(unlocked([&] { return hold->copy(); })));
}

void close(const Shared& log) {
    if (!isClosed(*log)) Hold(*log).close();
}

std::string shown(const Shared& log) {
    if (isClosed(*log)) return "<vekdb.Log, closed>";
    const Hold hold(*log);
    return "<vekdb.Log " + std::string(py::repr(strOf(hold->name()))) + " of " +
           std::to_string(hold->size()) + " rows>";
}

void bindRows(py::class_<SharedLog, Shared>& log) {
    log.def("__len__", &sizeOf);
    log.def("__getitem__", &get, "key"_a,
            "A row by its place, a view by a slice, or a column by its name.");
    bindSubscript<Shared>(log, &get);
    log.def("__setitem__", &setRow, "place"_a, "cells"_a, "Puts texts in cells of a row.");
    log.def("__delitem__", &removeAt, "key"_a, "Removes a row, or those of a slice.");
    log.def("__iter__", [](const Shared& self) { return Walk{self}; });
    log.def("__contains__", &has, "row"_a);
    log.def(
        "append",
        [](const Shared& self, const py::object& cells, const py::kwargs& more) {
            return appendRow(self, dictIn(cells, "a row"), more);
        },
        py::arg("cells") = py::dict(),
        "Adds a row behind all others: log.append({'Scene': '12'}, Take='3').");
    log.def(
        "extend",
        [](const Shared& self, const py::iterable& rows) {
            // They may be rows of the log itself, which would never end while it grows.
            for (py::handle row : py::list(rows)) appendRow(self, dictIn(row, "a row"));
        },
        "rows"_a, "Adds a row for each mapping.");
    log.def("remove", &remove, "rows"_a, "Removes a row, or the rows of a view, from the log.");
    log.def("column", &column, "name"_a, "The cells of a column as a list of str.");
    log.def("tuples", &tuples,
            "A list with a tuple of cells for each row, of these columns or all.");
}

void bindChoices(py::class_<SharedLog, Shared>& log) {
    log.def(
        "where",
        [](const Shared& self, const py::args& conditions, const py::kwargs& options) {
            return choose(self, nullptr, choiceOf(conditions, options));
        },
        "A view of the rows for which all conditions hold.\n\nConditions are texts, as "
        "'Scene=12', or built, as col('Take') >= '3'. Options: any\n(one condition is enough), at "
        "(a timecode or keycode that the row holds), tagged,\nunique and duplicates (a column), "
        "order (columns), reverse, limit and offset.");
    log.def(
        "sorted",
        [](const Shared& self, const py::args& columns, bool reverse) {
            View sorted = choose(self, nullptr, {});
            order(sorted, columns, reverse);
            return sorted;
        },
        py::kw_only(), "reverse"_a = false, "A view of all rows by these columns.");
    log.def_property_readonly(
        "tagged",
        [](const Shared& self) {
            vek::Choice choice;
            choice.tagged();
            return choose(self, nullptr, std::move(choice));
        },
        "A view of the tagged rows.");
}

void bindColumnsOf(py::class_<SharedLog, Shared>& log) {
    log.def_property_readonly(
        "columns", [](const Shared& self) { return ColumnList{self}; }, "The columns.");
    log.def("add_column", &addColumn, "name"_a, "Adds a column behind the others.");
    log.def("remove_column", &removeColumn, "name"_a, "Removes a column with its cells.");
    log.def("rename_column", &renameColumn, "old"_a, "name"_a, "Gives a column another name.");
    log.def("_parameters", &parameters);
    log.def("_parameter", &parameter);
    log.def("_set_parameter", &setParameter);
}

void bindFacts(py::class_<SharedLog, Shared>& log) {
    log.def_property_readonly(
        "name", [](const Shared& self) { return strOf(Hold(*self)->name()); },
        "The path as it was named.");
    log.def_property_readonly(
        "format", [](const Shared& self) { return strOf(vek::nameOf(Hold(*self)->format())); },
        "The format that it was read from, as formats() names it.");
    log.def_property_readonly("problems", &problems,
                              "What was odd in the file and could be read all the same: the first "
                              "thousand.");
    log.def_property_readonly(
        "more_problems", [](const Shared& self) { return Hold(*self)->moreProblems(); },
        "How many problems there are behind those.");
    log.def_property_readonly(
        "not_read", [](const Shared& self) { return strOf(Hold(*self)->notRead()); },
        "Why rows at the end of the file could not be read; '' where all are there.");
    log.def_property_readonly(
        "closed", [](const Shared& self) { return isClosed(*self); }, "Whether it was closed.");
}

void bindFiles(py::class_<SharedLog, Shared>& log) {
    log.def("save", &save, py::kw_only(), "keep_old"_a = false,
            "Writes the log back into the file that open(path, edit=True) read: whole or not at "
            "all. Once; to go on changing it, open it anew.");
    log.def(
        "save_as",
        [](const Shared& self, py::handle path, py::handle format, const py::kwargs& options) {
            return saveAs(self, nullptr, path, format, options);
        },
        "path"_a, "format"_a = py::none(),
        "Writes the log into a file, whole or not at all, in the format that its ending says, and "
        "answers what the format did not hold.\n\nOptions: columns, line_ends ('lf', 'crlf', "
        "'cr'), rate, short_reels, guard_formulas,\nvideo_format, audio_format, tracks, names, "
        "max_bytes.");
    log.def(
        "write",
        [](const Shared& self, const py::object& file, py::handle format,
           const py::kwargs& options) { return writeTo(self, nullptr, file, format, options); },
        "file"_a, "format"_a, "Writes the log into a file object that takes bytes.");
    log.def(
        "to_bytes",
        [](const Shared& self, py::handle format, const py::kwargs& options) {
            return bytesIn(self, nullptr, format, options);
        },
        "format"_a, "The log in a format, as bytes.");
    log.def(
        "to_text",
        [](const Shared& self, py::handle format, const py::kwargs& options) {
            return strOf(std::string_view(bytesIn(self, nullptr, format, options)));
        },
        "format"_a, "The log in a text format, as a str.");
    log.def(
        "would_lose",
        [](const Shared& self, py::handle format, const py::kwargs& options) {
            return wouldLose(self, nullptr, format, options);
        },
        "format"_a, "What a format would not hold of the log; nothing is written.");
    log.def("copy", &copy, "A log of its own with the same rows and columns.");
    log.def("close", &close,
            "Lets go of the file and of the memory. Rows, columns and views of the log raise a "
            "ClosedError afterwards.");
    log.def("__enter__", [](py::object self) { return self; });
    log.def("__exit__", [](const Shared& self, const py::args&) { close(self); });
}

void bindJoining(py::class_<SharedLog, Shared>& log) {
    log.def(
        "merge",
        [](const Shared& self, const py::args& others, py::handle key, const std::string& prefer,
           bool unlike, std::size_t mostConflicts) {
            return merge(self, others, key, prefer, unlike, mostConflicts);
        },
        py::kw_only(), "key"_a = "", "prefer"_a = "report", "unlike"_a = false,
        "max_conflicts"_a = 1000,
        "Joins further logs to this one: rows behind rows or, with a key, field by field.\n\nOf "
        "two values for a cell prefer says which is taken: 'report' (the one that is there,\nand "
        "the other is told), 'first', 'last' or 'filled'. unlike joins logs of two frame rates.");
    log.def("diff", &diff, "other"_a, "key"_a = "",
            "How another log differs from this one: rows that have the same value in the key "
            "column or, without one, in their order.");
}

}  // namespace

Row appendRow(const Shared& log, const py::dict& cells, const py::kwargs& more) {
    const Hold hold(*log);
    const std::vector<Cell> texts = cellsOf(hold, cells, more);
    const unsigned row = valueOf(hold->addRow()).index();
    storeCells(hold, row, texts);
    return {log, row};
}

void bindLog(py::module_& module) {
    bindWalk<Walk>(module, "_LogWalk");
    py::class_<SharedLog, Shared> log(
        module, "Log",
        "A log in memory, whatever format it came from: a sequence of rows.\n\nLog(columns, rows) "
        "makes a new one; a column is a name, or a name and a type. Threads that\nuse a log at the "
        "same time take turns.");
    log.def(py::init(&create), "columns"_a, "rows"_a = py::tuple(), py::kw_only(), "name"_a = "");
    log.def("__repr__", &shown);
    neverPickled(log);
    bindRows(log);
    bindChoices(log);
    bindColumnsOf(log);
    bindFacts(log);
    bindFiles(log);
    bindJoining(log);
    bindHandingOver<Shared>(log);
    py::module_::import("collections.abc").attr("Collection").attr("register")(log);
    module.def("open", &open, "file"_a, py::kw_only(), "edit"_a = false);
    module.def("loads", &loads, "text"_a, "name"_a = "");
}

}  // namespace vekpy
