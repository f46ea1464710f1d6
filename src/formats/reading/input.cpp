#include "formats/reading/input.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <utility>

#include "formats/failure.h"
#include "formats/reading/limits.h"
#include "formats/reading/progress.h"

namespace vek::formats {

namespace {

constexpr std::size_t firstChunk = 1 << 16;
constexpr std::size_t readAtOnce = 1 << 24;
constexpr std::uint64_t mostOfDevice = 64 << 20;

std::uint64_t memoryOfMachine() {
    long pages = ::sysconf(_SC_PHYS_PAGES);
    long pageSize = ::sysconf(_SC_PAGESIZE);
    if (pages <= 0 || pageSize <= 0) return SIZE_MAX / 2;
    return static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(pageSize);
}

[[noreturn]] void refuse(const std::string& name, int error) {
    std::string found = std::strerror(error);
    std::string advice;
    if (error == EISDIR) found += ", a file was expected";
    if (error == EFBIG) found += ", it is larger than this machine's memory";
    if (error == ENOENT) advice = "check the path";
    if (error == EISDIR) advice = "name a file in it";
    if (error == EACCES) advice = "check its permissions";
    throw Failure{unreadable, name, {0, "", found, "", advice}};
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

// Where a file has so many bytes without room on the disk that it was never written there; its
// size where it has not. Readers would go through gigabytes of nothing.
off_t beginOfGap(int descriptor, off_t size) {
    constexpr off_t longest = 1 << 20;
    off_t begin = ::lseek(descriptor, 0, SEEK_HOLE);
    while (begin >= 0 && begin < size) {
        off_t end = ::lseek(descriptor, begin, SEEK_DATA);
        if (end < 0) end = size;
        if (end - begin > longest) return begin;
        begin = ::lseek(descriptor, end, SEEK_HOLE);
    }
    return size;
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
    : name_(path == "-" ? "standard input" : path),
      text_(TextBlock::create(0)),
      isStandardInput_(path == "-") {
    descriptor_ = openInput(path);
    openOrClose();
}

Input::Input(const std::string& name, int descriptor)
    : name_(name), text_(TextBlock::create(0)), descriptor_(::dup(descriptor)) {
    openOrClose();
}

Input::Input(const std::string& name, std::string_view text)
    : name_(name), text_(TextBlock::create(text.size())), size_(text.size()), isWhole_(true) {
    requireBytes(name_, size_);
    if (!text.empty()) std::memcpy(text_->data(), text.data(), text.size());
}

Input::~Input() {
    if (descriptor_ >= 0) ::close(descriptor_);
}

void Input::openOrClose() {
    if (descriptor_ < 0) refuse(name_, errno);
    try {
        open();
    } catch (...) {
        ::close(descriptor_);
        throw;
    }
}

void Input::open() {
    struct stat status = {};
    if (::fstat(descriptor_, &status) != 0) refuse(name_, errno);
    if (S_ISDIR(status.st_mode)) refuse(name_, EISDIR);
    isRegular_ = S_ISREG(status.st_mode) && !isStandardInput_;
    if (isRegular_) expected_ = static_cast<std::size_t>(status.st_size);
    std::uint64_t memory = memoryOfMachine();
    if (expected_ > memory) refuse(name_, EFBIG);
    requireBytes(name_, expected_);
    // A device gives what somebody types, or it has no end.
    most_ = S_ISCHR(status.st_mode) ? std::min(memory / 2, mostOfDevice) : memory / 2;
    readUpTo(isRegular_ ? headSize : SIZE_MAX);
    noteInput(isRegular_ ? expected_ : size_);
}

// A file that begins with such a gap is no text by its first line.
void Input::requireWithoutGap() const {
    if (!isRegular_ || expected_ == 0) return;
    const auto size = static_cast<off_t>(expected_);
    const off_t gap = beginOfGap(descriptor_, size);
    ::lseek(descriptor_, 0, SEEK_SET);
    if (gap == size || gap == 0) return;
    throw Failure{unreadable,
                  concat(name_, ": from byte ", std::to_string(gap), " on nothing was ever ",
                         "written for a megabyte or more, expected text; head -c ",
                         std::to_string(gap), " gives what stands before")};
}

// A large text gets a block of its own size; only what was read of it so far is copied there.
void Input::makeRoom(std::size_t most) {
    const std::size_t wanted = std::max({expected_ + 1, 2 * size_, firstChunk});
    const std::size_t room = std::min(most, wanted);
    if (size_ > headSize) return text_->resize(room);
    Quor::Ptr<TextBlock> larger = TextBlock::create(room);
    std::memcpy(larger->data(), text_->data(), size_);
    text_ = std::move(larger);
}

void Input::readUpTo(std::size_t most) {
    Progress progress("reading " + name_, expected_);
    while (!isWhole_ && size_ < most) {
        progress.reach(size_);
        if (size_ == text_->size()) makeRoom(most);
        ssize_t got = uninterrupted([this] { return readMore(); });
        if (got < 0) refuse(name_, errno);
        isWhole_ = got == 0;
        size_ += static_cast<std::size_t>(got);
        requireBytes(name_, size_);
        requireWithinMost();
    }
}

// The library's loader moves the place in a file that can be read again.
ssize_t Input::readMore() {
    char* to = text_->data() + size_;
    std::size_t room = std::min(text_->size() - size_, readAtOnce);
    if (!isRegular_) return ::read(descriptor_, to, room);
    return ::pread(descriptor_, to, room, static_cast<off_t>(size_));
}

void Input::requireWithinMost() const {
    if (isRegular_ || size_ <= most_) return;
    throw Failure{unreadable, name_ + ": gives more than " + std::to_string(most_ >> 20) +
                                  " MB and has no end yet; write it to a file first"};
}

std::string_view Input::text() {
    requireWithoutGap();
    readUpTo(SIZE_MAX);
    return got();
}

void Input::become(Quor::Ptr<TextBlock> text) {
    requireBytes(name_, text->size());
    size_ = text->size();
    text_ = std::move(text);
    isWhole_ = true;
    isRegular_ = false;
    if (isKept_) keep();
}

Quor::Ptr<TextBlock> Input::takeText() {
    readUpTo(SIZE_MAX);
    text_->resize(size_);
    return std::exchange(text_, TextBlock::create(size_ = 0));
}

// A pipe can be read but once, so its bytes are kept where they can be read again.
void Input::spool() {
    int copy = ::memfd_create("vek", MFD_CLOEXEC);
    if (copy < 0) refuse(name_, errno);
    if (descriptor_ >= 0) ::close(descriptor_);
    descriptor_ = copy;
    if (!writeAll(copy, got())) refuse(name_, errno);
    isRegular_ = true;
}

int Input::loaderDescriptor() {
    requireWithoutGap();
    if (!isRegular_) spool();
    return descriptor_;
}

std::uint64_t Input::size() const {
    struct stat status = {};
    if (::fstat(descriptor_, &status) != 0) refuse(name_, errno);
    return static_cast<std::uint64_t>(status.st_size);
}

std::size_t Input::readFrom(std::uint64_t from, char* to, std::size_t size) const {
    std::size_t done = 0;
    while (done < size) {
        const auto at = static_cast<off_t>(from + done);
        const ssize_t got =
            uninterrupted([&] { return ::pread(descriptor_, to + done, size - done, at); });
        if (got < 0) refuse(name_, errno);
        if (got == 0) break;
        done += static_cast<std::size_t>(got);
    }
    return done;
}

void Input::readAgain(std::uint64_t from, char* to, std::size_t size) const {
    if (readFrom(from, to, size) == size) return;
    throw Failure{unwritable, name_ +
                                  ": was cut off by another program since it was read, so nothing "
                                  "is written; look at it, and give the command again"};
}

}  // namespace vek::formats
