#include <algorithm>

#include "arguments.h"
#include "arrow_streams.h"
#include "choosing.h"
#include "columns.h"
#include "errors.h"
#include "row_maker.h"
#include "saving.h"

namespace vekpy {

namespace {

using namespace py::literals;

std::size_t sizeOf(const View& view) {
    const Hold hold(*view->log());
    return view->rows(hold).size();
}

py::object get(const View& view, const py::object& key) {
    if (py::isinstance<py::slice>(key)) return py::cast(part(view->log(), view, key));
    const bool isPlace = PyIndex_Check(key.ptr()) != 0;
    const py::ssize_t index = isPlace ? indexIn(key) : 0;
    const Hold hold(*view->log());
    if (!isPlace) {
        return py::cast(columnOf(view->log(), hold.columnNamed(key), hold, view));
    }
    const std::vector<unsigned>& rows = view->rows(hold);
    return py::cast(Row{view->log(), rows[placeOf(index, rows.size())]});
}

// Walks the rows as they are at each step.
struct Walk {
    View view;
    std::size_t next = 0;
    RowMaker maker = {};

    py::object take() {
        const Hold hold(*view->log(), Hold::glance);
        const std::vector<unsigned>& rows = view->rows(hold);
        if (next >= rows.size()) return {};
        return maker.row(view->log(), rows[next++]);
    }
};

bool has(const View& view, const py::object& row) {
    if (!py::isinstance<Row>(row)) return false;
    const Row& wanted = py::cast<const Row&>(row);
    const Hold hold(*view->log());
    const std::vector<unsigned>& rows = view->rows(hold);
    return wanted.log == view->log() &&
           std::find(rows.begin(), rows.end(), wanted.index) != rows.end();
}

py::list column(const View& view, py::handle name) {
    const Hold hold(*view->log());
    return textsOf(hold, hold.columnNamed(name), view->rows(hold));
}

py::list tuples(const View& view, const py::args& names) {
    const Hold hold(*view->log());
    return tuplesOf(hold, columnsNamed(hold, names), view->rows(hold));
}

// Takes rows out of the view, not out of the log.
void drop(const View& view, const py::object& key) {
    const bool isSlice = py::isinstance<py::slice>(key);
    const py::ssize_t index = isSlice ? 0 : indexIn(key);
    const Hold hold(*view->log());
    std::vector<unsigned> rows = view->rows(hold);
    std::vector<char> goes(rows.size());
    if (isSlice) {
        for (std::size_t place : placesOf(key, rows.size())) goes[place] = 1;
    } else {
        goes[placeOf(index, rows.size())] = 1;
    }
    std::vector<unsigned> kept;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (goes[i] == 0) kept.push_back(rows[i]);
    }
    view->put(std::move(kept), view->matched());
}

void setAll(const View& view, py::handle name, py::handle value) {
    const Text text(value, "a cell");
    const Hold hold(*view->log());
    const vek::Column to = hold.columnAt(hold.columnNamed(name));
    for (unsigned row : view->rows(hold)) {
        requireDone(hold->set(hold->row(row), to, text.view()));
    }
}

void tagAll(const View& view, bool isTagged) {
    const Hold hold(*view->log());
    for (unsigned row : view->rows(hold)) requireDone(hold->setTagged(hold->row(row), isTagged));
    hold.forgetNames();
}

std::size_t replace(const View& view, py::handle text, py::handle by, py::handle column) {
    const Text old(text, "the text");
    const Text other(by, "the other text");
    const Text name(column, "the name of a column");
    const Hold hold(*view->log());
    if (!name.view().empty()) hold.columnNamed(column);
    const vek::View rows = viewOf(hold, view->rows(hold));
    return valueOf(hold->replaceText(rows, name.view(), old.view(), other.view()));
}

py::str textIn(const View& view, py::handle format, const py::kwargs& options) {
    return strOf(std::string_view(bytesIn(view->log(), view, format, options)));
}

}  // namespace

