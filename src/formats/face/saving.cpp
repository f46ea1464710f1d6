#include "formats/face/guarded.h"
#include "formats/face/inside.h"
#include "formats/text/text_lines.h"

namespace vek {

namespace {

using formats::Losses;
using formats::Output;
using formats::Sheet;

formats::WriteStyle styleOf(const SaveOptions& options) {
    formats::WriteStyle style;
    if (options.lineEnds == LineEnds::crlf) style.lineEnd = formats::LineEnd::crlf;
    if (options.lineEnds == LineEnds::cr) style.lineEnd = formats::LineEnd::cr;
    style.rate = options.rate;
    style.shortReels = options.shortReels;
    style.guardsFormulas = options.guardsFormulas;
    style.ale = {options.videoFormat, options.audioFormat, options.tracks, {}};
    for (const auto& [old, name] : options.names) style.ale.map.push_back(old + "=" + name);
    return style;
}

Format writtenFormat(Format format) {
    if (canWrite(format)) return format;
    throw formats::Failure{
        formats::wrongUsage,
        "",
        {0, "", std::string(nameOf(format)) + " is read, not written", "another format", ""}};
}

void write(const Written& log, Format format, Output& out, Losses& losses) {
    formats::writeSheet(log.sheet, writtenFormat(format), styleOf(log.options), out, losses);
}

// What is in memory has no place of its own to be told.
Output memory() {
    return Output("text");
}

}  // namespace

Saved savedWith(const Losses& losses) {
    Saved saved;
    for (const Losses::Kind& kind : losses.kinds()) {
        saved.losses.push_back({kind.what, kind.count, kind.firstPlace});
    }
    saved.notes = losses.messages();
    return saved;
}

std::vector<unsigned> writtenColumns(const formats::Log& log, const SaveOptions& options) {
    if (options.columns.empty()) return formats::allColumns(log);
    std::vector<unsigned> columns;
    for (const std::string& name : options.columns) columns.push_back(log.requireColumn(name));
    return columns;
}

Result<Saved> saveSheet(const Written& log, std::string_view path, std::optional<Format> format) {
    const std::string file = path == "-" || path.empty() ? "./-" : std::string(path);
    Output out(file);
    Losses losses;
    write(log, format ? *format : formats::targetOfPath(file), out, losses);
    out.close();
    return savedWith(losses);
}

Result<Saved> writeSheet(const Written& log, std::string& text, Format format) {
    Output out = memory();
    Losses losses;
    write(log, format, out, losses);
    text = out.take();
    return savedWith(losses);
}

Result<Saved> writeSheet(const Written& log, Sink& sink, Format format) {
    std::string text;
    Result<Saved> saved = writeSheet(log, text, format);
    if (sink.write(text)) return saved;
    return Reason{Reason::unwritable, {}, 0, {}, "the sink takes no more"};
}

Result<Saved> lossesOf(const Written& log, Format format) {
    std::string text;
    return writeSheet(log, text, format);
}

namespace {

Written all(const LogInside& inside, const SaveOptions& options) {
    const formats::Log& log = inside.log;
    return {{log, formats::viewOf(log, inside.rows()), writtenColumns(log, options)}, options};
}

Written shown(const LogInside& inside, const VDBView& view, const SaveOptions& options) {
    return {{inside.log, view, writtenColumns(inside.log, options)}, options};
}

}  // namespace

Result<Saved> View::saveAs(std::string_view path, const SaveOptions& options) const {
    return guarded([&] { return saveSheet(shown(*log_, view_, options), path, {}); });
}

Result<Saved> View::saveAs(std::string_view path, Format format, const SaveOptions& options) const {
    return guarded([&] { return saveSheet(shown(*log_, view_, options), path, format); });
}

Result<Saved> View::write(std::string& text, Format format, const SaveOptions& options) const {
    return guarded([&] { return writeSheet(shown(*log_, view_, options), text, format); });
}

Result<Saved> View::write(Sink& sink, Format format, const SaveOptions& options) const {
    return guarded([&] { return writeSheet(shown(*log_, view_, options), sink, format); });
}

Result<Saved> View::wouldLose(Format format, const SaveOptions& options) const {
    return guarded([&] { return lossesOf(shown(*log_, view_, options), format); });
}

Result<Saved> Log::saveAs(std::string_view path, const SaveOptions& options) const {
    return guarded([&] { return saveSheet(all(*log_, options), path, {}); });
}

Result<Saved> Log::saveAs(std::string_view path, Format format, const SaveOptions& options) const {
    return guarded([&] { return saveSheet(all(*log_, options), path, format); });
}

Result<Saved> Log::write(std::string& text, Format format, const SaveOptions& options) const {
    return guarded([&] { return writeSheet(all(*log_, options), text, format); });
}

Result<Saved> Log::write(Sink& sink, Format format, const SaveOptions& options) const {
    return guarded([&] { return writeSheet(all(*log_, options), sink, format); });
}

Result<Saved> Log::wouldLose(Format format, const SaveOptions& options) const {
    return guarded([&] { return lossesOf(all(*log_, options), format); });
}

Result<Saved> Log::save(bool keepsOld) {
    return guarded([&]() -> Result<Saved> {
        formats::Log& log = log_->log;
        if (!log_->isToChange) {
            return Reason{Reason::wrongUsage,
                          log.name,
                          0,
                          {},
                          "is not open to be changed",
                          "a log of openToChange that was not saved yet",
                          "save it as another file, or open it anew"};
        }
        const Losses losses = formats::saveInPlace(log, log_->rows(), keepsOld);
        // What is left of the file as it was read is not in its place any more.
        log_->isToChange = false;
        log.held = nullptr;
        return savedWith(losses);
    });
}

}  // namespace vek
