#include "tools/vek/cli/terminal.h"

#ifdef __GLIBC__
#include <malloc.h>
#endif
#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstring>
#include <iterator>

namespace vek {

namespace {

constexpr int endings[] = {SIGINT, SIGTERM, SIGHUP};

// How many files are being replaced, what waits meanwhile, and what did before.
std::size_t undisturbedCount = 0;
sigset_t heldBack;
sigset_t before;

int fileOf(Stream stream) {
    return stream == Stream::output ? STDOUT_FILENO : STDERR_FILENO;
}

}  // namespace

bool isTerminal(Stream stream) {
    return ::isatty(fileOf(stream)) == 1;
}

TerminalSize terminalSize() {
    winsize size = {};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0) return {};
    return {size.ws_row, size.ws_col};
}

void takeCharactersForUtf8() {
    std::setlocale(LC_CTYPE, "");
    if (std::strcmp(nl_langinfo(CODESET), "UTF-8") != 0) std::setlocale(LC_CTYPE, "C.UTF-8");
}

std::size_t terminalWidth(std::size_t otherwise) {
    const std::size_t columns = terminalSize().columns;
    return columns == 0 ? otherwise : columns;
}

int writeTo(Stream stream, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(fileOf(stream), text.data(), text.size());
        if (written < 0 && errno != EINTR) return errno;
        if (written > 0) text.remove_prefix(static_cast<std::size_t>(written));
    }
    return 0;
}

void outliveFailingWrites() {
    for (int signal : {SIGPIPE, SIGXFSZ}) std::signal(signal, SIG_IGN);
}

// A few freed megabytes are kept: a file is written piece by piece, and pages that went back to the
// system after each would have to be asked for and cleared anew.
void giveLargeBlocksBack() {
#ifdef __GLIBC__
    ::mallopt(M_MMAP_THRESHOLD, 1 << 20);
    ::mallopt(M_TRIM_THRESHOLD, 4 << 20);
#endif
}

bool isThere(const std::string& path) {
    return ::access(path.c_str(), F_OK) == 0;
}

namespace {

volatile std::sig_atomic_t askedEnding = 0;

void noteEnding(int signal) {
    askedEnding = signal;
}

}  // namespace

NotedEndings::NotedEndings() {
    askedEnding = 0;
    struct sigaction noted = {};
    noted.sa_handler = noteEnding;
    for (std::size_t i = 0; i < std::size(endings); ++i) {
        ::sigaction(endings[i], nullptr, &before_[i]);
        if (before_[i].sa_handler != SIG_IGN) ::sigaction(endings[i], &noted, nullptr);
    }
}

NotedEndings::~NotedEndings() {
    for (std::size_t i = 0; i < std::size(endings); ++i) {
        ::sigaction(endings[i], &before_[i], nullptr);
    }
    if (askedEnding != 0) std::raise(askedEnding);
}

bool NotedEndings::isAsked() const {
    return askedEnding != 0;
}

Undisturbed::Undisturbed() {
    if (undisturbedCount++ > 0) return;
    ::sigemptyset(&heldBack);
    for (int signal : endings) {
        struct sigaction action = {};
        const bool isKnown = ::sigaction(signal, nullptr, &action) == 0;
        if (!isKnown || action.sa_handler != SIG_IGN) ::sigaddset(&heldBack, signal);
    }
    ::sigprocmask(SIG_BLOCK, &heldBack, &before);
}

Undisturbed::~Undisturbed() {
    if (--undisturbedCount == 0) ::sigprocmask(SIG_SETMASK, &before, nullptr);
}

bool Undisturbed::isAwaited() const {
    sigset_t waiting;
    if (::sigpending(&waiting) != 0) return false;
    return std::any_of(std::begin(endings), std::end(endings), [&](int signal) {
        return ::sigismember(&waiting, signal) == 1 && ::sigismember(&heldBack, signal) == 1;
    });
}

}  // namespace vek
