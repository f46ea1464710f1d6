#include "host/posix/pieces_ahead.h"

#include "host/posix/file_io.h"

#include <cerrno>

#include <unistd.h>

namespace {

// Before this is known nothing is read ahead.
const pid_t ownProcess = ::getpid();

void waitFor(const aiocb& piece) {
    const aiocb* const pieces[] = {&piece};
    while (::aio_error(&piece) == EINPROGRESS) {
        ::aio_suspend(pieces, 1, nullptr);
    }
}

}  // namespace

bool PiecesAhead::isForked() {
    return ::getpid() != ownProcess;
}

PiecesAhead::~PiecesAhead() {
    if (isForked()) {
        return;
    }
    ::aio_cancel(file_, nullptr);
    for (; count_ > 0; --count_, ++first_) {
        aiocb& piece = pieces_[first_ % most];
        waitFor(piece);
        ::aio_return(&piece);
    }
}

bool PiecesAhead::ask(char* to, std::size_t size, std::size_t offset) {
    aiocb& piece = pieces_[(first_ + count_) % most];
    piece = {};
    piece.aio_fildes = file_;
    piece.aio_offset = static_cast<off_t>(offset);
    piece.aio_buf = to;
    piece.aio_nbytes = size;
    piece.aio_sigevent.sigev_notify = SIGEV_NONE;
    if (FileIO::systemCalls().beginRead(&piece) != 0) {
        return false;
    }
    ++count_;
    return true;
}

std::size_t PiecesAhead::take() {
    if (count_ == 0 || isForked()) {
        return 0;
    }
    aiocb& piece = pieces_[first_++ % most];
    --count_;
    waitFor(piece);
    const ssize_t got = FileIO::systemCalls().endRead(&piece);
    return got < 0 || static_cast<std::size_t>(got) != piece.aio_nbytes ? 0 : piece.aio_nbytes;
}
