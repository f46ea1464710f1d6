#include "tools/vek/cli/printout.h"

#include <algorithm>
#include <cerrno>
#include <optional>
#include <utility>

#include "formats/packed/packed.h"
#include "formats/saving/file_sink.h"
#include "formats/text/width.h"
#include "formats/writing/writers.h"
#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/say.h"
#include "tools/vek/cli/terminal.h"

namespace vek {

namespace {

constexpr const char* standardOutput = "standard output";

OutputLimit theLimit;

// Line ends and tabs are the text's own form; a carriage return belongs to a line end or moves
// the cursor.
std::string forTerminal(std::string_view text) {
    std::string out;
    while (!text.empty()) {
        std::size_t end = std::min(text.find_first_of("\n\t"), text.size());
        std::size_t kept = std::min(end + 1, text.size());
        bool endsInBoth =
            end > 0 && end < text.size() && text[end] == '\n' && text[end - 1] == '\r';
        if (endsInBoth) --end;
        out += escaped(text.substr(0, end));
        out += text.substr(end, kept - end);
        text.remove_prefix(kept);
    }
    return out;
}

bool isStandard(const std::string& path) {
    return path.empty() || path == "-";
}

}  // namespace

// A file during whose replacement the program is not ended.
class Printout::UndisturbedFile : public OutputSink {
public:
    // What is held, or holds it.
    template <class Holding>
    UndisturbedFile(const std::string& path, Holding held, bool keepsOld, bool isPrepared = false)
        : path_(path), file_(path, std::move(held), keepsOld), isPrepared_(isPrepared) {}

    void take(std::string_view piece) override {
        begin();
        if (undisturbed_ && undisturbed_->isAwaited()) leave();
        file_.take(piece);
    }

    std::vector<std::string> end() override {
        begin();
        std::vector<std::string> notes = file_.prepare();
        if (!isPrepared_) commit();
        return notes;
    }

    void commit() {
        file_.commit();
        undisturbed_.reset();
    }

    std::size_t pieceSize() const override { return file_.pieceSize(); }

private:
    // A FIFO may have no reader, and whoever waits for one may want to leave.
    void begin() {
        if (!undisturbed_ && !file_.isDirect()) undisturbed_.emplace();
    }

    // The signal ends the program here, with nothing left beside the file, or where the last of
    // several is given up.
    [[noreturn]] void leave() {
        file_.giveUp();
        undisturbed_.reset();
        refuse(path_, EINTR);
    }

    std::string path_;
    std::optional<Undisturbed> undisturbed_;
    FileSink file_;
    bool isPrepared_;
};

class Printout::Screen : public OutputSink {
public:
    void take(std::string_view piece) override {
        if (isTerminal())
            send(forTerminal(piece));
        else
            send(piece);
    }

    void send(std::string_view text) {
        const int error = writeTo(Stream::output, text);
        if (error == EPIPE) throw PipeClosed{};
        if (error != 0) refuse(standardOutput, error);
    }

    bool isTerminal() const {
        if (!isTerminal_) isTerminal_ = vek::isTerminal(Stream::output);
        return *isTerminal_;
    }

private:
    mutable std::optional<bool> isTerminal_;
};

Printout::Printout() : Printout(std::string()) {}

Printout::Printout(const std::string& path, Held held, bool keepsOld)
    : Output(isStandard(path) ? standardOutput : path, sinkFor(path, std::move(held), keepsOld)),
      screen_(isStandard(path) ? static_cast<Screen*>(sink()) : nullptr) {
    renewLimit();
    // Whoever writes a log there says anew how its file is.
    if (!isStandard(path) && formats::isPackedName(path)) encode("", true);
}

Printout::Printout(std::string name, std::unique_ptr<OutputSink> sink)
    : Output(std::move(name), std::move(sink)), screen_(nullptr) {
    renewLimit();
}

Printout Printout::late(const std::string& path, std::function<Held()> hold, bool keepsOld) {
    return {path, std::make_unique<UndisturbedFile>(path, std::move(hold), keepsOld)};
}

Printout Printout::trial(const std::string& path) {
    return {isStandard(path) ? standardOutput : path, std::make_unique<NoSink>()};
}

Printout Printout::prepared(const std::string& path, Held held, bool keepsOld) {
    auto file = std::make_unique<UndisturbedFile>(path, std::move(held), keepsOld, true);
    UndisturbedFile* const prepared = file.get();
    Printout out(path, std::move(file));
    out.prepared_ = prepared;
    return out;
}

std::unique_ptr<OutputSink> Printout::sinkFor(const std::string& path, Held held, bool keepsOld) {
    if (isStandard(path)) return std::make_unique<Screen>();
    return std::make_unique<UndisturbedFile>(path, std::move(held), keepsOld);
}

void Printout::renewLimit() {
    limit(theLimit, programTerms());
}

void Printout::inkedLine(std::string_view text) {
    if (!isTerminal()) return line(text);
    flush();
    screen_->send(concat(text, "\n"));
}

void Printout::close() {
    notes_ = Output::close();
    if (prepared_ == nullptr) tellNotes();
}

void Printout::commit() {
    prepared_->commit();
    tellNotes();
}

void Printout::tellNotes() const {
    for (const std::string& note : notes_) say(note);
}

bool Printout::isTerminal() const {
    return screen_ != nullptr && screen_->isTerminal();
}

void tellLosses(const Losses& losses, const std::string& output) {
    for (const std::string& message : losses.messages()) say(message);
    for (const Losses::Kind& kind : losses.kinds()) {
        say(concat(output, ": ", kind.what, ": ", std::to_string(kind.count),
                   kind.firstPlace.empty() ? "" : ", first ", kind.firstPlace));
    }
}

void limitPrintouts(std::size_t bytes) {
    theLimit.bytes = bytes;
}

void noteRead(std::size_t bytes) {
    theLimit.read += bytes;
}

}  // namespace vek
