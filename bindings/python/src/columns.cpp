#include "columns.h"

#include <algorithm>

#include <vekdb/field_types.h>
#include "arguments.h"
#include "errors.h"
#include "slots.h"

namespace vekpy {

namespace {

using namespace py::literals;

// Where the column stands now; a StaleError when it was removed.
unsigned indexOf(Column& column, const Hold& hold) {
    const std::vector<unsigned>& removed = hold.removedColumns();
    for (; column.seen < removed.size(); ++column.seen) {
        const unsigned gone = removed[column.seen];
        if (gone == column.index) {
            vek::Reason reason;
            reason.file = hold->name();
            reason.found = "the column was removed from the log";
            raiseNamed("StaleError", reason);
        }
        if (gone < column.index) --column.index;
    }
    return column.index;
}

std::vector<unsigned> rowsOf(const Column& column, const Hold& hold) {
    return column.view ? column.view->rows(hold) : shownRows(hold);
}

std::size_t sizeOf(const Column& column) {
    const Hold hold(*column.log);
    return column.view ? column.view->rows(hold).size() : hold->size();
}

unsigned rowAt(const Column& column, py::ssize_t index, const Hold& hold) {
    if (!column.view) return hold->at(placeOf(index, hold->size())).index();
    const std::vector<unsigned>& rows = column.view->rows(hold);
    return rows[placeOf(index, rows.size())];
}

py::list listOf(Column& column) {
    const Hold hold(*column.log);
    return textsOf(hold, indexOf(column, hold), rowsOf(column, hold));
}

py::object get(Column& column, const py::object& place) {
    const bool isSlice = py::isinstance<py::slice>(place);
    const py::ssize_t at = isSlice ? 0 : indexIn(place);
    const Hold hold(*column.log);
    const unsigned index = indexOf(column, hold);
    if (!isSlice) return strOf(hold.cell(rowAt(column, at, hold), index));
    const std::vector<unsigned> rows = rowsOf(column, hold);
    std::vector<unsigned> some;
    for (std::size_t i : placesOf(place, rows.size())) some.push_back(rows[i]);
    return textsOf(hold, index, some);
}

void set(Column& column, py::handle key, py::handle value) {
    const py::ssize_t place = indexIn(key);
    const Text text(value, "a cell");
    const Hold hold(*column.log);
    const unsigned index = indexOf(column, hold);
    const vek::Row row = hold->row(rowAt(column, place, hold));
    requireDone(hold->set(row, hold.columnAt(index), text.view()));
}

std::string nameOf(Column& column) {
    const Hold hold(*column.log);
    return hold.columnAt(indexOf(column, hold)).name();
}

void rename(Column& column, py::handle name) {
    const Text text(name, "the name of a column");
    const Hold hold(*column.log);
    requireDone(hold->renameColumn(hold.columnAt(indexOf(column, hold)), text.view()));
    hold.forgetNames();
}

std::string typeOf(Column& column) {
    const Hold hold(*column.log);
    const DBFieldTypes::eType type = hold.columnAt(indexOf(column, hold)).type();
    const char* name = vekdb_fieldtype_to_string(type);
    return name != nullptr ? name : std::string(1, static_cast<char>(type));
}

unsigned placeNow(Column& column) {
    const Hold hold(*column.log);
    return indexOf(column, hold);
}

struct Cells {
    Column column;
    std::size_t next = 0;

    py::object take() {
        const Hold hold(*column.log, Hold::glance);
        const unsigned index = indexOf(column, hold);
        const std::size_t size = column.view ? column.view->rows(hold).size() : hold->size();
        if (next >= size) return {};
        return strOf(hold.cell(rowAt(column, static_cast<py::ssize_t>(next++), hold), index));
    }
};

Column columnAt(const ColumnList& list, const py::object& key) {
    const bool isPlace = PyIndex_Check(key.ptr()) != 0;
    const py::ssize_t index = isPlace ? indexIn(key) : 0;
    const Hold hold(*list.log);
    if (!isPlace) return columnOf(list.log, hold.columnNamed(key), hold);
    const auto count = static_cast<py::ssize_t>(hold->columns().size());
    const py::ssize_t place = index < 0 ? index + count : index;
    if (place < 0 || place >= count) {
        throw py::index_error("column " + std::to_string(index) + " of " + std::to_string(count));
    }
    return columnOf(list.log, static_cast<unsigned>(place), hold);
}

bool hasColumn(const ColumnList& list, py::handle name) {
    if (!PyUnicode_Check(name.ptr())) return false;
    const Hold hold(*list.log);
    return static_cast<bool>(hold->column(Text(name, "the name of a column").view()));
}

py::iterator columnsOf(const ColumnList& list) {
    const Hold hold(*list.log);
    py::list columns;
    for (unsigned i = 0; i < hold->columns().size(); ++i) {
        columns.append(columnOf(list.log, i, hold));
    }
    return py::iter(columns);
}

py::list namesOf(const ColumnList& list) {
    const Hold hold(*list.log);
    return ownNames(hold);
}

void addCell(const Hold& hold, py::handle name, py::handle value, std::vector<Cell>& cells) {
    cells.push_back({hold.columnNamed(name), Text(value, "a cell")});
}

// One str for cells in a row that are equal, as they are in most columns.
class Texts {
public:
    py::str of(std::string_view bytes) {
        if (!last_ || bytes != bytes_) {
            last_ = strOf(bytes);
            bytes_ = bytes;
        }
        return *last_;
    }

private:
    std::string_view bytes_;
    std::optional<py::str> last_;
};

}  // namespace

Column columnOf(const Shared& log, unsigned index, const Hold& hold, View view) {
    return {log, index, hold.removedColumns().size(), std::move(view)};
}

py::list textsOf(const Hold& hold, unsigned column, const std::vector<unsigned>& rows) {
    py::list list(rows.size());
    Texts texts;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        list[i] = texts.of(hold.cell(rows[i], column));
    }
    return list;
}

