#include "host/posix/replacing/held_file.h"

#include <cerrno>
#include <chrono>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>

namespace {

using FileIO::Descriptor;
using FileIO::systemCalls;
using Clock = std::chrono::steady_clock;

constexpr auto kPause = std::chrono::milliseconds(2);
constexpr int kFlags = O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

int openAny(const Place& place) {
    const char* name = place.name().c_str();
    const int file = systemCalls().openAt(place.folder(), name, O_RDONLY | kFlags, 0);
    const bool isForbidden = file < 0 && errno == EACCES;
    return isForbidden ? systemCalls().openAt(place.folder(), name, O_WRONLY | kFlags, 0) : file;
}

}  // namespace

// Who waited may find that the file it waited for has been replaced, and takes the new one.
FileTrouble HeldFile::hold(Place& place, unsigned milliseconds) {
    const auto end = Clock::now() + std::chrono::milliseconds(milliseconds);
    for (;;) {
        const FileTrouble trouble = open(place);
        if (trouble || !isOpen()) {
            return trouble;
        }
        const bool isDone = lock();
        struct stat opened = status_;
        if (const FileTrouble lost = place.look()) {
            return lost;
        }
        const bool isStill = place.kind() == Place::Kind::file &&
                             systemCalls().status(file(), &opened) == 0 &&
                             isSameFile(opened, place.status());
        status_ = opened;
        if (isDone && isStill) {
            return {};
        }
        if (Clock::now() >= end) {
            return {FileTrouble::inUse, EWOULDBLOCK};
        }
        std::this_thread::sleep_for(kPause);
    }
}

FileTrouble HeldFile::open(Place& place) {
    isLocked_ = false;
    file_ = Descriptor();
    const FileTrouble trouble = place.look();
    if (trouble || place.kind() != Place::Kind::file) {
        return trouble;
    }
    file_ = Descriptor(openAny(place));
    if (!isOpen()) {
        return FileTrouble::ofCall();
    }
    return systemCalls().status(file(), &status_) == 0 ? FileTrouble() : FileTrouble::ofCall();
}

// Where there are no locks nobody is waited for.
bool HeldFile::lock() {
    isLocked_ = systemCalls().lock(file(), LOCK_EX | LOCK_NB) == 0;
    return isLocked_ || errno != EWOULDBLOCK;
}
