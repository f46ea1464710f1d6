#include <vekdb/host/own_file.h>

#include "host/posix/file_io.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using FileIO::Descriptor;

std::FILE* makeOwnFile(const char* path) {
    constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    Descriptor made(::open(path, flags, S_IRUSR | S_IWUSR));
    std::FILE* const file = made.isOpen() ? ::fdopen(made.get(), "wb") : nullptr;
    if (file != nullptr) made.take();
    return file;
}

// The file is looked at as it is open, whatever has its name by then.
OpenFile openOwnFile(const char* path) {
    const Descriptor file(::open(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status;
    const bool isOwn = file.isOpen() && ::fstat(file.get(), &status) == 0 &&
                       S_ISREG(status.st_mode) && status.st_uid == ::geteuid();
    return isOwn ? OpenFile::of(file.get()) : OpenFile();
}
