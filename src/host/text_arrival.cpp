#include "host/text_arrival.h"

#include <vekdb/host/os.h>
#include "host/posix/file_io.h"

#include <algorithm>
#include <cerrno>

// Only opening what is then read does no harm: a FIFO's writer takes notice of each reader.
Quor::Ptr<TextArrival> TextArrival::begin(const char* path) {
    if (FileIO::regularSize(path) < Terms::leastBytes) {
        return nullptr;
    }
    return beginOwn(FileIO::openToRead(path));
}

Quor::Ptr<TextArrival> TextArrival::begin(int file) {
    if (FileIO::regularSize(file) < Terms::leastBytes) {
        return nullptr;
    }
    return beginOwn(FileIO::systemCalls().duplicate(file));
}

Quor::Ptr<TextArrival> TextArrival::beginOwn(int opened) {
    FileIO::Descriptor file(opened);
    const std::size_t size = file.get() < 0 ? 0 : FileIO::regularSize(file.get());
    if (size < Terms::leastBytes || size > FileIO::memorySize()) {
        return nullptr;
    }
    const Quor::Ptr<TextArrival> arrival(new TextArrival(file.get(), size));
    file.release();
    if (OS()->readsAhead() && !arrival->askAhead()) {
        return nullptr;
    }
    return arrival;
}

TextArrival::TextArrival(int file, std::size_t size)
    : file_(file), stamp_(FileStamp::of(file)), text_(TextBlock::create(size)) {}

TextArrival::~TextArrival() {
    ahead_.reset();
    FileIO::systemCalls().close(file_);
}

bool TextArrival::askAhead() {
    if (PiecesAhead::isForked()) {
        return false;
    }
    ahead_ = std::make_unique<PiecesAhead>(file_);
    return askForPieces();
}

bool TextArrival::askForPieces() {
    while (askedFor_ < text_->size() && !ahead_->isFull()) {
        const std::size_t size = std::min(text_->size() - askedFor_, Terms::pieceAhead);
        if (!ahead_->ask(text_->data() + askedFor_, size, askedFor_)) {
            return false;
        }
        askedFor_ += size;
    }
    return true;
}

std::size_t TextArrival::waitBeyond(std::size_t have) {
    while (have_ <= have) {
        const std::size_t now = have_ + (ahead_ ? takePiece() : readPiece());
        if (now == text_->size() && !(FileStamp::of(file_) == stamp_)) {
            throw Broken();
        }
        have_ = now;
    }
    return have_;
}

std::size_t TextArrival::readPiece() {
    const std::size_t size = std::min(text_->size() - have_, Terms::piece);
    ssize_t got;
    do {
        got = FileIO::systemCalls().readAt(file_, text_->data() + have_, size,
                                           static_cast<off_t>(have_));
    } while (got < 0 && errno == EINTR);
    if (got <= 0) {
        throw Broken();
    }
    return static_cast<std::size_t>(got);
}

std::size_t TextArrival::takePiece() {
    const std::size_t got = ahead_->take();
    if (got == 0 || !askForPieces()) {
        throw Broken();
    }
    return got;
}
