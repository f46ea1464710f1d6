#include <vekdb/host/text_block.h>

#include <vekdb/host/exceptions.h>
#include "host/posix/large_pages.h"

#include <cassert>

namespace {

std::size_t withTerminator(std::size_t before, std::size_t bytes) {
    if (bytes >= static_cast<std::size_t>(-1) - before) {
        throw Quor::Exception::BadAlloc();
    }
    return before + bytes + 1;
}

char* allocate(std::size_t bytes) {
    return static_cast<char*>(OS()->allocator()->allocate(bytes));
}

}  // namespace

Quor::Ptr<TextBlock> TextBlock::create(std::size_t bytes) {
    return Quor::Ptr<TextBlock>(new TextBlock(bytes));
}

TextBlock::TextBlock(std::size_t bytes)
    : block_(allocate(withTerminator(LargePages::slackFor(bytes), bytes))),
      data_(LargePages::startIn(block_, LargePages::slackFor(bytes))),
      size_(bytes) {
    expectFilling(data_, size_ + 1);
    data_[size_] = 0;
}

TextBlock::~TextBlock() {
    OS()->allocator()->free(block_);
}

void TextBlock::resize(std::size_t bytes) {
    assert(isUnshared());
    const auto before = static_cast<std::size_t>(data_ - block_);
    const std::size_t needed = withTerminator(before, bytes);
    block_ = static_cast<char*>(OS()->allocator()->reallocate(block_, needed));
    data_ = block_ + before;
    size_ = bytes;
    data_[size_] = 0;
}

bool TextBlock::isUnshared() const noexcept {
    return Quor::currentCount(*refCountWord()) == 1;
}

void TextBlock::addReference() const noexcept {
    OS()->refCounts()->increment(*refCountWord());
}

void TextBlock::addReferences(std::uint32_t n) const noexcept {
    OS()->refCounts()->increaseBy(*refCountWord(), n);
}

void TextBlock::release() const noexcept {
    if (OS()->refCounts()->decrement(*refCountWord()) == 0) {
        delete this;
    }
}
