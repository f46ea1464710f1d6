#pragma once

#include <vekdb/host/ptr.h>
#include <vekdb/host/visibility.h>

#include <cstddef>
#include <cstdint>

/// One block of host memory that holds the text a file was read into. Whoever
/// keeps slices of the text keeps a share in the block: a Quor::Ptr, or a raw
/// count taken and given back by hand where a pointer of two words is too much.
/// Counting is safe between threads; the text is written by one thread while
/// nobody else reads.
class VEKDB_PUBLIC TextBlock final : public Quor::InternalRefCount {
public:
    /// A block of this many bytes, not yet written. Throws BadAlloc.
    static Quor::Ptr<TextBlock> create(std::size_t bytes);

    TextBlock(const TextBlock&) = delete;
    TextBlock& operator=(const TextBlock&) = delete;

    /// size() bytes and a 0 behind them. The place holds until resize and until
    /// the last share is gone.
    char* data() noexcept { return data_; }
    const char* data() const noexcept { return data_; }
    std::size_t size() const noexcept { return size_; }

    /// Makes the size this many bytes, keeping what fits; the block may move, so
    /// it requires a single holder. Throws BadAlloc and stays as it was.
    void resize(std::size_t bytes);

    /// True for a block with one holder.
    bool isUnshared() const noexcept;

    /// Counts of holders outside any Ptr; each one ends in a release(), the last
    /// of which destroys the block.
    void addReference() const noexcept;
    void addReferences(std::uint32_t n) const noexcept;
    void release() const noexcept;

private:
    friend struct Quor::DtorTraits;

    explicit TextBlock(std::size_t bytes);
    ~TextBlock();

    char* block_;
    char* data_;  // in it
    std::size_t size_;
};
