#include "tools/vek/cli/input.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "tools/vek/cli/exit.h"
#include "tools/vek/cli/progress.h"

namespace vek {

namespace {

constexpr std::size_t firstChunk = 1 << 16;

[[noreturn]] void refuse(const std::string& name, int error) {
    std::string advice;
    if (error == ENOENT) advice = "; check the path";
    if (error == EISDIR) advice = ", a file was expected; name a file in it";
    if (error == EACCES) advice = "; check its permissions";
    throw Failure{unreadable, name + ": " + std::strerror(error) + advice};
}

int openInput(const std::string& path) {
    if (path == "-") return ::dup(STDIN_FILENO);
    return ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
}

// Asks again for as long as signals come in between.
template <class Read>
ssize_t uninterrupted(Read read) {
    ssize_t got;
    do {
        got = read();
    } while (got < 0 && errno == EINTR);
    return got;
}

bool writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        ssize_t written = ::write(descriptor, text.data(), text.size());
        if (written < 0 && errno != EINTR) return false;
        if (written > 0) text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

}  // namespace

Input::Input(const std::string& path)
    : name_(path == "-" ? "standard input" : path), isStandardInput_(path == "-") {
    descriptor_ = openInput(path);
    if (descriptor_ < 0) refuse(name_, errno);
    try {
        open();
    } catch (...) {
        ::close(descriptor_);
        throw;
    }
}

Input::~Input() {
    ::close(descriptor_);
}

void Input::open() {
    struct stat status = {};
    if (::fstat(descriptor_, &status) != 0) refuse(name_, errno);
    if (S_ISDIR(status.st_mode)) refuse(name_, EISDIR);
    isRegular_ = S_ISREG(status.st_mode) && !isStandardInput_;
    if (isRegular_) size_ = static_cast<std::size_t>(status.st_size);
    readUpTo(isRegular_ ? headSize : SIZE_MAX);
}

void Input::readUpTo(std::size_t most) {
    std::size_t expected = std::max(size_, firstChunk);
    std::size_t size = text_.size();
    Progress progress("reading " + name_, size_);
    while (!isWhole_ && size < most) {
        progress.reach(size);
        if (size == text_.size()) text_.resize(std::min(most, std::max(expected + 1, 2 * size)));
        ssize_t got = uninterrupted(
            [&] { return ::read(descriptor_, text_.data() + size, text_.size() - size); });
        if (got < 0) refuse(name_, errno);
        isWhole_ = got == 0;
        size += static_cast<std::size_t>(got);
    }
    text_.resize(size);
}

std::string_view Input::text() {
    readUpTo(SIZE_MAX);
    return text_;
}

// A pipe can be read but once, so its bytes are kept where they can be read again.
void Input::spool() {
    int copy = ::memfd_create("vek", MFD_CLOEXEC);
    if (copy < 0) refuse(name_, errno);
    ::close(descriptor_);
    descriptor_ = copy;
    if (!writeAll(copy, text_)) refuse(name_, errno);
    isRegular_ = true;
}

std::string Input::loaderPath() {
    if (!isRegular_) spool();
    return "/proc/self/fd/" + std::to_string(descriptor_);
}

}  // namespace vek
