#include <algorithm>
#include <utility>

#include "host/large_pages_impl.h"
#include "vekdb/line_store_impl.h"

struct LineStore::Chunk {
    static constexpr std::size_t largest = std::size_t{16} << 20;

    Chunk* next;
};

void LineSlices::raiseLengths(unsigned* lengths, unsigned values) const {
    unsigned from = 0;
    for (unsigned i = 0; i < values; ++i) {
        lengths[i] = std::max(lengths[i], next()[i] - from - gap());
        from = next()[i];
    }
}

LineStore::LineStore(Quor::Ptr<TextBlock> text)
    : block_(std::move(text)), text_(block_->data()) {}

LineStore::~LineStore() {
    while (chunks_ != nullptr) {
        Chunk* next = chunks_->next;
        ::operator delete(chunks_);
        chunks_ = next;
    }
}

void LineStore::addChunk(std::size_t atLeast) {
    const std::size_t size = sizeof(Chunk) + std::max(atLeast, nextChunk_);
    auto* chunk = static_cast<Chunk*>(::operator new(size));
    expectFilling(chunk, size);
    chunk->next = chunks_;
    chunks_ = chunk;
    free_ = reinterpret_cast<char*>(chunk + 1);
    end_ = reinterpret_cast<char*>(chunk) + size;
    nextChunk_ = std::min(nextChunk_ * 2, Chunk::largest);
}
