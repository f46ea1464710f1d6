#include <vekdb/formats/timecode.h>
#include "formats/face/guarded.h"
#include "formats/face/inside.h"
#include "formats/formats.h"
#include "formats/saving/file_sink.h"
#include "formats/saving/prepared_file.h"
#include "formats/text/text_lines.h"

namespace vek {

namespace {

using formats::Losses;
using formats::Output;
using formats::Sheet;

// Formats that tell times by frames.
bool isOfFrames(Format format) {
    return format == Format::edl || format == Format::ale || format == Format::otio;
}

void requireRate(const std::string& rate) {
    if (rate.empty() || parseFrameRate(rate)) return;
    throw formats::Failure{
        formats::wrongUsage,
        "",
        {0, "", "rate " + formats::inQuotes(rate), "one such as 24 or 29.97df", ""}};
}

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

Saved write(const Written& log, Format format, Output& out) {
    const formats::Log& from = log.sheet.log;
    if (isOfFrames(format)) requireRate(log.options.rate);
    out.limit({log.options.maxBytes, from.bytesRead}, *from.opening.terms);
    Losses losses;
    formats::writeSheet(log.sheet, writtenFormat(format), styleOf(log.options), out, losses);
    return savedWith(losses, out.close());
}

// Hands what is written on to an application.
class SinkOfOthers : public formats::OutputSink {
public:
    explicit SinkOfOthers(Sink& sink) : sink_(sink) {}
    void take(std::string_view piece) override {
        if (piece.empty() || sink_.write(piece)) return;
        throw formats::Failure{formats::unwritable, "", {0, "", "the sink takes no more", "", ""}};
    }

private:
    Sink& sink_;
};

// What is in memory has no place of its own to be told.
Output named(std::unique_ptr<formats::OutputSink> sink) {
    return Output("text", std::move(sink));
}

}  // namespace

Saved savedWith(const Losses& losses, std::vector<std::string> notes) {
    Saved saved;
    for (const Losses::Kind& kind : losses.kinds()) {
        saved.losses.push_back({kind.what, kind.count, kind.firstPlace});
    }
    saved.notes = std::move(notes);
    saved.notes.insert(saved.notes.end(), losses.messages().begin(), losses.messages().end());
    return saved;
}

std::vector<unsigned> writtenColumns(const formats::Log& log, const SaveOptions& options) {
    if (options.columns.empty()) return formats::allColumns(log);
    std::vector<unsigned> columns;
    for (const std::string& name : options.columns) columns.push_back(log.requireColumn(name));
    return columns;
}

Result<Saved> saveSheet(const Written& log, std::string_view path, std::optional<Format> format) {
    const std::string file = fileOf(path, formats::unwritable);
    const formats::Terms& terms = *log.sheet.log.opening.terms;
    Output out(file, std::make_unique<formats::FileSink>(file));
    return write(log, format ? *format : formats::targetOfPath(file, terms), out);
}

Result<Saved> writeSheet(const Written& log, std::string& text, Format format) {
    Output out = named(nullptr);
    Saved saved = write(log, format, out);
    text = out.take();
    return saved;
}

Result<Saved> writeSheet(const Written& log, Sink& sink, Format format) {
    Output out = named(std::make_unique<SinkOfOthers>(sink));
    return write(log, format, out);
}

Result<Saved> lossesOf(const Written& log, Format format) {
    Output out = named(std::make_unique<formats::NoSink>());
    return write(log, format, out);
}

namespace {

Written all(const LogInside& inside, const SaveOptions& options) {
    const formats::Log& log = inside.log;
    return {{log, formats::viewOf(log, inside.rows()), writtenColumns(log, options)}, options};
}

Saved saveInPlace(const LogInside& inside, bool keepsOld) {
    formats::PreparedFile file(inside.log, inside.rows(), keepsOld);
    Saved saved = savedWith(file.losses(), file.notes());
    file.commit();
    return saved;
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

bool Log::canBeSaved() const noexcept {
    return formats::isChangedInPlace(log_->log.format);
}

void Log::letGo() noexcept {
    log_->isToChange = false;
    log_->log.held = nullptr;
}

Result<Saved> Log::save(bool keepsOld) {
    return guarded([&]() -> Result<Saved> {
        const formats::Log& log = log_->log;
        if (!log_->isToChange) {
            return Reason{Reason::wrongUsage,
                          log.name,
                          0,
                          {},
                          "is not open to be changed",
                          "a log that was opened to be changed and not saved yet",
                          "save it as another file, or open it anew"};
        }
        Saved saved = saveInPlace(*log_, keepsOld);
        // What is left of the file as it was read is not in its place any more.
        letGo();
        return saved;
    });
}

}  // namespace vek
