#include "formats/input/input.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <utility>

#include "formats/failure.h"
#include "formats/input/limits.h"
#include "formats/input/progress.h"
#include "formats/input/read_errors.h"

namespace vek::formats {

namespace {

constexpr std::size_t firstChunk = 1 << 16;
constexpr std::size_t readAtOnce = 1 << 24;
constexpr std::uint64_t mostOfDevice = 64 << 20;

OpenFile openInput(const std::string& path) {
    return path == "-" ? OpenFile::ofStandardInput() : OpenFile::at(path.c_str());
}

}  // namespace

Input::Input(const std::string& path, const Opening& opening)
    : name_(path == "-" ? standardInput : path),
      limits_(opening.limits),
      terms_(*opening.terms),
      watcher_(opening.watcher),
      text_(TextBlock::create(0)),
      isStandardInput_(path == "-") {
    open(openInput(path));
}

Input::Input(const std::string& name, int descriptor, const Opening& opening)
    : name_(name),
      limits_(opening.limits),
      terms_(*opening.terms),
      watcher_(opening.watcher),
      text_(TextBlock::create(0)) {
    open(OpenFile::of(descriptor));
}

Input::Input(const std::string& name, std::string_view text, const Opening& opening)
    : name_(name),
      limits_(opening.limits),
      terms_(*opening.terms),
      watcher_(opening.watcher),
      text_(TextBlock::create(text.size())),
      size_(text.size()),
      bytesRead_(text.size()),
      isWhole_(true) {
    requireBytes(size_);
    if (!text.empty()) std::memcpy(text_->data(), text.data(), text.size());
}

void Input::requireBytes(std::size_t bytes) const {
    formats::requireBytes(name_, bytes, limits_, terms_);
}

void Input::open(OpenFile file) {
    using Kind = OpenFile::Kind;
    if (file.error() != 0) refuseReading(name_, file.error());
    Kind kind = Kind::stream;
    std::uint64_t size = 0;
    if (const int error = file.look(kind, size)) refuseReading(name_, error);
    if (kind == Kind::folder) refuseReading(name_, EISDIR);
    file_ = std::move(file);
    // Another's descriptor may stand behind the beginning; then it is read on from there.
    isRegular_ = kind == Kind::regular && !isStandardInput_ && file_.place() == 0;
    if (isRegular_) expected_ = static_cast<std::size_t>(size);
    const std::uint64_t memory = OpenFile::memoryOfMachine();
    if (expected_ > memory) refuseReading(name_, EFBIG);
    requireBytes(expected_);
    // A device gives what somebody types, or it has no end.
    most_ = kind == Kind::device ? std::min(memory / 2, mostOfDevice) : memory / 2;
    readUpTo(isRegular_ ? headSize : SIZE_MAX);
    bytesRead_ = isRegular_ ? expected_ : size_;
}

// A file that begins with such a gap is no text by its first line.
void Input::requireWithoutGap() const {
    if (!isRegular_ || expected_ == 0) return;
    const std::uint64_t gap = file_.beginOfGap(expected_);
    if (gap == expected_ || gap == 0) return;
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
    Progress progress(watcher_, "reading " + name_, expected_);
    while (!isWhole_ && size_ < most) {
        progress.reach(size_);
        if (size_ == text_->size()) makeRoom(most);
        const std::size_t got = readMore();
        isWhole_ = got == 0;
        size_ += got;
        requireBytes(size_);
        requireWithinMost();
    }
}

// The library's loader moves the place in a file that can be read again.
std::size_t Input::readMore() {
    char* to = text_->data() + size_;
    const std::size_t room = std::min(text_->size() - size_, readAtOnce);
    std::size_t got = 0;
    const int error = isRegular_ ? file_.readAt(size_, to, room, got) : file_.read(to, room, got);
    if (error != 0) refuseReading(name_, error);
    return got;
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
    requireBytes(text->size());
    size_ = text->size();
    expected_ = size_;
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
    OpenFile copy = OpenFile::holding(got());
    if (copy.error() != 0) refuseReading(name_, copy.error());
    file_ = std::move(copy);
    isRegular_ = true;
}

int Input::loaderDescriptor() {
    requireWithoutGap();
    if (!isRegular_) spool();
    return file_.descriptor();
}

std::uint64_t Input::size() const {
    OpenFile::Kind kind = {};
    std::uint64_t size = 0;
    if (const int error = file_.look(kind, size)) refuseReading(name_, error);
    return size;
}

std::size_t Input::readFrom(std::uint64_t from, char* to, std::size_t size) const {
    std::size_t done = 0;
    while (done < size) {
        std::size_t got = 0;
        if (const int error = file_.readAt(from + done, to + done, size - done, got)) {
            refuseReading(name_, error);
        }
        if (got == 0) break;
        done += got;
    }
    return done;
}

void Input::readAgain(std::uint64_t from, char* to, std::size_t size) const {
    if (readFrom(from, to, size) == size) return;
    throw Failure{unwritable, name_ +
                                  ": was cut off by another program since it was read, so nothing "
                                  "is written; look at it, and give the command again"};
}

std::string_view Input::textAgain() const {
    if (!again_) {
        const Quor::Ptr<TextBlock> text = TextBlock::create(static_cast<std::size_t>(size()));
        readAgain(0, text->data(), text->size());
        again_ = text;
    }
    return {again_->data(), again_->size()};
}

}  // namespace vek::formats
