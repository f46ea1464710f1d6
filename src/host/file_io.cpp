#include "host/file_io.h"

#include "host/large_pages.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace FileIO {

namespace {

constexpr std::size_t kFirstRoom = std::size_t{64} << 10;
constexpr std::size_t kProbe = std::size_t{4} << 10;
constexpr std::uint64_t kMostOfDevice = std::uint64_t{64} << 20;
constexpr std::size_t kMostPerCall = std::size_t{1} << 30;
constexpr int kMostLinks = 40;
constexpr int kMostNames = 100;

int openFile(const char* path, int flags, mode_t mode) {
    return ::open(path, flags, mode);
}

ssize_t readSome(int file, char* to, std::size_t size) {
    for (;;) {
        const ssize_t got = systemCalls().read(file, to, std::min(size, kMostPerCall));
        if (got >= 0 || errno != EINTR) {
            return got;
        }
    }
}

// Reads a file to its end into a block that grows, to the limit, where the hint was short.
class WholeReader {
public:
    WholeReader(int file, std::size_t hint, std::uint64_t limit)
        : file_(file), limit_(limit), text_(TextBlock::create(hint)) {
        expectFilling(*text_);
    }

    bool readToEnd() {
        bool more = true;
        while (more) {
            if (!fillRoom(more) || (more && !readPastRoom(more))) {
                return false;
            }
        }
        text_->resize(used_);
        return true;
    }

    Quor::Ptr<TextBlock> text() const { return text_; }
    std::size_t size() const { return used_; }

private:
    std::size_t room() const { return text_->size() - used_; }

    // False on a failed read; `more` turns false at the end of the file.
    bool fillRoom(bool& more) {
        while (room() > 0) {
            const ssize_t got = readSome(file_, text_->data() + used_, room());
            if (got <= 0) {
                more = false;
                return got == 0;
            }
            used_ += static_cast<std::size_t>(got);
        }
        return true;
    }

    // The end of a file whose hint was exact is found without a larger block.
    bool readPastRoom(bool& more) {
        char probe[kProbe];
        const ssize_t got = readSome(file_, probe, sizeof probe);
        if (got <= 0) {
            more = false;
            return got == 0;
        }
        if (!grow(static_cast<std::size_t>(got))) {
            return false;
        }
        std::memcpy(text_->data() + used_, probe, static_cast<std::size_t>(got));
        used_ += static_cast<std::size_t>(got);
        return true;
    }

    bool grow(std::size_t atLeast) {
        const std::size_t size = std::max({used_ + atLeast, used_ * 2, kFirstRoom});
        if (size > limit_) {
            return false;
        }
        text_->resize(size);
        return true;
    }

    int file_;
    std::uint64_t limit_;
    Quor::Ptr<TextBlock> text_;
    std::size_t used_ = 0;
};

bool isReadable(const struct stat& status) {
    return S_ISREG(status.st_mode) || S_ISFIFO(status.st_mode) || S_ISCHR(status.st_mode);
}

std::size_t sizeHint(const struct stat& status) {
    return S_ISREG(status.st_mode) ? static_cast<std::size_t>(status.st_size) : 0;
}

// What is of unknown length may fill half the memory and no more. A device gives
// what somebody types, or it has no end and is to be given up soon.
std::uint64_t limitOf(const struct stat& status) {
    const std::uint64_t most = memorySize() / 2;
    return S_ISCHR(status.st_mode) ? std::min(most, kMostOfDevice) : most;
}

// While this lives, a write past a size limit or to a reader that has gone is an
// error of the call, as it is everywhere else, and not the end of the process.
class WriteSignals {
public:
    WriteSignals() {
        sigset_t pending;
        sigpending(&pending);
        sigemptyset(&own_);
        for (const int signal : {SIGPIPE, SIGXFSZ}) {
            if (sigismember(&pending, signal) == 0) {
                sigaddset(&own_, signal);
            }
        }
        pthread_sigmask(SIG_BLOCK, &own_, &before_);
    }
    WriteSignals(const WriteSignals&) = delete;
    WriteSignals& operator=(const WriteSignals&) = delete;

    ~WriteSignals() {
        const int error = errno;
        const timespec atOnce{0, 0};
        while (sigtimedwait(&own_, nullptr, &atOnce) > 0) {
        }
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
        errno = error;
    }

private:
    sigset_t own_;
    sigset_t before_;
};

std::string folderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

// What a symbolic link says, in a path that holds from here; empty when the
// path is no link.
std::string linkedPath(const std::string& path) {
    char text[PATH_MAX];
    const ssize_t length = ::readlink(path.c_str(), text, sizeof text);
    if (length <= 0) {
        return std::string();
    }
    const std::string linked(text, static_cast<std::size_t>(length));
    return linked[0] == '/' ? linked : folderOf(path) + linked;
}

// The path behind all links at its end, existing or not; empty for a loop.
std::string followLinks(std::string path) {
    for (int i = 0; i < kMostLinks; ++i) {
        std::string linked = linkedPath(path);
        if (linked.empty()) {
            return path;
        }
        path.swap(linked);
    }
    return std::string();
}

std::string uniqueName() {
    static constinit std::atomic<unsigned> count{0};
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    char text[64];
    std::snprintf(text, sizeof text, ".vekdb-%lx-%llx-%x", static_cast<long>(::getpid()),
                  static_cast<unsigned long long>(now), count++);
    return text;
}

// Best effort: the new contents already stand under their name.
void flushFolder(const std::string& folder) {
    const char* path = folder.empty() ? "." : folder.c_str();
    const Descriptor opened(systemCalls().open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0));
    if (opened.get() >= 0) {
        systemCalls().sync(opened.get());
    }
}

}  // namespace

