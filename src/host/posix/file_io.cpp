#include "host/posix/file_io.h"

#include "host/posix/file_stamp.h"
#include "host/posix/large_pages.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace FileIO {

namespace {

constexpr std::size_t kFirstRoom = std::size_t{64} << 10;
constexpr std::size_t kProbe = std::size_t{4} << 10;
constexpr std::uint64_t kMostOfDevice = std::uint64_t{64} << 20;
constexpr std::size_t kMostPerCall = std::size_t{1} << 30;
constexpr int kMostReadings = 5;

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

// Never 0.
int errorOfCall() {
    return errno != 0 ? errno : EIO;
}

// Reads a file to its end into a block that grows, to the limit, where the hint was short.
class WholeReader {
public:
    WholeReader(int file, std::size_t hint, std::uint64_t limit)
        : file_(file), limit_(limit), text_(TextBlock::create(hint)) {}

    // 0, or the error.
    int readToEnd() {
        bool more = true;
        while (more) {
            int error = fillRoom(more);
            if (error == 0 && more) {
                error = readPastRoom(more);
            }
            if (error != 0) {
                return error;
            }
        }
        text_->resize(used_);
        return 0;
    }

    Quor::Ptr<TextBlock> text() const { return text_; }
    std::size_t size() const { return used_; }

private:
    std::size_t room() const { return text_->size() - used_; }

    // `more` turns false at the end of the file.
    int fillRoom(bool& more) {
        while (room() > 0) {
            const ssize_t got = readSome(file_, text_->data() + used_, room());
            if (got <= 0) {
                more = false;
                return got == 0 ? 0 : errorOfCall();
            }
            used_ += static_cast<std::size_t>(got);
        }
        return 0;
    }

