#include "opening.h"

#include <vekdb/table.h>
#include "arguments.h"
#include "columns.h"
#include "errors.h"
#include "log_binding.h"
#include "saving.h"
#include "texts.h"

namespace vekpy {

namespace {

char delimiterOf(py::handle value) {
    const Text text(value, "a delimiter");
    if (text.view().size() == 1) return text.view().front();
    throw py::value_error("a delimiter is one character of ASCII");
}

void addOption(const std::string& name, py::handle value, vek::OpenOptions& options) {
    if (name == "format") {
        options.format = formatNamed(value);
    } else if (name == "encoding") {
        options.encoding = Text(value, "an encoding").string();
    } else if (name == "delimiter") {
        options.delimiter = delimiterOf(value);
    } else if (name == "skip_lines") {
        options.skippedLines = countIn(value, name);
    } else if (name == "has_heading") {
        options.hasNoHeading = !truthIn(value);
    } else if (name == "sheet") {
        options.sheet = Text(py::str(value), "a sheet").string();
    } else if (name == "max_bytes") {
        options.maxBytes = countIn(value, name);
    } else if (name == "max_cells") {
        options.maxCells = countIn(value, name);
    } else {
        throw py::type_error("opening has no option '" + name + "'");
    }
}

vek::OpenOptions optionsOf(const py::kwargs& given) {
    vek::OpenOptions options;
    for (const auto& [name, value] : given) {
        if (!value.is_none()) addOption(Text(name, "an option").string(), value, options);
    }
    return options;
}

Shared sharedOf(vek::Log log) {
    return std::make_shared<SharedLog>(std::move(log));
}

std::string nameOf(const py::object& file) {
    const py::object name = py::getattr(file, "name", py::str(""));
    return py::isinstance<py::str>(name) ? Text(name, "a name").string() : std::string();
}

Shared openObject(const py::object& file, const py::kwargs& options) {
    const py::object content = file.attr("read")();
    return loads(content, strOf(nameOf(file)), options);
}

DBFieldDesc columnOf(py::handle given) {
    DBFieldDesc column;
    column.type = DBFieldTypes::text;
    py::object name = py::reinterpret_borrow<py::object>(given);
    if (py::isinstance<py::tuple>(given)) {
        const auto pair = py::reinterpret_borrow<py::tuple>(given);
        if (pair.size() != 2) throw py::value_error("a column is a name, or a name and a type");
        name = pair[0];
        const std::string type = Text(pair[1], "the type of a column").string();
        column.type = vekdb_string_to_fieldtype(type.c_str());
        if (column.type == DBFieldTypes::none) {
            throw py::value_error("no column has the type '" + type + "'");
        }
    }
    const Text text(name, "the name of a column");
    column.name = LightweightString<char>(text.view().data(), text.view().size());
    return column;
}

}  // namespace

Shared open(const py::object& file, bool isToChange, const py::kwargs& options) {
    const bool isObject = py::hasattr(file, "read");
    if (isObject && isToChange) {
        throw py::type_error("only a file that is named by its path can be opened to be changed");
    }
    if (isObject) return openObject(file, options);
    const std::string path = pathOf(file);
    const vek::OpenOptions how = optionsOf(options);
    vek::Result<vek::Log> log =
        unlocked([&] { return isToChange ? vek::openToChange(path, how) : vek::open(path, how); });
    if (!log) raiseReading(log.reason(), path);
    return sharedOf(*std::move(log));
}

Shared loads(py::handle text, py::handle name, const py::kwargs& options) {
    const Text content(text, "a log");
    const std::string named = Text(name, "a name").string();
    const vek::OpenOptions how = optionsOf(options);
    return sharedOf(valueOf(unlocked([&] { return vek::openText(content.view(), named, how); })));
}

Shared create(const py::object& columns, const py::object& rows, py::handle name) {
    std::vector<DBFieldDesc> fields;
    for (py::handle column : columns) fields.push_back(columnOf(column));
    auto table = std::make_unique<vekdb>(fields);
    Shared log = sharedOf(valueOf(vek::adopt(std::move(table), Text(name, "a name").view())));
    for (py::handle row : rows) appendRow(log, dictIn(row, "a row"));
    return log;
}

}  // namespace vekpy
