#include "tools/vek/cli/output.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>

#include <vekdb/host/text_file.h>
#include <vekdb/host/text_util.h>
#include "tools/vek/cli/exit.h"
#include "tools/vek/cli/width.h"

namespace vek {

namespace {

constexpr std::size_t flushAt = 1 << 16;

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

// Keeps Ctrl-C and its kin waiting while a file is being replaced, which is soon done: the old
// file or the new one is there then, and nothing beside it.
class Undisturbed {
public:
    Undisturbed() {
        sigset_t signals;
        ::sigemptyset(&signals);
        for (int signal : {SIGINT, SIGTERM, SIGHUP}) ::sigaddset(&signals, signal);
        ::sigprocmask(SIG_BLOCK, &signals, &before_);
    }
    ~Undisturbed() { ::sigprocmask(SIG_SETMASK, &before_, nullptr); }
    Undisturbed(const Undisturbed&) = delete;
    Undisturbed& operator=(const Undisturbed&) = delete;

private:
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

Output::Output(const std::string& path) : path_(path == "-" ? "" : path) {}

void Output::add(std::string_view text) {
    pending_ += text;
    if (isStandardOutput() && pending_.size() >= flushAt) flush();
}

void Output::write(std::string_view text) {
    if (isTerminal()) return add(forTerminal(text));
    add(text);
}

void Output::line(std::string_view text) {
    if (isTerminal()) return inkedLine(forTerminal(text));
    inkedLine(text);
}

void Output::inkedLine(std::string_view text) {
    pending_ += text;
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

void Output::close() {
    if (isStandardOutput())
        flush();
    else
        replaceFile(path_, pending_);
}

std::string Output::name() const {
    return isStandardOutput() ? "standard output" : path_;
}

bool Output::isTerminal() const {
    if (!isTerminal_) isTerminal_ = isStandardOutput() && ::isatty(STDOUT_FILENO) == 1;
    return *isTerminal_;
}

void replaceFile(const std::string& path, std::string_view text) {
    // Saving ends every line, so the text goes in as one line without its last line feed.
    TextFile file;
    if (!text.empty()) file.appendLine(text.substr(0, text.size() - 1));
    Undisturbed undisturbed;
    errno = 0;
    if (!file.save(fromUTF8(LightweightString<char>(path.c_str())), TextFile::eLF)) {
        refuse(path, errno);
    }
}

void backUp(const std::string& path) {
    std::error_code error;
    auto overwrite = std::filesystem::copy_options::overwrite_existing;
    std::filesystem::copy_file(path, path + ".bak", overwrite, error);
    if (error) refuse(path + ".bak", error.value());
}

std::size_t terminalWidth(std::size_t otherwise) {
    winsize size = {};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return otherwise;
    return size.ws_col;
}

}  // namespace vek