    // The end of a file whose hint was exact is found without a larger block.
    int readPastRoom(bool& more) {
        char probe[kProbe];
        const ssize_t got = readSome(file_, probe, sizeof probe);
        if (got <= 0) {
            more = false;
            return got == 0 ? 0 : errorOfCall();
        }
        if (!grow(static_cast<std::size_t>(got))) {
            return EFBIG;
        }
        std::memcpy(text_->data() + used_, probe, static_cast<std::size_t>(got));
        used_ += static_cast<std::size_t>(got);
        return 0;
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

// Why nothing can be read of what is open; 0 where it can.
int errorOfKind(const struct stat& status) {
    if (S_ISDIR(status.st_mode)) {
        return EISDIR;
    }
    const bool isReadable =
        S_ISREG(status.st_mode) || S_ISFIFO(status.st_mode) || S_ISCHR(status.st_mode);
    return isReadable ? 0 : EOPNOTSUPP;
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

// Among the system's numbers: the file was changed while it was read.
constexpr int kChanged = -1;

// The outputs stay untouched but for 0.
int readOnce(int file, const struct stat& status, Quor::Ptr<TextBlock>& text,
             std::size_t& textSize) {
    if (const int error = errorOfKind(status)) {
        return error;
    }
    if (sizeHint(status) > memorySize()) {
        return EFBIG;
    }
    ::lseek(file, 0, SEEK_SET);
    WholeReader reader(file, sizeHint(status), limitOf(status));
    if (const int error = reader.readToEnd()) {
        return error;
    }
    if (!(FileStamp::of(file) == FileStamp(status))) {
        return kChanged;
    }
    text = reader.text();
    textSize = reader.size();
    return 0;
}

int openFileAt(int folder, const char* name, int flags, mode_t mode) {
    return ::openat(folder, name, flags, mode);
}

int duplicateFile(int file) {
    return ::fcntl(file, F_DUPFD_CLOEXEC, 0);
}

int statusOf(int file, struct stat* status) {
    return ::fstat(file, status);
}

int statusAt(int folder, const char* name, struct stat* status) {
    return ::fstatat(folder, name, status, AT_SYMLINK_NOFOLLOW);
}

int mayWriteAt(int folder, const char* name) {
    return ::faccessat(folder, name, W_OK, AT_EACCESS);
}

int renameAt(int folder, const char* from, const char* to) {
    return ::renameat(folder, from, folder, to);
}

// Some file systems do not know the flag.
int renameNewAt(int folder, const char* from, const char* to) {
#ifdef RENAME_NOREPLACE
    const int done = ::renameat2(folder, from, folder, to, RENAME_NOREPLACE);
    if (done == 0 || (errno != EINVAL && errno != ENOSYS)) {
        return done;
    }
#endif
    return renameAt(folder, from, to);
}

int removeAt(int folder, const char* name) {
    return ::unlinkat(folder, name, 0);
}

// Where the file system cannot promise room, writing will tell.
int makeRoom(int file, off_t size) {
    const int done = ::fallocate(file, FALLOC_FL_KEEP_SIZE, 0, size);
    return done != 0 && (errno == ENOSPC || errno == EFBIG || errno == EDQUOT) ? -1 : 0;
}

int setAttribute(int file, const char* name, const void* value, std::size_t size) {
    return ::fsetxattr(file, name, value, size, 0);
}

std::uint64_t installedMemory() {
    const long pages = ::sysconf(_SC_PHYS_PAGES);
    const long pageSize = ::sysconf(_SC_PAGESIZE);
    if (pages <= 0 || pageSize <= 0) {
        return SIZE_MAX / 2;
    }
    return static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(pageSize);
}

}  // namespace

SystemCalls& systemCalls() {
    static constinit SystemCalls calls{
        .open = openFile,
        .read = ::read,
        .beginRead = ::aio_read,
        .endRead = ::aio_return,
        .write = ::write,
        .sync = ::fsync,
        .close = ::close,
        .setMode = ::fchmod,
        .openAt = openFileAt,
        .duplicate = duplicateFile,
        .status = statusOf,
        .statusAt = statusAt,
        .linkAt = ::readlinkat,
        .mayWriteAt = mayWriteAt,
        .renameAt = renameAt,
        .renameNewAt = renameNewAt,
        .removeAt = removeAt,
        .lock = ::flock,
        .readAt = ::pread,
        .makeRoom = makeRoom,
        .cut = ::ftruncate,
        .setOwner = ::fchown,
        .listAttributes = ::flistxattr,
        .attribute = ::fgetxattr,
        .setAttribute = setAttribute,
        .removeAttribute = ::fremovexattr,
    };
    return calls;
}

std::size_t regularSize(const char* path) {
    struct stat status;
    return ::stat(path, &status) == 0 ? sizeHint(status) : 0;
}

std::size_t regularSize(int file) {
    struct stat status;
    return ::fstat(file, &status) == 0 ? sizeHint(status) : 0;
}

bool isThere(const char* path) {
    struct stat status;
    return ::stat(path, &status) == 0 && !S_ISDIR(status.st_mode);
}

int openToRead(const char* path) {
    return systemCalls().open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY, 0);
}

// Asked for each of many small files, and always the same.
std::uint64_t memorySize() {
    static const std::uint64_t size = installedMemory();
    return size;
}

void expectFilling(TextBlock& block) {
    ::expectFilling(block.data(), block.size() + 1);
}

int readWhole(const char* path, Quor::Ptr<TextBlock>& text, std::size_t& textSize) {
    const Descriptor file(openToRead(path));
    return file.get() < 0 ? errorOfCall() : readWhole(file.get(), text, textSize);
}

int readWhole(int file, Quor::Ptr<TextBlock>& text, std::size_t& textSize) {
    for (int i = 0; i < kMostReadings; ++i) {
        struct stat status;
        const int error =
            ::fstat(file, &status) != 0 ? errorOfCall() : readOnce(file, status, text, textSize);
        if (error != kChanged) {
            return error;
        }
    }
    return EBUSY;
}

}  // namespace FileIO
