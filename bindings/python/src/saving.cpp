#include "saving.h"

#include <algorithm>
#include <exception>
#include <string>

#include "arguments.h"
#include "errors.h"
#include "texts.h"

namespace vekpy {

namespace {

using namespace py::literals;

std::vector<std::string> namesOf(py::handle names) {
    std::vector<std::string> texts;
    for (py::handle name : names) texts.push_back(Text(name, "the name of a column").string());
    return texts;
}

vek::LineEnds lineEndsOf(py::handle value) {
    const std::string name = Text(value, "line_ends").string();
    if (name == "lf") return vek::LineEnds::lf;
    if (name == "crlf") return vek::LineEnds::crlf;
    if (name == "cr") return vek::LineEnds::cr;
    throw py::value_error("lines end in 'lf', 'crlf' or 'cr', not '" + name + "'");
}

std::vector<std::pair<std::string, std::string>> renamesOf(py::handle names) {
    std::vector<std::pair<std::string, std::string>> pairs;
    for (const auto& [old, name] : dictIn(names, "names")) {
        pairs.emplace_back(Text(old, "the name of a column").string(),
                           Text(name, "the name of a column").string());
    }
    return pairs;
}

std::string textIn(py::handle value) {
    return Text(value, "an option").string();
}

void addOption(const std::string& name, py::handle value, vek::SaveOptions& options) {
    if (name == "columns") {
        options.columns = namesOf(value);
    } else if (name == "line_ends") {
        options.lineEnds = lineEndsOf(value);
    } else if (name == "rate") {
        options.rate = textIn(py::str(value));
    } else if (name == "short_reels") {
        options.shortReels = truthIn(value);
    } else if (name == "guard_formulas") {
        options.guardsFormulas = truthIn(value);
    } else if (name == "video_format") {
        options.videoFormat = textIn(value);
    } else if (name == "audio_format") {
        options.audioFormat = textIn(value);
    } else if (name == "tracks") {
        options.tracks = textIn(value);
    } else if (name == "names") {
        options.names = renamesOf(value);
    } else if (name == "max_bytes") {
        options.maxBytes = countIn(value, name);
    } else {
        throw py::type_error("saving has no option '" + name + "'");
    }
}

vek::SaveOptions optionsOf(const py::kwargs& given) {
    vek::SaveOptions options;
    for (const auto& [name, value] : given) {
        if (!value.is_none()) addOption(Text(name, "an option").string(), value, options);
    }
    return options;
}

// Does the work with the log, or with a view of the library that shows the rows, while other
// threads run. Views come and go with the turn of the log.
template <class Work>
vek::Saved written(const Shared& log, const View& view, Work work) {
    const Hold hold(*log);
    const std::vector<unsigned>* rows = view ? &view->rows(hold) : nullptr;
    vek::Result<vek::Saved> saved = unlocked([&]() -> vek::Result<vek::Saved> {
        if (rows == nullptr) return work(hold.log());
        const vek::Result<vek::View> shown = hold->chooseAmong(*rows);
        if (!shown) return shown.reason();
        return work(*shown);
    });
    return valueOf(std::move(saved));
}

// A file object of Python: what has a method `write` that takes bytes.
class FileObject : public vek::Sink {
public:
    explicit FileObject(const py::object& file) : write_(file.attr("write")) {}

    bool write(std::string_view text) noexcept override {
        const py::gil_scoped_acquire lock;
        try {
            while (!text.empty()) text.remove_prefix(writeSome(text));
            return true;
        } catch (...) {
            error_ = std::current_exception();
            return false;
        }
    }

    /// What the file raised, if anything.
    void raiseIts() const {
        if (error_) std::rethrow_exception(error_);
    }

private:
    // A file that is not buffered may take a part.
    std::size_t writeSome(std::string_view text) {
        const py::object taken = write_(py::bytes(text.data(), text.size()));
        if (!PyLong_Check(taken.ptr())) return text.size();
        const auto count = indexIn(taken);
        if (count <= 0) throw py::value_error("the file takes no more bytes");
        return std::min(static_cast<std::size_t>(count), text.size());
    }

    py::object write_;
    std::exception_ptr error_;
};

}  // namespace

py::object savedOf(const vek::Saved& saved) {
    const py::module_ results = py::module_::import("vekdb._results");
    py::list losses;
    for (const vek::Loss& loss : saved.losses) {
        losses.append(results.attr("Loss")(strOf(loss.what), loss.count, strOf(loss.firstPlace)));
    }
    py::list notes;
    for (const std::string& note : saved.notes) notes.append(strOf(note));
    return results.attr("Saved")(losses, notes);
}

vek::Format formatNamed(py::handle name) {
    const Text text(name, "a format");
    const std::optional<vek::Format> format = vek::formatOfName(text.view());
    if (format) return *format;
    vek::Reason reason;
    reason.kind = vek::Reason::wrongUsage;
    reason.found = "no format has the name \"" + text.string() + "\"";
    reason.expected = "one of vekdb.formats()";
    raise(reason);
}

py::object saveAs(const Shared& log, const View& view, py::handle path, py::handle format,
                  const py::kwargs& options) {
    const std::string file = pathOf(path);
    const vek::SaveOptions how = optionsOf(options);
    if (format.is_none()) {
        return savedOf(
            written(log, view, [&](const auto& rows) { return rows.saveAs(file, how); }));
    }
    const vek::Format as = formatNamed(format);
    return savedOf(
        written(log, view, [&](const auto& rows) { return rows.saveAs(file, as, how); }));
}

py::object writeTo(const Shared& log, const View& view, const py::object& file, py::handle format,
                   const py::kwargs& options) {
    const vek::SaveOptions how = optionsOf(options);
    const vek::Format as = formatNamed(format);
    FileObject sink(file);
    try {
        return savedOf(
            written(log, view, [&](const auto& rows) { return rows.write(sink, as, how); }));
    } catch (...) {
        sink.raiseIts();
        throw;
    }
}

py::bytes bytesIn(const Shared& log, const View& view, py::handle format,
                  const py::kwargs& options) {
    const vek::SaveOptions how = optionsOf(options);
    const vek::Format as = formatNamed(format);
    std::string text;
    written(log, view, [&](const auto& rows) { return rows.write(text, as, how); });
    return py::bytes(text);
}

py::object wouldLose(const Shared& log, const View& view, py::handle format,
                     const py::kwargs& options) {
    const vek::SaveOptions how = optionsOf(options);
    const vek::Format as = formatNamed(format);
    return savedOf(written(log, view, [&](const auto& rows) { return rows.wouldLose(as, how); }));
}

}  // namespace vekpy
