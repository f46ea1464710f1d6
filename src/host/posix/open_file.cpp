#include <vekdb/host/open_file.h>

#include "host/posix/file_io.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

int errorOfCall() {
    return errno != 0 ? errno : EIO;
}

// Asks again for as long as signals come in between. 0 or the error.
template <class Call>
int uninterrupted(Call call, std::size_t& got) {
    for (;;) {
        const ssize_t size = call();
        if (size >= 0) {
            got = static_cast<std::size_t>(size);
            return 0;
        }
        if (errno != EINTR) {
            return errorOfCall();
        }
    }
}

int writeAll(int file, std::string_view text) {
    while (!text.empty()) {
        std::size_t written = 0;
        const int error =
            uninterrupted([&] { return ::write(file, text.data(), text.size()); }, written);
        if (error != 0) {
            return error;
        }
        text.remove_prefix(written);
    }
    return 0;
}

}  // namespace

OpenFile::OpenFile(int file) : file_(file), error_(file < 0 ? errorOfCall() : 0) {}

OpenFile OpenFile::at(const char* path) {
    return OpenFile(::open(path, O_RDONLY | O_CLOEXEC));
}

OpenFile OpenFile::ofStandardInput() {
    return of(STDIN_FILENO);
}

OpenFile OpenFile::of(int descriptor) {
    return OpenFile(::fcntl(descriptor, F_DUPFD_CLOEXEC, 0));
}

OpenFile OpenFile::holding(std::string_view text) {
    OpenFile file(::memfd_create("text", MFD_CLOEXEC));
    if (file.error_ == 0) {
        file.error_ = writeAll(file.file_, text);
    }
    return file;
}

std::uint64_t OpenFile::memoryOfMachine() {
    return FileIO::memorySize();
}

OpenFile::~OpenFile() {
    if (file_ >= 0) {
        ::close(file_);
    }
}

OpenFile::OpenFile(OpenFile&& other) noexcept
    : file_(std::exchange(other.file_, -1)), error_(other.error_) {}

OpenFile& OpenFile::operator=(OpenFile&& other) noexcept {
    std::swap(file_, other.file_);
    std::swap(error_, other.error_);
    return *this;
}

std::uint64_t OpenFile::place() const {
    const off_t at = ::lseek(file_, 0, SEEK_CUR);
    return at > 0 ? static_cast<std::uint64_t>(at) : 0;
}

int OpenFile::look(Kind& kind, std::uint64_t& size) const {
    struct stat status = {};
    if (::fstat(file_, &status) != 0) {
        return errorOfCall();
    }
    kind = S_ISREG(status.st_mode)   ? Kind::regular
           : S_ISDIR(status.st_mode) ? Kind::folder
           : S_ISCHR(status.st_mode) ? Kind::device
                                     : Kind::stream;
    size = static_cast<std::uint64_t>(status.st_size);
    return 0;
}

int OpenFile::read(char* to, std::size_t size, std::size_t& got) const {
    return uninterrupted([&] { return ::read(file_, to, size); }, got);
}

int OpenFile::readAt(std::uint64_t from, char* to, std::size_t size, std::size_t& got) const {
    return uninterrupted([&] { return ::pread(file_, to, size, static_cast<off_t>(from)); }, got);
}

int OpenFile::lock() const {
    return ::flock(file_, LOCK_EX | LOCK_NB) == 0 ? 0 : errorOfCall();
}

std::uint64_t OpenFile::beginOfGap(std::uint64_t size) const {
    constexpr off_t longest = 1 << 20;
    const auto all = static_cast<off_t>(size);
    off_t found = all;
    off_t begin = ::lseek(file_, 0, SEEK_HOLE);
    while (begin >= 0 && begin < all && found == all) {
        off_t end = ::lseek(file_, begin, SEEK_DATA);
        if (end < 0) {
            end = all;
        }
        if (end - begin > longest) {
            found = begin;
        } else {
            begin = ::lseek(file_, end, SEEK_HOLE);
        }
    }
    ::lseek(file_, 0, SEEK_SET);
    return static_cast<std::uint64_t>(found);
}
