#include "formats/writing/output.h"
#include "formats/packed/packed.h"
#include "formats/text/encoding.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <optional>
#include <utility>

#include "formats/failure.h"
#include "formats/inform.h"
#include "formats/reading/input.h"
#include "formats/reading/limits.h"
#include "formats/text/width.h"

namespace vek::formats {

namespace {

constexpr std::size_t flushAt = 1 << 16;
constexpr std::size_t copiedAtOnce = 1 << 18;
constexpr std::size_t pieceSize = 1 << 20;
constexpr unsigned longestWait = 5000;  // milliseconds for a program that changes the file

std::string because(int error) {
    std::string text = error == 0 ? "could not be written" : std::strerror(error);
    if (error == ENOSPC) text += "; make room and try again";
    if (error == EACCES || error == EPERM) text += "; check the permissions of it and its folder";
    if (error == ENOENT) text += "; make its folder first";
    return text;
}

[[noreturn]] void refuse(const std::string& name, int error) {
    throw Failure{unwritable, name + ": " + because(error)};
}

std::string oldBeside(const FileReplacement& file) {
    return concat("could not be written (", std::strerror(file.error()),
                  "), nor be put back; what it held stands beside it, in ", file.oldBeside(),
                  "; copy that back when there is room");
}

std::string because(const FileReplacement& file) {
    switch (file.trouble()) {
        case FileReplacement::eInUse:
            return "another program is changing it; try again when that is done";
        case FileReplacement::eChanged:
            return "was changed by another program since it was read, so nothing is written; look "
                   "at it, and give the command again";
        case FileReplacement::eForeignLink:
            return "the path leads through a link that somebody else put there, which is not "
                   "followed to write; name the file itself";
        case FileReplacement::eForeignName:
            return "is also another file, by a name that somebody else may have put there; change "
                   "a copy";
        case FileReplacement::eOldBeside:
            return oldBeside(file);
        default:
            return because(file.error());
    }
}

[[noreturn]] void refuse(const std::string& name, const FileReplacement& file) {
    throw Failure{unwritable, name + ": " + because(file)};
}

// Said before the old file is gone.
void tellLosses(const std::string& path, unsigned losses) {
    constexpr struct {
        unsigned loss;
        const char* what;
    } kinds[] = {
        {FileReplacement::eOwner, "its owner could not be kept, the new file is yours"},
        {FileReplacement::eGroup,
         "its group could not be kept, nor the rights that the group had alone"},
        {FileReplacement::eAccessList,
         "its access list could not be kept, nobody but the owner has access now"},
        {FileReplacement::eAttributes, "not all of its extended attributes could be kept"},
    };
    for (const auto& kind : kinds) {
        if ((losses & kind.loss) != 0) inform(path + ": " + kind.what);
    }
}

// Keeps Ctrl-C and its kin waiting while a file is being replaced: the old file or the new one is
// there then, and nothing beside it. Those that the program ignores are none of its business.
class Undisturbed {
public:
    Undisturbed() {
        ::sigemptyset(&signals_);
        for (int signal : kinds) {
            struct sigaction action = {};
            const bool isKnown = ::sigaction(signal, nullptr, &action) == 0;
            if (!isKnown || action.sa_handler != SIG_IGN) ::sigaddset(&signals_, signal);
        }
        ::sigprocmask(SIG_BLOCK, &signals_, &before_);
    }
    ~Undisturbed() { ::sigprocmask(SIG_SETMASK, &before_, nullptr); }
    Undisturbed(const Undisturbed&) = delete;
    Undisturbed& operator=(const Undisturbed&) = delete;

    /// Whether one of them waits by now.
    bool isAwaited() const {
        sigset_t waiting;
        if (::sigpending(&waiting) != 0) return false;
        return std::any_of(std::begin(kinds), std::end(kinds), [&](int signal) {
            return ::sigismember(&waiting, signal) == 1 && ::sigismember(&signals_, signal) == 1;
        });
    }

private:
    static constexpr int kinds[] = {SIGINT, SIGTERM, SIGHUP};

    sigset_t signals_;
    sigset_t before_;
};

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

// Whoever read the pipe has seen enough.
[[noreturn]] void endQuietly() {
    throw Failure{done, ""};
}

}  // namespace

Held holdFile(const std::string& path) {
    if (path == "-") return nullptr;
    auto held = std::make_shared<FileReplacement>();
    bool isHeld = held->find(path.c_str()) && held->hold(longestWait);
    if (!isHeld && held->trouble() != FileReplacement::eSystem) refuse(path, *held);
    return held;
}

Held holdInput(const std::vector<std::string>& inputs, const std::string& output) {
    for (const std::string& input : inputs) {
        std::error_code ignored;
        if (std::filesystem::equivalent(input, output, ignored)) return holdFile(output);
    }
    return nullptr;
}

// A text on its way to the file whose place it is to take.
class Output::Departure {
public:
    Departure(const std::string& path, const Held& held)
        : path_(path), file_(held ? held : holdFile(path)) {
        // A FIFO may have no reader, and whoever waits for one may want to leave.
        if (!isDirect()) undisturbed_.emplace();
    }
    ~Departure() {
        if (isOpen_) file_->giveUp();
    }
    Departure(const Departure&) = delete;
    Departure& operator=(const Departure&) = delete;

