#include "tools/vek/browse/held_file.h"

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <thread>

#include <vekdb/host/own_file.h>

namespace fs = std::filesystem;

namespace vek::browse {

namespace {

constexpr int looks = 20;
constexpr std::chrono::milliseconds betweenLooks{1};

int lockSoon(const OpenFile& file) {
    int error = file.lock();
    for (int i = 1; i < looks && error == EWOULDBLOCK; ++i) {
        std::this_thread::sleep_for(betweenLooks);
        error = file.lock();
    }
    return error;
}

}  // namespace

// The name of the descriptor leads to the file also where that has lost its own. Where there are
// no such names, the lock alone has to do.
bool leadsTo(const std::string& path, int descriptor) {
    const fs::path open = fs::path("/dev/fd") / std::to_string(descriptor);
    std::error_code error;
    if (!fs::exists(open, error)) return true;
    return !fs::is_symlink(path, error) && fs::equivalent(path, open, error);
}

bool holdNew(const std::string& path, int descriptor) {
    return lockSoon(OpenFile::of(descriptor)) != EWOULDBLOCK && leadsTo(path, descriptor);
}

HeldFile::HeldFile(const std::string& path) : file_(openOwnFile(path.c_str())) {
    if (file_.descriptor() < 0) return;
    const int error = lockSoon(file_);
    isLocked_ = error == 0;
    if (error == EWOULDBLOCK) {
        state_ = State::inUse;
    } else if (leadsTo(path, file_.descriptor())) {
        state_ = State::held;
    }
}

bool HeldFile::isEmpty() const {
    OpenFile::Kind kind;
    std::uint64_t size = 0;
    return isLocked_ && file_.look(kind, size) == 0 && size == 0;
}

}  // namespace vek::browse