py::list tuplesOf(const Hold& hold, const std::vector<unsigned>& columns,
                  const std::vector<unsigned>& rows) {
    py::list list(rows.size());
    std::vector<Texts> texts(columns.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        py::tuple cells(columns.size());
        const vek::Row row = hold->row(rows[i]);
        for (std::size_t c = 0; c < columns.size(); ++c) {
            cells[c] = texts[c].of(row.at(columns[c]));
        }
        list[i] = std::move(cells);
    }
    return list;
}

std::vector<unsigned> columnsNamed(const Hold& hold, const py::args& names) {
    std::vector<unsigned> columns;
    for (py::handle name : names) columns.push_back(hold.columnNamed(name));
    if (!names.empty()) return columns;
    for (unsigned i = 0; i < hold->columns().size(); ++i) columns.push_back(i);
    return columns;
}

py::list ownNames(const Hold& hold) {
    py::list names;
    for (vek::Column column : hold->columns()) names.append(strOf(column.address()));
    return names;
}

std::vector<Cell> cellsOf(const Hold& hold, const py::dict& cells, const py::kwargs& more) {
    std::vector<Cell> found;
    for (const auto& [name, value] : cells) addCell(hold, name, value, found);
    for (const auto& [name, value] : more) addCell(hold, name, value, found);
    return found;
}

void storeCells(const Hold& hold, unsigned row, const std::vector<Cell>& cells) {
    const vek::Row to = hold->row(row);
    for (const Cell& cell : cells) {
        requireDone(hold->set(to, hold.columnAt(cell.column), cell.text.view()));
    }
}

void bindColumns(py::module_& module) {
    bindWalk<Cells>(module, "_Cells");

    py::class_<Column> column(module, "Column",
                              "A column of a log or of a view: the sequence of its cells, which "
                              "shows what is edited later.");
    neverMadeByHand(column);
    column.def("__len__", &sizeOf);
    column.def("__getitem__", &get, "place"_a);
    column.def("__setitem__", &set, "place"_a, "value"_a);
    column.def("__iter__", [](const Column& self) { return Cells{self}; });
    column.def("__repr__", [](Column& self) {
        return "<vekdb.Column " + std::string(py::repr(strOf(nameOf(self)))) + ">";
    });
    column.def("to_list", &listOf, "All cells as a list of str, made at once.");
    column.def_property(
        "name", [](Column& self) { return strOf(nameOf(self)); }, &rename,
        "The name as it is now; a new one renames the column.");
    column.def_property_readonly("type", &typeOf,
                                 "What the table takes the cells for: 'text', 'timecode', ...");
    column.def_property_readonly("index", &placeNow, "The place among the columns, from 0 on.");

    py::class_<ColumnList> columns(module, "Columns",
                                   "The columns of a log: a sequence that finds them by their "
                                   "names, too.");
    neverMadeByHand(columns);
    columns.def("__len__",
                [](const ColumnList& self) { return Hold(*self.log)->columns().size(); });
    columns.def("__getitem__", &columnAt, "name"_a);
    columns.def("__contains__", &hasColumn, "name"_a);
    columns.def("__iter__", &columnsOf);
    columns.def("__repr__", [](const ColumnList& self) {
        return "<vekdb.Columns " + std::string(py::repr(namesOf(self))) + ">";
    });
    columns.def_property_readonly("names", &namesOf,
                                  "The names by which the columns are found: 'Reel#2' for the "
                                  "second of a name, '[]' for one without.");
}

}  // namespace vekpy
