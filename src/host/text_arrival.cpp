#include "host/text_arrival.h"

#include "host/file_io.h"

#include <algorithm>
#include <cerrno>

#include <sys/stat.h>
#include <unistd.h>

namespace {

// Before this is known every file is read in the plain way.
const pid_t ownProcess = ::getpid();

// What reads ahead are threads of the process. A forked child has none of them, but the system's
// library counts on them as before: it would wait for ever.
bool isForked() {
    return ::getpid() != ownProcess;
}

// 0 for what is no regular file.
std::size_t sizeIn(const struct stat& status) {
    return S_ISREG(status.st_mode) ? static_cast<std::size_t>(status.st_size) : 0;
}

std::size_t sizeOf(int file) {
    struct stat status;
    return ::fstat(file, &status) == 0 ? sizeIn(status) : 0;
}

// Only opening what is then read does no harm: a FIFO's writer takes notice of each reader.
std::size_t sizeOf(const char* path) {
    struct stat status;
    return ::stat(path, &status) == 0 ? sizeIn(status) : 0;
}

void waitFor(const aiocb& piece) {
    const aiocb* const pieces[] = {&piece};
    while (::aio_error(&piece) == EINPROGRESS) {
        ::aio_suspend(pieces, 1, nullptr);
    }
}

}  // namespace

Quor::Ptr<TextArrival> TextArrival::begin(const char* path) {
    if (isForked() || sizeOf(path) < Terms::leastBytes) {
        return nullptr;
    }
    FileIO::Descriptor file(FileIO::openToRead(path));
    const std::size_t size = file.get() < 0 ? 0 : sizeOf(file.get());
    if (size < Terms::leastBytes || size > FileIO::memorySize()) {
        return nullptr;
    }
    const Quor::Ptr<TextArrival> arrival(new TextArrival(file.get(), size));
    file.release();
    while (arrival->count_ < kMostAsked && !arrival->isAllAskedFor()) {
        if (!arrival->askForPiece()) {
            return nullptr;
        }
    }
    return arrival;
}

TextArrival::TextArrival(int file, std::size_t size)
    : file_(file), text_(TextBlock::create(size)) {
    FileIO::expectFilling(*text_);
}

TextArrival::~TextArrival() {
    if (!isForked()) {
        giveUpRest();
    }
    FileIO::systemCalls().close(file_);
}

void TextArrival::giveUpRest() {
    ::aio_cancel(file_, nullptr);
    for (; count_ > 0; --count_, ++first_) {
        aiocb& piece = pieces_[first_ % kMostAsked];
        waitFor(piece);
        ::aio_return(&piece);
    }
}

std::size_t TextArrival::waitBeyond(std::size_t have) {
    while (have_ <= have) {
        takePiece();
    }
    return have_;
}

bool TextArrival::askForPiece() {
    aiocb& piece = pieces_[(first_ + count_) % kMostAsked];
    piece = {};
    piece.aio_fildes = file_;
    piece.aio_offset = static_cast<off_t>(askedFor_);
    piece.aio_buf = text_->data() + askedFor_;
    piece.aio_nbytes = std::min(text_->size() - askedFor_, Terms::piece);
    piece.aio_sigevent.sigev_notify = SIGEV_NONE;
    if (FileIO::systemCalls().beginRead(&piece) != 0) {
        return false;
    }
    askedFor_ += piece.aio_nbytes;
    ++count_;
    return true;
}

void TextArrival::takePiece() {
    if (count_ == 0 || isForked()) {
        throw Broken();
    }
    aiocb& piece = pieces_[first_++ % kMostAsked];
    --count_;
    waitFor(piece);
    const ssize_t got = FileIO::systemCalls().endRead(&piece);
    if (got < 0 || static_cast<std::size_t>(got) != piece.aio_nbytes) {
        throw Broken();
    }
    const std::size_t have = have_ + piece.aio_nbytes;
    if (isAllAskedFor() ? have == text_->size() && !isAsLargeAsItSaid() : !askForPiece()) {
        throw Broken();
    }
    have_ = have;
}

bool TextArrival::isAsLargeAsItSaid() const {
    return sizeOf(file_) == text_->size();
}
