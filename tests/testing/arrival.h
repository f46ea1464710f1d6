#pragma once

#include <cstddef>

#include "host/file_io.h"
#include "host/text_arrival.h"

namespace testing_support {

/// While in scope, files of at least so many bytes come in pieces while they are looked at.
class ArrivalOf {
public:
    explicit ArrivalOf(std::size_t piece, std::size_t leastBytes = 1) {
        TextArrival::Terms::piece = piece;
        TextArrival::Terms::leastBytes = leastBytes;
    }
    ArrivalOf(const ArrivalOf&) = delete;
    ArrivalOf& operator=(const ArrivalOf&) = delete;
    ~ArrivalOf() {
        TextArrival::Terms::piece = piece_;
        TextArrival::Terms::leastBytes = leastBytes_;
    }

private:
    std::size_t piece_ = TextArrival::Terms::piece;
    std::size_t leastBytes_ = TextArrival::Terms::leastBytes;
};

/// While in scope, the n-th piece of a file that is read ahead does not come; the plain way works,
/// or does not.
class BrokenPiece {
public:
    BrokenPiece(int failAt, bool thenWorks) : before_(FileIO::systemCalls()) {
        left_ = failAt;
        FileIO::systemCalls().endRead = [](aiocb* piece) {
            const ssize_t got = ::aio_return(piece);
            return --left_ == 0 ? ssize_t{-1} : got;
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
