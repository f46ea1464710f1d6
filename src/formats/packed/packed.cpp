#include "formats/packed/packed.h"

#include <zlib.h>

#include <algorithm>
#include <cstdint>

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

// A place in what is packed, which may be several texts behind one another.
class PackedPlace {
public:
    PackedPlace(std::string_view text, const std::string& name) : text_(text), name_(name) {
        if (::inflateInit2(&stream_, withGzip) != Z_OK) refuse("no memory to unpack it");
    }
    /// The same place, from which one goes on without the other.
    PackedPlace(const PackedPlace& other)
        : text_(other.text_), name_(other.name_), at_(other.at_), isEnded_(other.isEnded_) {
        if (::inflateCopy(&stream_, const_cast<z_stream*>(&other.stream_)) != Z_OK) {
            refuse("no memory to unpack it");
        }
    }
    PackedPlace& operator=(const PackedPlace&) = delete;
    ~PackedPlace() { ::inflateEnd(&stream_); }

    bool isEnded() const { return isEnded_; }

    /// Unpacks at most so many bytes; how many they were.
    std::size_t read(char* to, std::size_t size) {
        stream_.next_in = bytes(text_.data() + at_);
        stream_.avail_in = piece(text_.size() - at_);
        stream_.next_out = bytes(to);
        stream_.avail_out = piece(size);
        const uInt in = stream_.avail_in;
        const uInt out = stream_.avail_out;
        const int result = ::inflate(&stream_, Z_NO_FLUSH);
        at_ += in - stream_.avail_in;
        if (result == Z_STREAM_END)
            endText();
        else if (result != Z_OK)
            refuse(result == Z_BUF_ERROR ? "the file ends before what was packed does"
                                         : "what cannot be unpacked");
        return out - stream_.avail_out;
    }

private:
    [[noreturn]] void refuse(const std::string& found) const {
        throw Failure{unreadable, name_ + ": " + found + ", expected a whole file of gzip"};
    }

    void endText() {
        isEnded_ = !isPacked(text_.substr(at_)) || ::inflateReset(&stream_) != Z_OK;
        if (isEnded_ && at_ != text_.size()) refuse("bytes behind the end of what was packed");
    }

    std::string_view text_;
    const std::string& name_;
    z_stream stream_ = {};
    std::size_t at_ = 0;
    bool isEnded_ = false;
};

// Keeps what is unpacked. Small files that unpack to very much are refused before there is memory
// for it.
class Unpacking {
public:
    Unpacking(std::string_view text, const std::string& name, const Opening& opening)
        : place_(text, name),
          name_(name),
          terms_(*opening.terms),
          packed_(text.size()),
          most_(mostUnpacked(text.size(), opening.limits)) {}

    Quor::Ptr<TextBlock> run() {
        while (!place_.isEnded()) {
            if (size_ == block_->size()) makeRoom();
            size_ += place_.read(block_->data() + size_, block_->size() - size_);
        }
        requireWithinMost(size_);
        block_->resize(size_);
        return block_;
    }

private:
    // As much as an honest log unpacks to comes as it is; of more the size is found out first.
    void makeRoom() {
        requireWithinMost(size_);
        const std::size_t usual = usualOfAnyText + usualOfEachByte * packed_;
        const std::size_t wanted = std::max(2 * size_, 4 * packed_ + 1024);
        const std::size_t oneMore = most_ + (most_ < SIZE_MAX ? 1 : 0);
        block_->resize(size_ < usual ? std::min({wanted, usual, oneMore})
                                     : size_ + sizeOfRest() + 1);
    }

    std::size_t sizeOfRest() {
        PackedPlace place(place_);
        char room[1 << 16];
        std::size_t size = 0;
        while (!place.isEnded()) {
            size += place.read(room, sizeof room);
            requireWithinMost(size_ + size);
        }
        return size;
    }

    void requireWithinMost(std::size_t size) const {
        if (size <= most_) return;
        throw Failure{unreadable,
                      concat(name_, ": unpacks to more than ", std::to_string(most_),
                             " bytes, expected no more; ", terms_.maxBytes, " allows more")};
    }

    static constexpr std::size_t usualOfAnyText = std::size_t{16} << 20;
    static constexpr std::size_t usualOfEachByte = 16;

    PackedPlace place_;
    const std::string& name_;
    const Terms& terms_;
    std::size_t packed_;
    std::size_t most_;
    Quor::Ptr<TextBlock> block_ = TextBlock::create(0);
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

class Packer::Stream {
public:
    Stream() {
        if (::deflateInit2(&stream_, Z_DEFAULT_COMPRESSION, Z_DEFLATED, withGzip, 8,
                           Z_DEFAULT_STRATEGY) != Z_OK) {
            throw Failure{unwritable, "no memory to pack a text by gzip"};
        }
    }
    ~Stream() { ::deflateEnd(&stream_); }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    void add(std::string_view text, std::string& to) {
        while (!text.empty()) step(text, Z_NO_FLUSH, to);
    }

    void end(std::string& to) {
        std::string_view nothing;
        while (step(nothing, Z_FINISH, to) != Z_STREAM_END) {
        }
    }

private:
    // Packs some of the text and takes it off its front.
    int step(std::string_view& text, int flush, std::string& to) {
        char room[1 << 16];
        stream_.next_in = bytes(text.data());
        stream_.avail_in = piece(text.size());
        stream_.next_out = bytes(room);
        stream_.avail_out = sizeof room;
        const uInt in = stream_.avail_in;
        const int result = ::deflate(&stream_, flush);
        text.remove_prefix(in - stream_.avail_in);
        to.append(room, sizeof room - stream_.avail_out);
        return result;
    }

    z_stream stream_ = {};
};

Packer::Packer() : stream_(std::make_unique<Stream>()) {}

Packer::~Packer() = default;

void Packer::add(std::string_view text, std::string& to) {
    stream_->add(text, to);
}

void Packer::end(std::string& to) {
    stream_->end(to);
}

std::string packed(std::string_view text) {
    Packer packer;
    std::string out;
    packer.add(text, out);
    packer.end(out);
    return out;
}

}  // namespace vek::formats
