#include "arguments.h"
#include "columns.h"
#include "errors.h"
#include "rows.h"
#include "slots.h"
#include "texts.h"

namespace vekpy {

namespace {

using namespace py::literals;

py::object columnsOf(const Row& row) {
    return py::cast(ColumnList{row.log});
}

unsigned lengthOf(const Row& row) {
    const Hold hold(*row.log);
    hold.requireRow(row.index);
    return hold->columns().size();
}

py::str get(const Row& row, py::handle column) {
    const bool isPlace = !PyUnicode_CheckExact(column.ptr()) && PyIndex_Check(column.ptr()) != 0;
    const py::ssize_t place = isPlace ? indexIn(column) : 0;
    const Hold hold(*row.log, Hold::glance);
    hold.requireRow(row.index);
    if (isPlace) {
        return strOf(hold.cell(row.index, placeOf(place, hold->columns().size())));
    }
    return strOf(hold.cell(row.index, hold.columnNamed(column)));
}

py::object getOr(const Row& row, py::handle column, py::object otherwise) {
    const Hold hold(*row.log);
    hold.requireRow(row.index);
    const auto found = hold->column(Text(column, "the name of a column").view());
    if (!found) return otherwise;
    return strOf(hold.cell(row.index, found->index()));
}

bool has(const Row& row, py::handle column) {
    if (!PyUnicode_Check(column.ptr())) return false;
    const Hold hold(*row.log);
    return static_cast<bool>(hold->column(Text(column, "the name of a column").view()));
}

void set(const Row& row, py::handle column, py::handle value) {
    const Text text(value, "a cell");
    const Hold hold(*row.log);
    hold.requireRow(row.index);
    const vek::Column to = hold.columnAt(hold.columnNamed(column));
    requireDone(hold->set(hold->row(row.index), to, text.view()));
}

// All names are looked up and all values read before the first cell is changed.
void update(const Row& row, const py::object& others, const py::kwargs& cells) {
    const py::dict given = dictIn(others, "cells");
    const Hold hold(*row.log);
    hold.requireRow(row.index);
    storeCells(hold, row.index, cellsOf(hold, given, cells));
}

bool isTagged(const Row& row) {
    const Hold hold(*row.log);
    hold.requireRow(row.index);
    return hold->row(row.index).isTagged();
}

void setTagged(const Row& row, bool isTagged) {
    const Hold hold(*row.log);
    hold.requireRow(row.index);
    requireDone(hold->setTagged(hold->row(row.index), isTagged));
    hold.forgetNames();
}

py::list values(const Row& row) {
    const Hold hold(*row.log);
    hold.requireRow(row.index);
    const vek::Row from = hold->row(row.index);
    const unsigned count = from.size();
    py::list texts(count);
    for (unsigned i = 0; i < count; ++i) texts[i] = strOf(from.at(i));
    return texts;
}

py::list names(const Row& row) {
    const Hold hold(*row.log);
    return ownNames(hold);
}

py::list items(const Row& row) {
    return py::list(py::module_::import("builtins").attr("zip")(names(row), values(row)));
}

unsigned placeOfRow(const Row& row) {
    const Hold hold(*row.log);
    hold.requireRow(row.index);
    return *hold->placeOf(hold->row(row.index));
}

std::size_t lineOf(const Row& row) {
    const Hold hold(*row.log);
    hold.requireRow(row.index);
    return hold->row(row.index).line();
}

bool isInLog(const Row& row) {
    const Hold hold(*row.log);
    return hold.shows(row.index);
}

bool isSame(const Row& row, const py::object& other) {
    if (py::isinstance<Row>(other)) {
        const Row& that = py::cast<const Row&>(other);
        if (that.log == row.log && that.index == row.index) return true;
    }
    if (!py::hasattr(other, "keys")) return false;
    return py::dict(items(row)).equal(py::dict(other));
}

std::string shown(const py::object& self) {
    const Row& row = py::cast<const Row&>(self);
    if (!isInLog(row)) return "<vekdb.Row, removed>";
    return "<vekdb.Row " + std::to_string(placeOfRow(row)) + " " +
           std::string(py::repr(py::dict(items(row)))) + ">";
}

}  // namespace

// As py::cast does it, which looks for the type of what it is given by its name each time.
py::object newRow(Row row) {
    static const py::detail::type_info* const type = py::detail::get_type_info(typeid(Row));
    py::object made = py::reinterpret_steal<py::object>(py::detail::make_new_instance(type->type));
    auto* const instance = reinterpret_cast<py::detail::instance*>(made.ptr());
    instance->get_value_and_holder().value_ptr() = new Row(std::move(row));
    instance->owned = true;
    type->init_instance(instance, nullptr);
    return made;
}

void bindRow(py::module_& module) {
    py::class_<Row> row(module, "Row",
                        "A row of a log: a mapping from the names of its columns to its cells, "
                        "which are str.\n\nIt is a handle: it shows what is edited later, and "
                        "keeps its log alive. After its\nrow was removed from the log it raises "
                        "a StaleError.");
    row.def("__getitem__", &get, "column"_a,
            "The cell of a column, by the column's name or its place.");
    typeObject(row)->tp_as_mapping->mp_subscript = [](PyObject* self, PyObject* column) {
        return inSlot([&] { return get(valueIn<Row>(self), column); });
    };
    row.def("__setitem__", &set, "column"_a, "value"_a, "Puts a text in the cell of a column.");
    row.def("__contains__", &has, "column"_a);
    row.def("__len__", &lengthOf);
    row.def("__iter__", [](const Row& self) { return py::iter(names(self)); });
    row.def("__eq__", &isSame, "other"_a);
    row.def("__repr__", &shown);
    neverMadeByHand(row);
    row.attr("__hash__") = py::none();
    row.def("get", &getOr, "column"_a, "default"_a = py::none(),
            "The cell of a column, or the default where there is no such column.");
    row.def("keys", &names, "The names of the columns: 'Reel#2' for the second of a name.");
    row.def("values", &values, "All cells.");
    row.def("items", &items, "Names and cells.");
    row.def("update", &update, py::arg("other") = py::dict(),
            "Puts texts in cells, all of them or none: row.update({'Scene': '12'}, Take='3').");
    row.def_property("tagged", &isTagged, &setTagged,
                     "Whether the row is tagged: its cell in the column Tag, which is made when "
                     "the first row is tagged.");
    row.def_property_readonly("index", &placeOfRow, "The place of the row in its log, from 0 on.");
    row.def_property_readonly("line", &lineOf,
                              "The line of the file that the row began on, from 1 on; 0 for a "
                              "row that was added.");
    row.def_property_readonly(
        "is_stale", [](const Row& self) { return !isInLog(self); },
        "Whether the row was removed from its log.");
    row.def_property_readonly("columns", &columnsOf, "The columns of its log.");
    py::module_::import("collections.abc").attr("Mapping").attr("register")(row);
}

}  // namespace vekpy
