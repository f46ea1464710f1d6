#include "host/posix/replacing/temporary.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <memory>
#include <string_view>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using FileIO::Descriptor;
using FileIO::systemCalls;

constexpr int kMostNames = 100;
constexpr std::size_t kLongestStem = 180;
constexpr std::size_t kMarkAt = 7;  // behind the first dash of a unique name
constexpr std::string_view kPattern = ".vekdb-########-################-########";

// The process, the time and a count, which no two makers of one machine share.
std::string uniqueName() {
    static constinit std::atomic<unsigned> count{0};
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    char text[64];
    std::snprintf(text, sizeof text, ".vekdb-%08x-%016llx-%08x", static_cast<unsigned>(::getpid()),
                  static_cast<unsigned long long>(now), count++);
    return text;
}

bool isHexDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
}

bool isUniqueName(std::string_view name) {
    const auto fits = [](char c, char wanted) {
        return wanted == '#' ? isHexDigit(c) : c == wanted;
    };
    return std::equal(name.begin(), name.end(), kPattern.begin(), kPattern.end(), fits);
}

// A file that its maker cannot write to any more may still be opened by its owner.
Descriptor openLeftOver(int folder, const char* name) {
    constexpr int flags = O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    Descriptor file(systemCalls().openAt(folder, name, O_RDWR | flags, 0));
    if (!file.isOpen() && errno == EACCES) {
        file = Descriptor(systemCalls().openAt(folder, name, O_RDONLY | flags, 0));
    }
    return file;
}

bool isLeftOver(int folder, const char* name, const struct stat& opened) {
    struct stat named;
    const uid_t user = ::geteuid();
    return S_ISREG(opened.st_mode) && opened.st_nlink == 1 &&
           (user == 0 || opened.st_uid == user) &&
           systemCalls().statusAt(folder, name, &named) == 0 && named.st_dev == opened.st_dev &&
           named.st_ino == opened.st_ino;
}

// Who lives holds the lock.
void removeLeftOver(int folder, const char* name) {
    struct stat before;
    if (systemCalls().statusAt(folder, name, &before) != 0 || !S_ISREG(before.st_mode)) {
        return;
    }
    const Descriptor file = openLeftOver(folder, name);
    struct stat status;
    if (file.isOpen() && systemCalls().lock(file.get(), LOCK_EX | LOCK_NB) == 0 &&
        systemCalls().status(file.get(), &status) == 0 && isLeftOver(folder, name, status)) {
        systemCalls().removeAt(folder, name);
    }
}

#ifdef __GLIBC__
// A folder stream would take its buffer from the C library, past the host's allocator.
template <class Visit>
void forEachName(int folder, Visit visit) {
    alignas(dirent64) char entries[4096];
    for (ssize_t got; (got = ::getdents64(folder, entries, sizeof entries)) > 0;) {
        for (ssize_t at = 0; at < got;) {
            const auto* entry = reinterpret_cast<const dirent64*>(entries + at);
            visit(entry->d_name);
            at += entry->d_reclen;
        }
    }
}
#else
template <class Visit>
void forEachName(int folder, Visit visit) {
    DIR* const names = ::fdopendir(::dup(folder));
    if (names == nullptr) {
        return;
    }
    while (const dirent* entry = ::readdir(names)) {
        visit(entry->d_name);
    }
    ::closedir(names);
}
#endif

}  // namespace

Temporary::~Temporary() {
    remove();
}

int Temporary::create(int folder, mode_t mode) {
    int error = EEXIST;
    for (int i = 0; error == EEXIST && i < kMostNames; ++i) {
        error = createNamed(folder, uniqueName(), mode);
    }
    return error;
}

int Temporary::createBeside(int folder, const std::string& name) {
    const std::string mark = uniqueName().substr(kMarkAt);
    return createNamed(folder, name.substr(0, kLongestStem) + ".old-" + mark, 0600);
}

int Temporary::createNamed(int folder, const std::string& name, mode_t mode) {
    constexpr int flags = O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    std::string taken = name;
    Descriptor file(systemCalls().openAt(folder, name.c_str(), flags, mode));
    if (!file.isOpen()) {
        return errno;
    }
    folder_ = folder;
    file_ = std::move(file);
    name_.swap(taken);
    if (isOurs()) {
        return 0;
    }
    remove();
    return EEXIST;
}

// Somebody who clears up may have taken it in the moment before it was locked. Where there are
// no locks nobody clears up.
bool Temporary::isOurs() const {
    struct stat status;
    if (systemCalls().lock(file(), LOCK_EX | LOCK_NB) != 0) {
        return errno != EWOULDBLOCK;
    }
    return systemCalls().status(file(), &status) != 0 || status.st_nlink > 0;
}

// A second descriptor keeps the lock.
int Temporary::close() {
    lock_ = Descriptor(systemCalls().duplicate(file()));
    if (!lock_.isOpen()) {
        return errno;
    }
    return systemCalls().close(file_.take()) == 0 ? 0 : errno;
}

int Temporary::become(const std::string& name, bool isNew) {
    const auto rename = isNew ? systemCalls().renameNewAt : systemCalls().renameAt;
    if (rename(folder_, name_.c_str(), name.c_str()) != 0) {
        return errno;
    }
    keep();
    return 0;
}

void Temporary::keep() {
    name_.clear();
    file_ = Descriptor();
    lock_ = Descriptor();
}

void Temporary::remove() {
    if (isThere()) {
        systemCalls().removeAt(folder_, name_.c_str());
    }
    keep();
}

void Temporary::clearUp(int folder) {
    const Descriptor list(systemCalls().openAt(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0));
    if (!list.isOpen()) {
        return;
    }
    forEachName(list.get(), [folder](const char* name) {
        if (isUniqueName(name)) {
            removeLeftOver(folder, name);
        }
    });
}
