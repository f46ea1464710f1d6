#include "tools/vek/cli/temporary_folder.h"

#include <signal.h>
#include <stdlib.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "tools/vek/cli/exit.h"

namespace vek {

namespace {

constexpr std::array<int, 4> signals = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

// What a handler can reach: memory that nothing else moves.
char folderPath[PATH_MAX];
char linkPath[PATH_MAX];
std::array<struct sigaction, signals.size()> before;

// Only what may be called whatever the program was at.
void removeAll() {
    ::unlink(linkPath);
    ::rmdir(folderPath);
}

// The signal ends the program as if it had not been caught.
void leave(int signal) {
    removeAll();
    ::signal(signal, SIG_DFL);
    ::raise(signal);
}

// Holds the signals back while what the handler looks at is changed.
class Quiet {
public:
    Quiet() {
        sigset_t all;
        ::sigemptyset(&all);
        for (int signal : signals) ::sigaddset(&all, signal);
        ::sigprocmask(SIG_BLOCK, &all, &mask_);
    }
    ~Quiet() { ::sigprocmask(SIG_SETMASK, &mask_, nullptr); }
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;

private:
    sigset_t mask_;
};

// What is ignored, as under nohup, stays so.
void catchSignals() {
    struct sigaction action = {};
    action.sa_handler = leave;
    for (std::size_t i = 0; i < signals.size(); ++i) {
        ::sigaction(signals[i], nullptr, &before[i]);
        if (before[i].sa_handler != SIG_IGN) ::sigaction(signals[i], &action, nullptr);
    }
}

void letSignalsGo() {
    for (std::size_t i = 0; i < signals.size(); ++i) ::sigaction(signals[i], &before[i], nullptr);
}

std::string placeOfFolders() {
    const char* named = std::getenv("TMPDIR");
    return named == nullptr || *named == '\0' ? "/tmp" : named;
}

[[noreturn]] void refuse(int error) {
    throw Failure{unreadable, placeOfFolders() + ": " + std::strerror(error) +
                                  "; set TMPDIR to a folder that can be written to"};
}

// False where the path is too long.
bool store(char (&to)[PATH_MAX], const std::string& path) {
    if (path.size() >= PATH_MAX) return false;
    std::memcpy(to, path.c_str(), path.size() + 1);
    return true;
}

}  // namespace

TemporaryFolder::TemporaryFolder(const std::string& name, const std::string& target) {
    std::string folder = placeOfFolders() + "/vek-XXXXXX";
    if (!store(linkPath, folder + "/" + name) || !store(folderPath, folder)) refuse(ENAMETOOLONG);
    Quiet quiet;
    if (::mkdtemp(folderPath) == nullptr) refuse(errno);
    std::memcpy(linkPath, folderPath, std::strlen(folderPath));
    if (::symlink(target.c_str(), linkPath) != 0) {
        int error = errno;
        removeAll();
        refuse(error);
    }
    catchSignals();
}

TemporaryFolder::~TemporaryFolder() {
    Quiet quiet;
    removeAll();
    letSignalsGo();
}

std::string TemporaryFolder::path() const {
    return linkPath;
}

}  // namespace vek