void bindView(py::module_& module) {
    bindWalk<Walk>(module, "_Walk");

    py::class_<RowList, View> view(
        module, "View",
        "Rows of a log in an order of their own; `where`, `sorted` and slices make them, of logs "
        "and of other views.\n\nA view is live: it shows what is edited later, and rows that are "
        "removed from the log,\nor from the view that it was made of, go out of it. Rows that are "
        "added come in with\n`refresh`. It keeps its log alive.");
    neverMadeByHand(view);
    view.def("__len__", &sizeOf);
    view.def("__getitem__", &get, "key"_a,
             "A row by its place, a view by a slice, or a column by its name.");
    view.def("__delitem__", &drop, "key"_a,
             "Takes rows out of the view and of those made of it; the log keeps them.");
    bindSubscript<View>(view, &get);
    view.def("__iter__", [](const View& self) { return Walk{self}; });
    view.def("__contains__", &has, "row"_a);
    view.def("__repr__", [](const View& self) {
        return "<vekdb.View of " + std::to_string(sizeOf(self)) + " rows>";
    });
    view.def(
        "where",
        [](const View& self, const py::args& conditions, const py::kwargs& options) {
            return choose(self->log(), self, choiceOf(conditions, options));
        },
        "The rows of this view for which the conditions hold, in its order where none is asked "
        "for. See Log.where.");
    view.def(
        "sorted",
        [](const View& self, const py::args& columns, bool reverse) {
            View sorted = choose(self->log(), self, {});
            order(sorted, columns, reverse);
            return sorted;
        },
        py::kw_only(), "reverse"_a = false,
        "A view of the same rows by these columns; rows that compare equal keep their order.");
    view.def("sort", &order, py::kw_only(), "reverse"_a = false,
             "Sorts the rows of this view by these columns, the first one first: numbers by value, "
             "case ignored, empty cells last. Rows that compare equal keep their order; reverse "
             "gives the exact reverse of all that.");
    view.def("refresh", &refresh,
             "Asks the conditions of the view again, of the rows that there are now.");
    view.def("column", &column, "name"_a, "The cells of a column as a list of str.");
    view.def("tuples", &tuples,
             "A list with a tuple of cells for each row, of these columns or all.");
    view.def("set", &setAll, "column"_a, "value"_a, "Puts a text in a column of every row.");
    view.def("replace", &replace, "text"_a, "by"_a, "column"_a = "",
             "Replaces a text in the cells of a column, or of all; how many cells it changed.");
    view.def("tag", &tagAll, "tagged"_a = true, "Tags every row, or untags it.");
    view.def_property_readonly(
        "matched", [](const View& self) { return self->matched(); },
        "How many rows the conditions held for, before limit and offset.");
    view.def(
        "save_as",
        [](const View& self, py::handle path, py::handle format, const py::kwargs& options) {
            return saveAs(self->log(), self, path, format, options);
        },
        "path"_a, "format"_a = py::none(), "Writes the rows into a file. See Log.save_as.");
    view.def(
        "write",
        [](const View& self, const py::object& file, py::handle format, const py::kwargs& options) {
            return writeTo(self->log(), self, file, format, options);
        },
        "file"_a, "format"_a, "Writes the rows into a file object that takes bytes.");
    view.def(
        "to_bytes",
        [](const View& self, py::handle format, const py::kwargs& options) {
            return bytesIn(self->log(), self, format, options);
        },
        "format"_a, "The rows in a format, as bytes.");
    view.def("to_text", &textIn, "format"_a, "The rows in a text format, as a str.");
    view.def(
        "would_lose",
        [](const View& self, py::handle format, const py::kwargs& options) {
            return wouldLose(self->log(), self, format, options);
        },
        "format"_a, "What a format would not hold of the rows; nothing is written.");
    bindHandingOver<View>(view);
    py::module_::import("collections.abc").attr("Collection").attr("register")(view);
}

}  // namespace vekpy
