#include "containers.h"

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <vekdb/container/container_file.h>
#include <vekdb/host/text_util.h>
#include "arguments.h"
#include "errors.h"
#include "texts.h"

namespace pybind11::detail {

template <>
class type_caster<std::shared_ptr<QuorContainerFile::Reader>>
    : public vekpy::MadeHolderCaster<QuorContainerFile::Reader> {};

}  // namespace pybind11::detail

namespace vekpy {

namespace {

using namespace py::literals;

using Reader = std::shared_ptr<QuorContainerFile::Reader>;

// An item, which keeps its container.
struct Item {
    Reader reader;
    unsigned place = 0;
};

std::string_view viewOf(const LightweightString<char>& text) {
    return text.view();
}

LightweightString<char> stringOf(const Text& text) {
    return LightweightString<char>(text.view().data(), text.view().size());
}

std::string textOf(const Cookie& cookie) {
    return std::string(viewOf(cookie.asString(false)));
}

Cookie cookieOf(py::handle given) {
    const Text text(given, "an identity");
    const Cookie cookie = Cookie::fromText(text.view());
    if (cookie.type != cookieTypeInvalid) return cookie;
    throw py::value_error("'" + text.string() +
                          "' is no identity: 38 hexadecimal digits that name an object");
}

[[noreturn]] void refuse(const vekdb& table, const std::string& path) {
    vek::Reason reason;
    reason.kind = vek::Reason::unreadable;
    reason.file = path;
    const int error = table.get_read_error();
    reason.found = error != 0 ? std::strerror(error) : "is no container";
    if (error == 0) reason.expected = "a table with parameters and a heading";
    raiseReading(reason, path);
}

Reader read(const py::object& file, bool headerOnly) {
    const std::string path = pathOf(file);
    Reader reader = [&] {
        const py::gil_scoped_release free;
        return std::make_shared<QuorContainerFile::Reader>(fromUTF8(path.c_str()), headerOnly);
    }();
    if (!reader->valid()) refuse(*reader, path);
    return reader;
}

py::dict attributesOf(const Reader& reader) {
    py::dict attributes;
    for (unsigned i = 0; i < reader->get_num_params(); ++i) {
        const char* name = reader->get_param_name(i);
        if (*name == '\0' || std::strcmp(name, "VEKDB") == 0) continue;
        attributes[strOf(name)] = strOf(reader->get_param_text(i));
    }
    return attributes;
}

py::list columnsOf(const Reader& reader) {
    py::list names;
    for (unsigned i = 0; i < reader->get_num_fields(); ++i) {
        names.append(strOf(reader->get_fieldname(i)));
    }
    return names;
}

Item itemAt(const Reader& reader, py::handle key) {
    const py::ssize_t index = indexIn(key);
    const auto count = static_cast<py::ssize_t>(reader->getNumItems());
    const py::ssize_t place = index < 0 ? index + count : index;
    if (place < 0 || place >= count) {
        throw py::index_error("item " + std::to_string(index) + " of " + std::to_string(count));
    }
    return {reader, static_cast<unsigned>(place)};
}

bool contains(const Reader& reader, py::handle identity) {
    if (!PyUnicode_Check(identity.ptr())) return false;
    const Cookie cookie = Cookie::fromText(Text(identity, "an identity").view());
    return cookie.type != cookieTypeInvalid && reader->contains(cookie);
}

py::object cell(const Item& item, py::handle name) {
    const std::string column = Text(name, "an attribute").string();
    const int index = item.reader->getItemAttribIndex(column.c_str());
    if (index < 0) return py::none();
    const LightweightString<char> text =
        item.reader->getItem(item.place).getAttrib(static_cast<unsigned>(index));
    return strOf(viewOf(text));
}

py::str attribute(const Item& item, py::handle name) {
    const py::object text = cell(item, name);
    if (text.is_none()) throw py::key_error(Text(name, "an attribute").string());
    return text;
}

void addItem(QuorContainerFile::Writer& writer, py::handle given) {
    if (!py::isinstance<py::tuple>(given) || py::len(given) != 2) {
        throw py::type_error("an item is a pair of an identity and its attributes");
    }
    const auto item = py::reinterpret_borrow<py::tuple>(given);
    dbrecord* record = writer.addItem(cookieOf(item[0]));
    if (record == nullptr) throw py::value_error("the container takes no more items");
    for (const auto& [name, value] : dictIn(item[1], "the attributes of an item")) {
        const Text column(name, "an attribute");
        const unsigned index = writer.get_fieldnum(stringOf(column));
        if (index == 0xFFFFFFFF) throw py::key_error(column.string());
        record->setField(static_cast<unsigned short>(index), stringOf(Text(value, "a cell")));
    }
}

// An empty container has as many records saved as one that could not be written.
bool isSaved(QuorContainerFile::Writer& writer, const std::string& path) {
    if (writer.save_text() != 0) return true;
    return writer.get_num_records() == 0 &&
           QuorContainerFile::Reader(fromUTF8(path.c_str()), true).valid();
}

void write(const py::object& file, const py::list& columns, const py::list& items,
           const py::dict& attributes, py::handle name, bool isPermanent) {
    const std::string path = pathOf(file);
    std::vector<DBFieldDesc> fields;
    for (py::handle column : columns) {
        fields.push_back({stringOf(Text(column, "an attribute")), DBFieldTypes::text});
    }
    fields.push_back({});
    QuorContainerFile::Writer writer(fields.data());
    writer.setName(stringOf(Text(name, "a name")));
    writer.setPermanent(isPermanent);
    for (const auto& [key, value] : attributes) {
        writer.setAttrib(stringOf(Text(key, "an attribute")), stringOf(Text(value, "a text")));
    }
    for (py::handle item : items) addItem(writer, item);
    writer.set_filename(fromUTF8(path.c_str()));
    if (isSaved(writer, path)) return;
    vek::Reason reason;
    reason.kind = vek::Reason::unwritable;
    reason.file = path;
    reason.found = "the container cannot be written";
    reason.advice = "the old file is as it was";
    raise(reason);
}

}  // namespace

void bindContainers(py::module_& module) {
    py::class_<QuorContainerFile::Reader, Reader> reader(
        module, "Container",
        "A container file: a named list of objects, each with attributes.\n\nIt is read as a "
        "whole, and its items keep it alive.");
    reader.def(py::init(&read), "path"_a, py::kw_only(), "header_only"_a = false);
    neverPickled(reader);
    reader.def("__len__", [](const Reader& self) { return self->getNumItems(); });
    reader.def("__getitem__", &itemAt, "place"_a);
    reader.def("__contains__", &contains, "identity"_a, "Whether an item has the identity.");
    reader.def_property_readonly(
        "name", [](const Reader& self) { return strOf(viewOf(self->getName())); },
        "The name of the container.");
    reader.def_property_readonly(
        "permanent", [](const Reader& self) { return self->isPermanent(); },
        "Whether the container is a permanent one.");
    reader.def_property_readonly(
        "identity", [](const Reader& self) { return textOf(self->getCookie()); },
        "The container's own identity, which its file's name says.");
    reader.def_property_readonly("attributes", &attributesOf, "Its attributes, as a new dict.");
    reader.def_property_readonly("columns", &columnsOf, "The names of the items' attributes.");
    reader.def_property_readonly(
        "is_whole",
        [](const Reader& self) {
            dberror error;
            return !self->read_error_info(error);
        },
        "False where a damaged line ended the reading: items behind it are missing.");

    py::class_<Item> item(module, "Item", "An item of a container: its identity and attributes.");
    neverMadeByHand(item);
    item.def_property_readonly(
        "identity",
        [](const Item& self) { return textOf(self.reader->getItem(self.place).getCookie()); },
        "What names the object: 38 hexadecimal digits.");
    item.def("__getitem__", &attribute, "name"_a, "An attribute; a KeyError for no such column.");
    item.def("__contains__",
             [](const Item& self, py::handle name) { return !cell(self, name).is_none(); });
    item.def(
        "get",
        [](const Item& self, py::handle name, py::object otherwise) {
            const py::object text = cell(self, name);
            return text.is_none() ? otherwise : text;
        },
        "name"_a, "default"_a = py::none(), "An attribute, or the default.");
    item.def(
        "keys", [](const Item& self) { return columnsOf(self.reader); },
        "The names of the attributes.");
    item.def("__iter__", [](const Item& self) { return py::iter(columnsOf(self.reader)); });
    item.def("__len__", [](const Item& self) { return self.reader->get_num_fields(); });

    module.def("_write_container", &write);
}

}  // namespace vekpy
