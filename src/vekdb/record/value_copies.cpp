#include "vekdb/record/value_copies.h"

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

#include <vekdb/host/text_block.h>
#include "vekdb/record/line_store.h"
#include "vekdb/record/record_access.h"

namespace {

constexpr std::uint32_t countedAhead = 4096;
constexpr std::size_t largestBlock = std::size_t{8} << 20;
constexpr unsigned gap = 1;  // a NUL behind each value

std::size_t bytesTogether(const std::string_view* values, unsigned count) {
    std::size_t bytes = count;
    for (unsigned i = 0; i < count; ++i) bytes += values[i].size();
    return bytes;
}

// Most values are short: two steps that overlap cost less than a call.
template <class Word>
void copyEnds(char* to, const char* from, std::size_t n) {
    Word front;
    Word back;
    std::memcpy(&front, from, sizeof(Word));
    std::memcpy(&back, from + n - sizeof(Word), sizeof(Word));
    std::memcpy(to, &front, sizeof(Word));
    std::memcpy(to + n - sizeof(Word), &back, sizeof(Word));
}

void copyValue(char* to, std::string_view value) {
    const std::size_t n = value.size();
    if (n > 16) {
        std::memcpy(to, value.data(), n);
    } else if (n >= 8) {
        copyEnds<std::uint64_t>(to, value.data(), n);
    } else if (n >= 4) {
        copyEnds<std::uint32_t>(to, value.data(), n);
    } else {
        for (std::size_t i = 0; i < n; ++i) to[i] = value[i];
    }
}

// A short value is copied with bytes that stand behind it in the line, where there are so many, and
// that are written over by what follows: a copy of a fixed size is the quickest.
constexpr std::size_t copiedAtOnce = 32;

void copyFromLine(char* to, const char* from, std::size_t size, std::size_t left) {
    constexpr std::size_t few = 16;
    if (size <= few && left >= few)
        std::memcpy(to, from, few);
    else if (size <= copiedAtOnce && left >= copiedAtOnce)
        std::memcpy(to, from, copiedAtOnce);
    else
        std::memcpy(to, from, size);
}

void giveStrings(dbrecord& record, const std::string_view* values, unsigned count) {
    const std::vector<LightweightString<char>> strings(values, values + count);
    RecordAccess::drop(record);
    RecordAccess::widen(record, static_cast<unsigned short>(count));
    for (unsigned i = 0; i < count; ++i) {
        RecordAccess::place(record, i, strings[i]);
    }
}

}  // namespace

void ValueCopies::give(dbrecord& record, const std::string_view* values, unsigned count) {
    const std::size_t bytes = bytesTogether(values, count);
    if (count == 0) return RecordAccess::drop(record);
    if (bytes > LineSlices::farthest) return giveStrings(record, values, count);
    giveTogether(record, values, count, bytes);
}

void ValueCopies::giveTogether(dbrecord& record, const std::string_view* values, unsigned count,
                               std::size_t bytes) {
    if (static_cast<std::size_t>(end_ - at_) < bytes) open(bytes);
    const auto offset = static_cast<std::uint64_t>(at_ - lines_->text());
    LineSlices* slices = lines_->addSlices(count, offset, gap);
    std::uint16_t* const next = slices->next();
    char* to = at_;
    for (unsigned i = 0; i < count; ++i) {
        copyValue(to, values[i]);
        to += values[i].size();
        *to++ = '\0';
        next[i] = static_cast<std::uint16_t>(to - at_);
    }
    at_ = to;
    textBytes_ += bytes;
    sliceBytes_ += LineSlices::bytesFor(count) + alignof(LineSlices);
    adopt(slices, count, record);
}

bool ValueCopies::givePicked(dbrecord& record, const dbrecord& from, const unsigned* picked,
                             unsigned count) {
    const LineSlices* const slices = RecordAccess::slices(from);
    if (slices == nullptr) return false;
    const unsigned stored = RecordAccess::storedCount(from);
    const std::size_t size = slices->next()[stored - 1] - std::size_t{slices->gap()};
    const std::size_t most = size + count + copiedAtOnce;
    if (most > LineSlices::farthest) return false;
    if (static_cast<std::size_t>(end_ - at_) < most) open(most);
    pick(record, {slices->first(), size}, *slices, stored, picked, count);
    return true;
}

// Empty values at the end are none.
void ValueCopies::pick(dbrecord& record, std::string_view line, const LineSlices& slices,
                       unsigned stored, const unsigned* picked, unsigned count) {
    const std::uint16_t* const ends = slices.next();
    const std::size_t apart = slices.gap();
    LineSlices* const made =
        lines_->openSlices(count, static_cast<std::uint64_t>(at_ - lines_->text()), gap);
    char* to = at_;
    char* filledTo = at_;
    unsigned filled = 0;
    for (unsigned i = 0; i < count; ++i) {
        const unsigned value = picked[i];
        if (value < stored) {
            const std::size_t begin = value == 0 ? 0 : ends[value - 1];
            const std::size_t size = ends[value] - begin - apart;
            copyFromLine(to, line.data() + begin, size, line.size() - begin);
            to += size;
            if (size != 0) filled = i + 1;
        }
        *to++ = '\0';
        made->next()[i] = static_cast<std::uint16_t>(to - at_);
        if (filled == i + 1) filledTo = to;
    }
    if (filled == 0) return lines_->takeBack(made), RecordAccess::drop(record);
    lines_->closeSlices(made, filled);
    textBytes_ += static_cast<std::size_t>(filledTo - at_);
    sliceBytes_ += LineSlices::bytesFor(filled) + alignof(LineSlices);
    at_ = filledTo;
    adopt(made, filled, record);
}

// The records that stand on the block before keep it.
void ValueCopies::open(std::size_t bytes) {
    Quor::Ptr<TextBlock> block = TextBlock::create(std::max(bytes, nextBlock_));
    const std::size_t size = block->size();
    auto* lines = new LineStore(std::move(block));
    lines->expect(slicesFor(size));
    letGo();
    lines_ = lines;
    at_ = lines->text();
    end_ = at_ + size;
    nextBlock_ = std::min(2 * nextBlock_, largestBlock);
}

std::size_t ValueCopies::slicesFor(std::size_t bytes) const {
    if (textBytes_ == 0) return 0;
    return static_cast<std::size_t>(static_cast<double>(bytes) * static_cast<double>(sliceBytes_) /
                                    static_cast<double>(textBytes_));
}

// References are counted many at a time, before they are needed.
void ValueCopies::adopt(LineSlices* slices, unsigned count, dbrecord& record) {
    if (spareReferences_ == 0) {
        lines_->addReferences(countedAhead);
        spareReferences_ = countedAhead;
    }
    --spareReferences_;
    RecordAccess::adopt(record, slices, static_cast<unsigned short>(count));
}

void ValueCopies::letGo() noexcept {
    if (lines_ != nullptr) lines_->release(spareReferences_ + 1);
    lines_ = nullptr;
    spareReferences_ = 0;
    at_ = end_ = nullptr;
}
