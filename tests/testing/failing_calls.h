#pragma once

#include "host/posix/file_io.h"

#include <cerrno>
#include <filesystem>
#include <iterator>

namespace testing_support {

/// While in scope, the n-th call of the operating system fails that reading and saving make, or it
/// and all behind it; 0 for none of them. A file that fails to close is closed all the same.
class FailingCalls {
public:
    enum class Failing { once, fromThereOn };

    explicit FailingCalls(unsigned failAt, int error = EIO, Failing failing = Failing::once)
        : before_(FileIO::systemCalls()) {
        real_ = before_;
        goesOn_ = failing == Failing::fromThereOn;
        countdown_ = failAt;
        error_ = error;
        made_ = 0;
        fired_ = false;
        using Calls = FileIO::SystemCalls;
        replaceAll<&Calls::open, &Calls::read, &Calls::write, &Calls::sync, &Calls::setMode,
                   &Calls::openAt, &Calls::duplicate, &Calls::status, &Calls::statusAt,
                   &Calls::linkAt, &Calls::mayWriteAt, &Calls::renameAt, &Calls::renameNewAt,
                   &Calls::removeAt, &Calls::lock, &Calls::readAt, &Calls::makeRoom, &Calls::cut,
                   &Calls::setOwner, &Calls::listAttributes, &Calls::attribute,
                   &Calls::setAttribute, &Calls::removeAttribute>();
        FileIO::systemCalls().close = [](int file) {
            const int closed = real_.close(file);
            return isDue() ? -1 : closed;
        };
    }
    FailingCalls(const FailingCalls&) = delete;
    FailingCalls& operator=(const FailingCalls&) = delete;
    ~FailingCalls() { FileIO::systemCalls() = before_; }

    bool fired() const { return fired_; }
    unsigned made() const { return made_; }

private:
    static bool isDue() {
        ++made_;
        const bool due = countdown_ != 0 && --countdown_ == 0;
        countdown_ += due && goesOn_ ? 1 : 0;
        fired_ = fired_ || due;
        errno = due ? error_ : errno;
        return due;
    }

    template <auto member, class Result, class... Values>
    static void replace(Result (*)(Values...)) {
        FileIO::systemCalls().*member = [](Values... values) {
            return isDue() ? Result{-1} : (real_.*member)(values...);
        };
    }

    template <auto... members>
    static void replaceAll() {
        (replace<members>(real_.*members), ...);
    }

    static inline FileIO::SystemCalls real_;
    static inline bool goesOn_ = false;
    static inline unsigned countdown_ = 0;
    static inline unsigned made_ = 0;
    static inline int error_ = 0;
    static inline bool fired_ = false;
    FileIO::SystemCalls before_;
};

/// How many descriptors the process has open.
inline std::ptrdiff_t openDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

}  // namespace testing_support