    /// What is written to directly gets all of the text at once: it cannot be taken back.
    bool isDirect() const { return file_->isWrittenDirectly(); }
    /// Whether somebody asked the program to end meanwhile.
    bool isAwaited() const { return undisturbed_ && undisturbed_->isAwaited(); }

    void send(std::string_view text) {
        if (!isOpen_ && !file_->open()) refuse(path_, *file_);
        isOpen_ = true;
        if (!file_->write(text)) refuse(path_, *file_);
    }

    void end() {
        if (!file_->complete()) refuse(path_, *file_);
        tellLosses(path_, file_->losses());
        isOpen_ = false;
        if (!file_->commit()) refuse(path_, *file_);
    }

private:
    std::string path_;
    std::optional<Undisturbed> undisturbed_;
    Held file_;
    bool isOpen_ = false;
};

Output::Output() = default;

Output::Output(const std::string& path, Held held)
    : path_(path == "-" ? "" : path), held_(std::move(held)) {}

Output::~Output() = default;

Output::Output(Output&&) noexcept = default;

void Output::add(std::string_view text) {
    size_ += text.size();
    requireOutput(name(), size_);
    pending_ += text;
    // What is put into another form is so as a whole.
    if (isPacked_ || !encoding_.empty()) return;
    if (isStandardOutput()) {
        if (pending_.size() >= flushAt) flush();
    } else if (pending_.size() >= pieceSize) {
        sendPiece();
    }
}

// A signal that came meanwhile ends the program here, with nothing left beside the file.
void Output::sendPiece() {
    if (!departure_) departure_ = std::make_unique<Departure>(path_, held_);
    if (departure_->isDirect()) return;
    if (departure_->isAwaited()) {
        departure_.reset();
        refuse(path_, EINTR);
    }
    departure_->send(pending_);
    pending_.clear();
}

void Output::write(std::string_view text) {
    if (isTerminal()) return add(forTerminal(text));
    add(text);
}

void Output::line(std::string_view text) {
    if (isTerminal()) return inkedLine(forTerminal(text));
    inkedLine(text);
}

void Output::copy(const Input& input, Range range) {
    if (copied_ != &input) reader_.emplace(input);
    copied_ = &input;
    while (range.begin < range.end) {
        const std::size_t size = std::min(copiedAtOnce, range.size());
        write(reader_->read({range.begin, range.begin + size}));
        range.begin += size;
    }
}

void Output::inkedLine(std::string_view text) {
    add(text);
    add("\n");
}

void Output::flush() {
    std::string_view rest = pending_;
    while (!rest.empty()) {
        ssize_t written = ::write(STDOUT_FILENO, rest.data(), rest.size());
        if (written < 0 && errno == EPIPE) endQuietly();
        if (written < 0 && errno != EINTR) refuse(name(), errno);
        if (written > 0) rest.remove_prefix(static_cast<std::size_t>(written));
    }
    pending_.clear();
}

void Output::encode(const std::string& encoding, bool isPacked) {
    encoding_ = encoding;
    isPacked_ = isPacked;
}

void Output::encodePending() {
    if (!encoding_.empty()) {
        std::size_t badAt = 0;
        std::optional<std::string> made = fromUtf8(pending_, encoding_, badAt);
        if (!made) {
            const auto at = pending_.begin() + static_cast<std::ptrdiff_t>(badAt);
            throw Failure{
                unwritable,
                concat(name(), ":", std::to_string(1 + std::count(pending_.begin(), at, '\n')),
                       ": ", inQuotes(std::string_view(pending_).substr(badAt, 16)),
                       ", expected characters that ", encoding_,
                       " has; write a copy in UTF-8 with vek convert")};
        }
        pending_ = std::move(*made);
    }
    if (isPacked_) pending_ = packed(pending_);
}

void Output::close() {
    encodePending();
    if (isStandardOutput())
        flush();
    else
        replaceFile();
}

const std::string& Output::name() const {
    static const std::string standardOutput = "standard output";
    return isStandardOutput() ? standardOutput : path_;
}

bool Output::isTerminal() const {
    if (!isTerminal_) isTerminal_ = isStandardOutput() && ::isatty(STDOUT_FILENO) == 1;
    return *isTerminal_;
}

void Output::replaceFile() {
    if (!departure_) departure_ = std::make_unique<Departure>(path_, held_);
    departure_->send(pending_);
    departure_->end();
    departure_.reset();
}

void backUp(const std::string& path, FileReplacement& held) {
    std::string copy = path + ".bak";
    Undisturbed undisturbed;
    if (!held.backUp(copy.c_str())) refuse(copy, held);
}

std::size_t terminalWidth(std::size_t otherwise) {
    winsize size = {};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return otherwise;
    return size.ws_col;
}

}  // namespace vek::formats
