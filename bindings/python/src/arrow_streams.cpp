#include "arrow_streams.h"

#include <limits>
#include <string>

#include <vekdb/table.h>
#include <vekdb/views/view_rep.h>
#include "arguments.h"
#include "errors.h"
#include "texts.h"

namespace vekpy {

namespace {

using namespace py::literals;

constexpr const char* capsuleName = "arrow_array_stream";

std::uint64_t countOf(const std::string& name, py::handle value, std::uint64_t most) {
    const std::uint64_t count = countIn(value, name);
    if (count >= 1 && count <= most) return count;
    throw py::value_error(name + " is from 1 to " + std::to_string(most));
}

ArrowBytes bytesNamed(const std::string& name) {
    if (name == "refuse") return ArrowBytes::refuse;
    if (name == "replace") return ArrowBytes::replace;
    if (name == "binary") return ArrowBytes::binary;
    throw py::value_error("bytes that are no UTF-8 have 'refuse', 'replace' or 'binary', not '" +
                          name + "'");
}

void addOption(const std::string& name, py::handle value, ArrowExport& how) {
    if (name == "tags") {
        how.tags = truthIn(value) ? ArrowTags::flags : ArrowTags::none;
    } else if (name == "bytes") {
        how.bytes = bytesNamed(Text(value, "bytes").string());
    } else if (name == "rows_per_batch") {
        how.rowsPerBatch = static_cast<std::uint32_t>(
            countOf(name, value, std::numeric_limits<std::int32_t>::max()));
    } else if (name == "bytes_per_batch") {
        how.bytesPerBatch = countOf(name, value, std::numeric_limits<std::int64_t>::max());
    } else {
        throw py::type_error("Arrow has no option '" + name + "'");
    }
}

// A view of the library has the tags beside its rows, where a log has them in a column.
vek::Result<ArrowArrayStream> exported(const Hold& hold, const std::vector<unsigned>* rows,
                                       const ArrowExport& how) {
    const vek::Result<vek::View> view = rows != nullptr ? hold->chooseAmong(*rows) : hold->choose();
    if (!view) return view.reason();
    return exportArrow(*view->view(), how);
}

ArrowArrayStream exported(const ArrowRows& from) {
    const Hold hold(*from.log);
    const std::vector<unsigned>* rows = from.view ? &from.view->rows(hold) : nullptr;
    return valueOf(unlocked([&] { return exported(hold, rows, from.how); }));
}

// Owns what it points to; a stream that was moved out has no release.
void endStream(ArrowArrayStream* stream) {
    if (stream->release != nullptr) stream->release(stream);
    delete stream;
}

void endCapsule(PyObject* capsule) {
    void* const stream = PyCapsule_GetPointer(capsule, capsuleName);
    if (stream == nullptr) return PyErr_WriteUnraisable(capsule);
    endStream(static_cast<ArrowArrayStream*>(stream));
}

py::object capsuleOf(const py::object& source) {
    if (PyCapsule_CheckExact(source.ptr())) return source;
    if (py::hasattr(source, "__arrow_c_stream__")) return source.attr("__arrow_c_stream__")();
    throw py::type_error("a source of Arrow has a method __arrow_c_stream__, and " +
                         typeName(source) + " has none");
}

// Moved out while the interpreter's lock is held, so that two threads do not take one stream.
ArrowArrayStream takenFrom(const py::object& capsule) {
    if (PyCapsule_IsValid(capsule.ptr(), capsuleName) == 0) {
        throw py::type_error("a stream of Arrow comes in a capsule named arrow_array_stream");
    }
    void* const pointer = PyCapsule_GetPointer(capsule.ptr(), capsuleName);
    ArrowArrayStream& inside = *static_cast<ArrowArrayStream*>(pointer);
    ArrowArrayStream taken = inside;
    inside.release = nullptr;
    return taken;
}

std::unique_ptr<vekdb> tableOf(ArrowArrayStream stream, const std::string& name) {
    LightweightString<char> why;
    auto table = unlocked([&] { return importArrow(stream, &why); });
    if (table != nullptr) return table;
    vek::Reason reason;
    reason.kind = vek::Reason::unreadable;
    reason.file = name;
    reason.found = why.c_str();
    raise(reason);
}

// Tags that came without a column of their own stand beside the rows of the table.
void takeTags(vek::Log& log) {
    if (log.column("Tag")) return;
    for (unsigned i = 0; i < log.size(); ++i) {
        const int tag = log.table().get_tag(i);
        if (tag == 0) continue;
        requireDone(log.setTagged(log.at(i), true));
        if (tag != 1) requireDone(log.set(log.at(i), "Tag", std::to_string(tag)));
    }
}

}  // namespace

py::capsule streamOf(const ArrowRows& rows) {
    std::unique_ptr<ArrowArrayStream, decltype(&endStream)> stream(new ArrowArrayStream{},
                                                                   &endStream);
    *stream = exported(rows);
    py::capsule capsule(stream.get(), capsuleName, &endCapsule);
    stream.release();
    return capsule;
}

ArrowRows withOptions(ArrowRows rows, const py::kwargs& options) {
    for (const auto& [name, value] : options) {
        if (!value.is_none()) addOption(Text(name, "an option").string(), value, rows.how);
    }
    return rows;
}

Shared fromArrow(const py::object& source, py::handle name) {
    const std::string named = Text(name, "a name").string();
    const py::object capsule = capsuleOf(source);
    vek::Log log = valueOf(vek::adopt(tableOf(takenFrom(capsule), named), named));
    takeTags(log);
    return std::make_shared<SharedLog>(std::move(log));
}

void bindArrow(py::module_& module) {
    py::class_<ArrowRows> rows(module, "ArrowRows",
                               "Rows of a log or view for libraries that read Arrow; `to_arrow` "
                               "makes it. Each stream is a picture of\nthe rows as they are when "
                               "it is asked for.");
    neverMadeByHand(rows);
    rows.def(
        "__arrow_c_stream__",
        [](const ArrowRows& self, const py::object&) { return streamOf(self); },
        "requested_schema"_a = py::none(), streamHelp);
    module.def("from_arrow", &fromArrow, "source"_a, "name"_a = "");
}

}  // namespace vekpy
