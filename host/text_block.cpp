#include "host/text_block.h"

#include "host/exceptions.h"

#include <cassert>

namespace {

std::size_t withTerminator(std::size_t bytes) {
    if (bytes + 1 == 0) {
        throw Quor::Exception::BadAlloc();
    }
    return bytes + 1;
}

}  // namespace

Quor::Ptr<TextBlock> TextBlock::create(std::size_t bytes) {
    return Quor::Ptr<TextBlock>(new TextBlock(bytes));
}

TextBlock::TextBlock(std::size_t bytes)
    : data_(static_cast<char*>(OS()->allocator()->allocate(withTerminator(bytes)))), size_(bytes) {
    data_[size_] = 0;
}

TextBlock::~TextBlock() {
    OS()->allocator()->free(data_);
}

void TextBlock::resize(std::size_t bytes) {
    assert(isUnshared());
    data_ = static_cast<char*>(OS()->allocator()->reallocate(data_, withTerminator(bytes)));
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
