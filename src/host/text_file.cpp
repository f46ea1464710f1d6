#include <vekdb/host/text_file.h>

#include <vekdb/host/exceptions.h>
#include <vekdb/host/file_replacement.h>
#include <vekdb/host/text_util.h>
#include "host/disk_flush.h"
#include "host/posix/file_io.h"
#include "host/text_arrival.h"
#include "host/text_departure.h"

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <cstring>
#include <functional>
#include <string>
#include <utility>

bool DiskFlush::isOn = true;

namespace {

constexpr std::size_t kFirstRoom = 256;
constexpr std::size_t kFirstLines = 16;
constexpr std::size_t kDeparture = std::size_t{512} << 10;
constexpr std::size_t kChunk = std::size_t{256} << 10;
constexpr unsigned kMostLines = 0xFFFFFFFFu;

std::string_view withoutLast(std::string_view text, char last) {
    return !text.empty() && text.back() == last ? text.substr(0, text.size() - 1) : text;
}

std::string_view upToNul(std::string_view text) {
    return text.substr(0, text.find('\0'));
}

std::string_view endOfLine(TextFile::eEOLStyle style) {
    switch (style) {
        case TextFile::eCRLF:
            return "\r\n";
        case TextFile::eCR:
            return "\r";
        default:
            return "\n";
    }
}

// Collects small pieces so that they reach the file in few calls.
class ChunkedOutput {
public:
    explicit ChunkedOutput(FileReplacement& file) : file_(file) { chunk_.reserve(kChunk); }

    bool put(std::string_view piece) {
        if (chunk_.size() + piece.size() > kChunk && !flush()) {
            return false;
        }
        if (piece.size() > kChunk) {
            return file_.write(piece);
        }
        chunk_.append(piece);
        return true;
    }

    bool flush() {
        const bool written = file_.write(chunk_);
        chunk_.clear();
        return written;
    }

private:
    FileReplacement& file_;
    std::string chunk_;
};

}  // namespace

TextFile::TextFile() = default;
TextFile::~TextFile() = default;

bool TextFile::load(const LightweightString<wchar_t>& path, char separator, bool) {
    clear();
    LightweightString<char> file;
    std::size_t size = 0;
    const int error =
        pathToUTF8(path, file) ? FileIO::readWhole(file.c_str(), block_, size) : EINVAL;
    return keepLoaded(error, size, separator);
}

bool TextFile::load(int descriptor, char separator) {
    clear();
    std::size_t size = 0;
    const int error = FileIO::readWhole(descriptor, block_, size);
    return keepLoaded(error, size, separator);
}

bool TextFile::keepLoaded(int error, std::size_t size, char separator) {
    error_ = error;
    if (error != 0) {
        return false;
    }
    textSize_ = loadedSize_ = size;
    separator_ = separator;
    return true;
}

bool TextFile::save(const LightweightString<wchar_t>& path, eEOLStyle style) const {
    LightweightString<char> file;
    FileReplacement target(DiskFlush::isOn);
    if (!pathToUTF8(path, file) || !target.find(file.c_str()) || !target.open()) {
        return false;
    }
    const std::string_view end = endOfLine(style);
    // Appended text lies in the block just as the file is to hold it.
    if (loadedSize_ == 0 && end == "\n") {
        const char* text = block_ ? block_->data() : "";
        return target.write({text, textSize_}) && target.commit();
    }
    ChunkedOutput output(target);
    return writeLines(output, end) && output.flush() && target.commit();
}

// Lines that were appended lie in the block just as the file is to hold them.
void TextFile::sendLines() {
    if (textSize_ == 0) {
        return;
    }
    departure_->send(block_->data(), textSize_);
    block_->data()[0] = '\0';
    starts_.clear();
    textSize_ = loadedSize_ = scanned_ = 0;
}

LightweightString<char> TextFile::operator[](unsigned i) const {
    return LightweightString<char>(line(i));
}

std::string_view TextFile::line(unsigned i) const {
    if (!scanTo(i)) {
        return "";
    }
    const std::size_t start = starts_[i];
    const bool isLastFound = starts_.size() - i == 1;
    const std::size_t end = isLastFound ? scanned_ : starts_[std::size_t{i} + 1];
    const std::string_view text(block_->data() + start, end - start);
    if (start >= loadedSize_) {
        return upToNul(withoutLast(text, '\n'));
    }
    return upToNul(withoutLast(withoutLast(text, separator_), '\r'));
}

unsigned TextFile::size() const {
    while (scanLine()) {
    }
    return static_cast<unsigned>(std::min<std::size_t>(starts_.size(), kMostLines));
}

void TextFile::appendLine(const LightweightString<char>& text) {
    appendLine(text.view());
}

