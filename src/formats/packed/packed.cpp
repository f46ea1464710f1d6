#include "formats/packed/packed.h"

#include <zlib.h>

#include <algorithm>

#include "formats/failure.h"

namespace vek::formats {

namespace {

constexpr int withGzip = 16 + MAX_WBITS;
constexpr std::size_t mostAtOnce = std::size_t{1} << 30;

uInt piece(std::size_t size) {
    return static_cast<uInt>(std::min(size, mostAtOnce));
}

Bytef* bytes(const char* at) {
    return reinterpret_cast<Bytef*>(const_cast<char*>(at));  // zlib changes nothing of it
}

class Unpacking {
public:
    Unpacking(std::string_view text, const std::string& name, const Opening& opening)
        : text_(text),
          name_(name),
          terms_(*opening.terms),
          most_(mostUnpacked(text.size(), opening.limits)) {
        isOpen_ = ::inflateInit2(&stream_, withGzip) == Z_OK;
    }
    ~Unpacking() {
        if (isOpen_) ::inflateEnd(&stream_);
    }
    Unpacking(const Unpacking&) = delete;
    Unpacking& operator=(const Unpacking&) = delete;

    Quor::Ptr<TextBlock> run() {
        if (!isOpen_) refuse("no memory to unpack it");
        int result = Z_OK;
        while (result != Z_STREAM_END) {
            result = step();
            const bool isAnother = result == Z_STREAM_END && isPacked(text_.substr(at_));
            if (isAnother && ::inflateReset(&stream_) == Z_OK) result = Z_OK;
        }
        if (at_ != text_.size()) refuse("bytes behind the end of what was packed");
        block_->resize(size_);
        return block_;
    }

private:
    [[noreturn]] void refuse(const std::string& found) const {
        throw Failure{unreadable, name_ + ": " + found + ", expected a whole file of gzip"};
    }

    int step() {
        if (size_ == block_->size()) makeRoom();
        stream_.next_in = bytes(text_.data() + at_);
        stream_.avail_in = piece(text_.size() - at_);
        stream_.next_out = bytes(block_->data() + size_);
        stream_.avail_out = piece(block_->size() - size_);
        const uInt in = stream_.avail_in;
        const uInt out = stream_.avail_out;
        const int result = ::inflate(&stream_, Z_NO_FLUSH);
        at_ += in - stream_.avail_in;
        size_ += out - stream_.avail_out;
        if (result != Z_OK && result != Z_STREAM_END) {
            refuse(result == Z_BUF_ERROR ? "the file ends before what was packed does"
                                         : "what cannot be unpacked");
        }
        return result;
    }

    // What fits the bound is at once less than a byte more than is kept.
    void makeRoom() {
        if (size_ > most_) {
            throw Failure{unreadable,
                          concat(name_, ": unpacks to more than ", std::to_string(most_),
                                 " bytes, expected no more; ", terms_.maxBytes, " allows more")};
        }
        block_->resize(std::min(std::max(2 * size_, 4 * text_.size() + 1024), most_ + 1));
    }

    std::string_view text_;
    const std::string& name_;
    const Terms& terms_;
    std::size_t most_;
    z_stream stream_ = {};
    bool isOpen_ = false;
    Quor::Ptr<TextBlock> block_ = TextBlock::create(0);
    std::size_t at_ = 0;
    std::size_t size_ = 0;
};

}  // namespace

bool isPacked(std::string_view head) {
    return head.starts_with("\x1F\x8B\x08");
}

Quor::Ptr<TextBlock> unpacked(std::string_view text, const std::string& name,
                              const Opening& opening) {
    return Unpacking(text, name, opening).run();
}

std::string packed(std::string_view text) {
    z_stream stream = {};
    if (::deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, withGzip, 8,
                       Z_DEFAULT_STRATEGY) != Z_OK) {
        throw Failure{unwritable, "no memory to pack a text by gzip"};
    }
    std::string out;
    std::size_t at = 0;
    char room[1 << 16];
    int result = Z_OK;
    while (result != Z_STREAM_END) {
        stream.next_in = bytes(text.data() + at);
        stream.avail_in = piece(text.size() - at);
        const uInt in = stream.avail_in;
        stream.next_out = bytes(room);
        stream.avail_out = sizeof room;
        const bool isLast = text.size() - at <= mostAtOnce;
        result = ::deflate(&stream, isLast ? Z_FINISH : Z_NO_FLUSH);
        at += in - stream.avail_in;
        out.append(room, sizeof room - stream.avail_out);
    }
    ::deflateEnd(&stream);
    return out;
}

}  // namespace vek::formats
