#include <new>
#include <utility>

#include "vekdb/line_store_impl.h"

struct LineStore::Chunk {
    static constexpr std::size_t bytes = std::size_t{1} << 18;

    Chunk* next;
};

LineStore::LineStore(Quor::Ptr<TextBlock> text)
    : block_(std::move(text)), text_(block_->data()) {}

LineStore::~LineStore() {
    while (chunks_ != nullptr) {
        Chunk* next = chunks_->next;
        ::operator delete(chunks_);
        chunks_ = next;
    }
}

LineSlices* LineStore::addSlices(unsigned values, std::uint64_t offset, unsigned gap) {
    std::size_t wanted = (LineSlices::bytesFor(values) + alignof(LineSlices) - 1) &
                         ~(alignof(LineSlices) - 1);
    if (static_cast<std::size_t>(end_ - free_) < wanted) {
        std::size_t size = sizeof(Chunk) + (wanted > Chunk::bytes ? wanted : Chunk::bytes);
        auto* chunk = static_cast<Chunk*>(::operator new(size));
        chunk->next = chunks_;
        chunks_ = chunk;
        free_ = reinterpret_cast<char*>(chunk + 1);
        end_ = reinterpret_cast<char*>(chunk) + size;
    }
    auto* slices = new (free_) LineSlices{this, offset | (std::uint64_t{gap} << 56)};
    free_ += wanted;
    return slices;
}
