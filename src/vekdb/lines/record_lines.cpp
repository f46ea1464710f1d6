#include "vekdb/lines/record_lines.h"

#include <cstring>

#include <vekdb/host/text_file.h>
#include <vekdb/host/text_util.h>
#include "host/text_in_pieces.h"
#include "vekdb/record/line_store.h"
#include "vekdb/record/record_access.h"

namespace {

constexpr std::uint32_t referenceBatch = 4096;

std::string_view withoutLast(std::string_view line, char last) {
    if (!line.empty() && line.back() == last) line.remove_suffix(1);
    return line;
}

void storeStrings(const FieldUnescaper& found, dbrecord& record) {
    RecordAccess::drop(record);
    for (unsigned i = 0; i < found.count(); ++i) {
        RecordAccess::append(record, found.value(i));
    }
}

}  // namespace

std::string_view FileLines::nextLine() {
    const std::string_view line = file_.line(file_.currentLine);
    if (file_.currentLine != 0xFFFFFFFF) ++file_.currentLine;
    return line;
}

LineScan FileLines::read(dbrecord& record) {
    const std::string_view line = nextLine();
    if (isEssentiallyEmpty(line)) {
        RecordAccess::drop(record);
        return {};
    }
    if (values_.size() <= line.size()) values_.resize(line.size() + 1);
    const LineScan found = scanner_.scan(line, values_.data());
    storeStrings(scanner_, record);
    RecordAccess::markRead(record);
    return found;
}

TextLines::TextLines(TextFile& file, Mark mark)
    : arrival_(TextInPieces::arrival(file)), marks_(mark == Mark::asRead) {
    size_ = arrival_ ? arrival_->text()->size() : file.textSize();
    const std::size_t offset = file.lineOffset(file.currentLine);
    store_ = new LineStore(file.takeText());
    begin_ = at_ = store_->text() + offset;
    end_ = arrival_ ? at_ : store_->text() + size_;
}

TextLines::~TextLines() {
    arrival_.reset();
    store_->release(spareReferences_ + 1);
}

// References are counted many at a time, before they are needed.
void TextLines::adopt(LineSlices* slices, unsigned values, dbrecord& record) {
    if (spareReferences_ == 0) {
        store_->addReferences(referenceBatch);
        spareReferences_ = referenceBatch;
    }
    --spareReferences_;
    RecordAccess::adopt(record, slices, static_cast<unsigned short>(values));
}

void TextLines::noteRead(dbrecord& record) {
    hasRead_ = true;
    if (marks_) RecordAccess::markRead(record);
}

void TextLines::awaitMore() {
    const auto have = static_cast<std::size_t>(end_ - store_->text());
    const std::size_t now = have < size_ ? arrival_->waitBeyond(have) : size_;
    end_ = store_->text() + now;
    if (now == size_) arrival_.reset();
}

void TextLines::awaitAll() {
    while (arrival_) awaitMore();
}

std::size_t TextLines::expectRest(unsigned values) {
    if (read_ == 0) return 0;
    const auto done = static_cast<std::size_t>(at_ - begin_);
    const auto left = static_cast<std::size_t>(store_->text() + size_ - at_);
    const std::size_t lines = left / done * read_ + left % done * read_ / done;
    store_->expect(lines * LineSlices::bytesFor(values));
    return lines;
}

// Slices that another record reads, too, stay.
void TextLines::takeBack(dbrecord& record) {
    LineSlices* slices = RecordAccess::leaveSlices(record);
    if (slices == nullptr) return;
    store_->takeBack(slices);
    ++spareReferences_;
}

// Bytes before the next line feed, or all.
std::size_t TextLines::lineLength() {
    for (std::size_t looked = 0;;) {
        const auto left = static_cast<std::size_t>(end_ - at_);
        const void* end = std::memchr(at_ + looked, '\n', left - looked);
        if (end != nullptr) return static_cast<std::size_t>(static_cast<const char*>(end) - at_);
        if (!arrival_) return left;
        looked = left;
        awaitMore();
    }
}

std::string_view TextLines::nextLine() {
    const std::string_view line(at_, lineLength());
    at_ += line.size();
    if (at_ != end_) ++at_;
    return withoutLast(line, '\r');
}

LineScan TextLines::read(dbrecord& record) {
    while (arrival_ && end_ - at_ < PlainLine::mostLookedAt) awaitMore();
    if (at_ != end_) ++read_;
    if (quoted_.recognise(at_, end_)) return cutUp(record);
    const std::string_view whole = nextLine();
    const std::string_view line = whole.substr(0, whole.find('\0'));
    hasCut_ = hasCut_ || line.size() != whole.size();
    return moveTogether(line, record);
}

LineScan TextLines::cutUp(dbrecord& record) {
    const auto offset = static_cast<std::uint64_t>(at_ - store_->text());
    LineSlices* slices =
        store_->openSlices(quoted_.mostValues(), offset + 1, LineSlices::quotedGap);
    const unsigned count = quoted_.cutUp(at_, slices->next());
    store_->closeSlices(slices, count);
    at_ += quoted_.fullSize();
    adopt(slices, count, record);
    noteRead(record);
    return {count, count};
}

LineScan TextLines::moveTogether(std::string_view line, dbrecord& record) {
    if (isEssentiallyEmpty(line)) {
        RecordAccess::drop(record);
        return {};
    }
    char* const first = store_->text() + (line.data() - store_->text());
    const LineScan found = scanner_.scan(line, first);
    const unsigned count = scanner_.count();
    if (count > 0 && scanner_.next(count - 1) <= LineSlices::farthest) {
        adoptMoved(first, record);
    } else {
        storeStrings(scanner_, record);
    }
    noteRead(record);
    return found;
}

void TextLines::adoptMoved(const char* first, dbrecord& record) {
    const unsigned count = scanner_.count();
    const auto offset = static_cast<std::uint64_t>(first - store_->text());
    LineSlices* slices = store_->addSlices(count, offset, 1);
    for (unsigned i = 0; i < count; ++i) {
        slices->next()[i] = static_cast<std::uint16_t>(scanner_.next(i));
    }
    adopt(slices, count, record);
}