SystemCalls& systemCalls() {
    static constinit SystemCalls calls{openFile, ::read,  ::aio_read, ::aio_return, ::write,
                                       ::fsync,  ::close, ::fchmod,   std::rename};
    return calls;
}

int openToRead(const char* path) {
    return systemCalls().open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY, 0);
}

std::uint64_t memorySize() {
    const long pages = ::sysconf(_SC_PHYS_PAGES);
    const long pageSize = ::sysconf(_SC_PAGESIZE);
    if (pages <= 0 || pageSize <= 0) {
        return SIZE_MAX / 2;
    }
    return static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(pageSize);
}

void expectFilling(TextBlock& block) {
    ::expectFilling(block.data(), block.size() + 1);
}

bool readWhole(const char* path, Quor::Ptr<TextBlock>& text, std::size_t& textSize) {
    const Descriptor file(openToRead(path));
    struct stat status;
    if (file.get() < 0 || ::fstat(file.get(), &status) != 0 || !isReadable(status) ||
        sizeHint(status) > memorySize()) {
        return false;
    }
    WholeReader reader(file.get(), sizeHint(status), limitOf(status));
    if (!reader.readToEnd()) {
        return false;
    }
    text = reader.text();
    textSize = reader.size();
    return true;
}

namespace {

bool isWrittenDirectly(const struct stat& status) {
    return S_ISCHR(status.st_mode) || S_ISFIFO(status.st_mode);
}

}  // namespace

bool isWrittenDirectly(const char* path) {
    struct stat status;
    return ::stat(path, &status) == 0 && isWrittenDirectly(status);
}

Replacement::~Replacement() {
    discard();
}

bool Replacement::open(const std::string& path) {
    struct stat old;
    if (::stat(path.c_str(), &old) != 0) {
        const bool isNew = errno == ENOENT;
        target_ = followLinks(path);
        return isNew && openBeside(0666);
    }
    if (isWrittenDirectly(old)) {
        return openDevice(path);
    }
    // A file that may not be written to is not to be replaced either.
    if (!S_ISREG(old.st_mode) || ::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0) {
        return false;
    }
    target_ = followLinks(path);
    if (!openBeside(0600)) {
        return false;
    }
    keepAttributes(old);
    return true;
}

bool Replacement::write(const char* from, std::size_t size) {
    const WriteSignals signals;
    while (file_ >= 0 && size > 0) {
        const ssize_t done = systemCalls().write(file_, from, std::min(size, kMostPerCall));
        if (done < 0 && errno == EINTR) {
            continue;
        }
        if (done <= 0) {
            discard();
            return false;
        }
        from += done;
        size -= static_cast<std::size_t>(done);
    }
    return file_ >= 0;
}

// Whatever takes memory comes before the rename, behind which nothing may fail.
bool Replacement::commit() {
    if (file_ < 0) {
        return false;
    }
    const std::string folder = folderOf(target_);
    const bool replaces = !temporary_.empty();
    const bool completed = !replaces || complete();
    const bool closed = closeFile();
    if (!completed || !closed ||
        (replaces && systemCalls().rename(temporary_.c_str(), target_.c_str()) != 0)) {
        discard();
        return false;
    }
    temporary_.clear();
    if (replaces && toDisk_) {
        flushFolder(folder);
    }
    return true;
}

bool Replacement::openDevice(const std::string& path) {
    file_ = systemCalls().open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY, 0);
    return file_ >= 0;
}

bool Replacement::openBeside(mode_t mode) {
    return !target_.empty() && target_.back() != '/' && createUnique(mode);
}

bool Replacement::createUnique(mode_t mode) {
    for (int i = 0; i < kMostNames; ++i) {
        std::string name = folderOf(target_) + uniqueName();
        file_ = systemCalls().open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
        if (file_ >= 0) {
            temporary_.swap(name);
            return true;
        }
        if (errno != EEXIST) {
            return false;
        }
    }
    return false;
}

// The owner is kept where the process may give files away; the mode always, but
// without the rights that a file takes from an owner it no longer has.
void Replacement::keepAttributes(const struct stat& old) {
    const bool given = ::fchown(file_, old.st_uid, old.st_gid) == 0;
    mode_ = old.st_mode & (given ? 07777 : 0777);
}

// The mode comes last, as writing and giving away take rights from a file.
bool Replacement::complete() {
    return (!mode_ || systemCalls().setMode(file_, *mode_) == 0) &&
           (!toDisk_ || systemCalls().sync(file_) == 0);
}

bool Replacement::closeFile() {
    const int file = std::exchange(file_, -1);
    return file >= 0 && systemCalls().close(file) == 0;
}

void Replacement::discard() {
    closeFile();
    if (!temporary_.empty()) {
        ::unlink(temporary_.c_str());
        temporary_.clear();
    }
}

}  // namespace FileIO
