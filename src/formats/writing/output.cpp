#include "formats/writing/output.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "formats/failure.h"
#include "formats/packed/packed.h"
#include "formats/text/encoding.h"
#include "formats/text/utf8.h"

namespace vek::formats {

namespace {

constexpr std::size_t copiedAtOnce = 1 << 18;
constexpr std::size_t handedOnAtOnce = 1 << 17;  // bytes that are not worth being copied first
constexpr std::size_t noLimit = std::numeric_limits<std::size_t>::max();

std::string_view characterAt(std::string_view text, std::size_t at) {
    std::size_t end = std::min(at + 1, text.size());
    while (end < text.size() && isContinuation(text[end])) ++end;
    return text.substr(at, end - at);
}

// In these every character has bytes of its own.
bool isOneToOne(std::string_view encoding) {
    return encoding.starts_with("UTF-16") || encoding == "WINDOWS-1252" || encoding == "MACINTOSH";
}

std::size_t firstDifference(std::string_view a, std::string_view b) {
    const std::size_t size = std::min(a.size(), b.size());
    std::size_t at = 0;
    while (at < size && a[at] == b[at]) ++at;
    while (at > 0 && at < a.size() && isContinuation(a[at])) --at;
    return at;
}

// Where several characters may be written as one, what is read again may be others: the first of
// them, or the end.
std::size_t firstNotBack(std::string_view text, std::string_view made,
                         const std::string& encoding) {
    if (isOneToOne(encoding)) return text.size();
    std::size_t badAt = 0;
    const Quor::Ptr<TextBlock> back = toUtf8(made, encoding, badAt);
    const std::string_view read =
        back ? std::string_view(back->data(), back->size()) : std::string_view();
    return read == text ? text.size() : firstDifference(text, read);
}

// Packs the pieces on their way, so that no more than one of them is held.
class PackingSink : public OutputSink {
public:
    explicit PackingSink(std::unique_ptr<OutputSink> sink) : sink_(std::move(sink)) {}

    void take(std::string_view piece) override {
        packer_.add(piece, packed_);
        if (packed_.size() >= sink_->pieceSize()) handOn();
    }

    std::vector<std::string> end() override {
        packer_.end(packed_);
        handOn();
        return sink_->end();
    }

    std::size_t pieceSize() const override { return sink_->pieceSize(); }

private:
    void handOn() {
        sink_->take(packed_);
        packed_.clear();
    }

    std::unique_ptr<OutputSink> sink_;
    Packer packer_;
    std::string packed_;
};

// To be asked when the first piece goes there: only then all is said of how it is written.
void packOnTheWay(std::unique_ptr<OutputSink>& sink) {
    if (dynamic_cast<PackingSink*>(sink.get()) != nullptr) return;
    sink = std::make_unique<PackingSink>(std::move(sink));
}

}  // namespace

Output::Output(std::string name, std::unique_ptr<OutputSink> sink)
    : name_(std::move(name)),
      sink_(std::move(sink)),
      pieceSize_(sink_ ? sink_->pieceSize() : noLimit),
      limit_{noLimit, 0} {}

Output::~Output() = default;

Output::Output(Output&&) noexcept = default;

void Output::limit(const OutputLimit& most, const Terms& terms) {
    limit_ = most;
    terms_ = &terms;
}

void Output::encode(const std::string& encoding, bool isPacked) {
    encoding_ = encoding;
    isPacked_ = isPacked;
    // What is put into another encoding is so as a whole.
    if (!encoding_.empty()) pieceSize_ = noLimit;
}

void Output::write(std::string_view text) {
    size_ += text.size();
    requireOutput(name_, size_, limit_, *terms_);
    if (text.size() >= handedOnAtOnce && pieceSize_ != noLimit) {
        if (!pending_.empty()) flush();
        if (isPacked_) packOnTheWay(sink_);
        return sink_->take(text);
    }
    pending_ += text;
    if (pending_.size() >= pieceSize_) flush();
}

void Output::line(std::string_view text) {
    write(text);
    write("\n");
}

void Output::copy(const Input& input, Range range) {
    if (copied_ != &input) reader_.emplace(input);
    copied_ = &input;
    while (range.begin < range.end) {
        const std::size_t size = std::min(copiedAtOnce, range.size());
        write(reader_->read({range.begin, range.begin + size}));
        range.begin += size;
    }
}

void Output::flush() {
    if (!sink_) return;
    if (isPacked_) packOnTheWay(sink_);
    sink_->take(pending_);
    pending_.clear();
}

void Output::encodePending() {
    if (!encoding_.empty()) {
        std::size_t badAt = 0;
        std::optional<std::string> made = fromUtf8(pending_, encoding_, badAt);
        const std::size_t place = made ? firstNotBack(pending_, *made, encoding_) : badAt;
        if (place != pending_.size()) {
            const auto at = pending_.begin() + static_cast<std::ptrdiff_t>(place);
            throw Failure{
                unwritable,
                concat(name_, ":", std::to_string(1 + std::count(pending_.begin(), at, '\n')), ": ",
                       inQuotes(characterAt(pending_, place)), ", expected characters that ",
                       encoding_, " has; write a copy in UTF-8 with ", terms_->saving)};
        }
        pending_ = std::move(*made);
    }
    if (isPacked_ && !sink_) pending_ = packed(pending_);
}

std::vector<std::string> Output::close() {
    encodePending();
    flush();
    return sink_ ? sink_->end() : std::vector<std::string>();
}

}  // namespace vek::formats