void TextFile::appendLine(std::string_view text) {
    const std::string_view line = upToNul(text);
    // The text may lie in the block, which moves as it grows.
    const bool isOwn = holds(line.data());
    const std::size_t offset = isOwn ? static_cast<std::size_t>(line.data() - block_->data()) : 0;
    char* to = beginLine(line.size());
    const char* from = isOwn ? block_->data() + offset : line.data();
    std::copy_n(from, line.size(), to);
    endLine(line.size());
}

// All that may fail comes first: what is written in place destroys the NUL byte
// behind the text, which endLine then surely puts back.
char* TextFile::beginLine(std::size_t atMost) {
    completeLoadedText();
    reserve(atMost);
    if (starts_.size() == starts_.capacity()) {
        starts_.reserve(std::max(kFirstLines, starts_.size() * 2));
    }
    return block_->data() + textSize_;
}

void TextFile::endLine(std::size_t written) {
    assert(block_ && block_->size() - textSize_ > written);
    starts_.push_back(textSize_);
    textSize_ += written;
    char* end = block_->data() + textSize_;
    end[0] = '\n';
    end[1] = '\0';
    scanned_ = ++textSize_;
    // Not before the next line is made, which may be made of one of these.
    if (departure_ && departure_->goesInPieces() && textSize_ >= kDeparture) {
        sendLines();
    }
}

std::size_t TextFile::lineOffset(unsigned i) const {
    return scanTo(i) ? starts_[i] : textSize_;
}

Quor::Ptr<TextBlock> TextFile::takeText() {
    if (!block_) {
        block_ = TextBlock::create(0);
    }
    Quor::Ptr<TextBlock> text = std::move(block_);
    clear();
    return text;
}

void TextFile::clear() {
    arrival_.reset();
    departure_.reset();
    arrived_ = 0;
    error_ = 0;
    block_.reset();
    textSize_ = loadedSize_ = scanned_ = 0;
    starts_.clear();
    separator_ = '\n';
    currentLine = 0;
}

bool TextFile::holds(const char* place) const {
    const std::less<const char*> before;
    return block_ && !before(place, block_->data()) && before(place, block_->data() + textSize_);
}

// Finds one more line; false at the end of the text.
bool TextFile::scanLine() const {
    if (scanned_ >= textSize_) {
        return false;
    }
    const std::size_t end = endOfScannedLine();
    starts_.push_back(scanned_);
    scanned_ = end;
    return true;
}

// Behind the separator of the next line to be found. Where that has not come yet, waits for it.
std::size_t TextFile::endOfScannedLine() const {
    const char* text = block_->data();
    for (std::size_t from = scanned_;;) {
        const std::size_t there = arrival_ ? arrived_ : textSize_;
        if (const void* end = std::memchr(text + from, separator_, there - from)) {
            return static_cast<std::size_t>(static_cast<const char*>(end) - text) + 1;
        }
        if (there == textSize_) {
            return textSize_;
        }
        from = there;
        arrived_ = arrival_->waitBeyond(there);
    }
}

bool TextFile::scanTo(std::size_t i) const {
    while (starts_.size() <= i) {
        if (!scanLine()) {
            return false;
        }
    }
    return true;
}

// Lines that are appended get the next numbers, so the loaded ones are counted
// first, and the last of those gets the end of line that it may lack.
void TextFile::completeLoadedText() {
    if (scanned_ < textSize_) {
        size();
    }
    const bool isLoaded = textSize_ > 0 && textSize_ == loadedSize_;
    if (isLoaded && block_->data()[textSize_ - 1] != separator_) {
        reserve(1);
        block_->data()[textSize_] = separator_;
        block_->data()[++textSize_] = '\0';
        loadedSize_ = scanned_ = textSize_;
    }
}

// Room for so many bytes more and an end of line; the block itself keeps room for
// a NUL byte behind its end. Who shares the block keeps it as it is.
void TextFile::reserve(std::size_t more) {
    if (more > static_cast<std::size_t>(-1) / 4 - textSize_) {
        throw Quor::Exception::BadAlloc();
    }
    const std::size_t needed = textSize_ + more + 1;
    if (!block_) {
        block_ = TextBlock::create(std::max(needed, kFirstRoom));
        block_->data()[0] = '\0';
    } else if (block_->size() < needed) {
        grow(std::max(needed, block_->size() * 2));
    }
}

void TextFile::grow(std::size_t size) {
    if (block_->isUnshared()) {
        block_->resize(size);
        FileIO::expectFilling(*block_);
        return;
    }
    const Quor::Ptr<TextBlock> larger = TextBlock::create(size);
    std::memcpy(larger->data(), block_->data(), textSize_ + 1);
    block_ = larger;
}

template <class Sink>
bool TextFile::writeLines(Sink& to, std::string_view endOfLine) const {
    const unsigned count = size();
    for (unsigned i = 0; i < count; ++i) {
        if (!to.put(line(i)) || !to.put(endOfLine)) {
            return false;
        }
    }
    return true;
}
