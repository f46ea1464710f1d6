#include "host/posix/replacing/in_place.h"

#include "host/posix/replacing/byte_copy.h"
#include "host/posix/replacing/temporary.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

namespace {

using FileIO::Descriptor;
using FileIO::systemCalls;

Descriptor openToOverwrite(const Place& place, const struct stat& expected) {
    constexpr int flags = O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    Descriptor file(systemCalls().openAt(place.folder(), place.name().c_str(), flags, 0));
    struct stat status;
    if (file.isOpen() &&
        (systemCalls().status(file.get(), &status) != 0 || !isSameFile(status, expected))) {
        file = Descriptor();
        errno = ESTALE;
    }
    return file;
}

int flush(int file) {
    return systemCalls().sync(file) == 0 ? 0 : errno;
}

int flushFolder(int folder) {
    const Descriptor opened(
        systemCalls().openAt(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0));
    return opened.isOpen() ? flush(opened.get()) : errno;
}

int copyToDisk(int from, int to) {
    off_t size = 0;
    if (const int error = copyAll(from, to, size)) {
        return error;
    }
    return flush(to);
}

// The descriptor is a fresh one for each time, so that it writes from the first byte on.
int overwrite(const Place& place, const struct stat& expected, int contents, off_t room) {
    Descriptor file = openToOverwrite(place, expected);
    if (!file.isOpen() || systemCalls().makeRoom(file.get(), room) != 0) {
        return errno;
    }
    off_t size = 0;
    if (const int error = copyAll(contents, file.get(), size)) {
        return error;
    }
    if (systemCalls().cut(file.get(), size) != 0) {
        return errno;
    }
    if (const int error = flush(file.get())) {
        return error;
    }
    return systemCalls().close(file.take()) == 0 ? 0 : errno;
}

}  // namespace

FileTrouble writeInPlace(const Place& place, const HeldFile& old, int contents,
                         std::string& beside) {
    struct stat status;
    if (systemCalls().status(contents, &status) != 0) {
        return FileTrouble::ofCall();
    }
    Temporary rescue;
    if (const int error = rescue.createBeside(place.folder(), place.name())) {
        return FileTrouble::ofSystem(error);
    }
    std::string name = rescue.name();
    if (const int error = copyToDisk(old.file(), rescue.file())) {
        return FileTrouble::ofSystem(error);
    }
    flushFolder(place.folder());
    const int error = overwrite(place, old.status(), contents, status.st_size);
    if (error == 0) {
        return {};
    }
    if (overwrite(place, old.status(), rescue.file(), 0) == 0) {
        return FileTrouble::ofSystem(error);
    }
    rescue.keep();
    beside.swap(name);
    return {FileTrouble::oldBeside, error};
}
