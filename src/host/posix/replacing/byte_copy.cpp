#include "host/posix/replacing/byte_copy.h"

#include "host/posix/file_io.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <string>

namespace {

using FileIO::systemCalls;

constexpr std::size_t kMostPerCall = std::size_t{1} << 30;
constexpr std::size_t kPiece = std::size_t{256} << 10;

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

int errorOfCall() {
    return errno != 0 ? errno : EIO;
}

ssize_t readPiece(int file, std::string& piece, off_t from) {
    for (;;) {
        const ssize_t got = systemCalls().readAt(file, piece.data(), piece.size(), from);
        if (got >= 0 || errno != EINTR) {
            return got;
        }
    }
}

}  // namespace

int writeAll(int file, const char* from, std::size_t size) {
    const WriteSignals signals;
    while (size > 0) {
        const ssize_t done = systemCalls().write(file, from, std::min(size, kMostPerCall));
        if (done < 0 && errno == EINTR) {
            continue;
        }
        if (done <= 0) {
            return done < 0 ? errorOfCall() : EIO;
        }
        from += done;
        size -= static_cast<std::size_t>(done);
    }
    return 0;
}

int copyAll(int from, int to, off_t& size) {
    std::string piece(kPiece, '\0');
    for (;;) {
        const ssize_t got = readPiece(from, piece, size);
        if (got <= 0) {
            return got < 0 ? errorOfCall() : 0;
        }
        if (const int error = writeAll(to, piece.data(), static_cast<std::size_t>(got))) {
            return error;
        }
        size += got;
    }
}
