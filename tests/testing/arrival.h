#pragma once

#include <cstddef>

#include <vekdb/host/os.h>
#include "host/posix/file_io.h"
#include "host/text_arrival.h"

#include <unistd.h>

namespace testing_support {

/// While in scope, files of at least so many bytes come in pieces while they are looked at.
class ArrivalOf {
public:
    explicit ArrivalOf(std::size_t piece, std::size_t leastBytes = 1) {
        TextArrival::Terms::piece = TextArrival::Terms::pieceAhead = piece;
        TextArrival::Terms::leastBytes = leastBytes;
    }
    ArrivalOf(const ArrivalOf&) = delete;
    ArrivalOf& operator=(const ArrivalOf&) = delete;
    ~ArrivalOf() {
        TextArrival::Terms::piece = piece_;
        TextArrival::Terms::pieceAhead = pieceAhead_;
        TextArrival::Terms::leastBytes = leastBytes_;
    }

private:
    std::size_t piece_ = TextArrival::Terms::piece;
    std::size_t pieceAhead_ = TextArrival::Terms::pieceAhead;
    std::size_t leastBytes_ = TextArrival::Terms::leastBytes;
};

/// While in scope, large files are read ahead, or are not.
class ReadingAhead {
public:
    explicit ReadingAhead(bool ahead = true) : before_(OS()->setReadsAhead(ahead)) {}
    ReadingAhead(const ReadingAhead&) = delete;
    ReadingAhead& operator=(const ReadingAhead&) = delete;
    ~ReadingAhead() { OS()->setReadsAhead(before_); }

private:
    bool before_;
};

/// While in scope, the n-th piece of a file that comes in pieces does not come; the plain way
/// works, or does not.
class BrokenPiece {
public:
    BrokenPiece(int failAt, bool thenWorks) : before_(FileIO::systemCalls()) {
        left_ = failAt;
        FileIO::systemCalls().endRead = [](aiocb* piece) {
            const ssize_t got = ::aio_return(piece);
            return --left_ == 0 ? ssize_t{-1} : got;
        };
        FileIO::systemCalls().readAt = [](int file, void* to, std::size_t size, off_t from) {
            return --left_ == 0 ? ssize_t{-1} : ::pread(file, to, size, from);
        };
        if (!thenWorks) {
            FileIO::systemCalls().read = [](int, void*, std::size_t) { return ssize_t{-1}; };
        }
    }
    BrokenPiece(const BrokenPiece&) = delete;
    BrokenPiece& operator=(const BrokenPiece&) = delete;
    ~BrokenPiece() { FileIO::systemCalls() = before_; }

private:
    static inline int left_ = 0;
    FileIO::SystemCalls before_;
};

}  // namespace testing_support
