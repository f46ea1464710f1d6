#pragma once

#include <vekdb/host/ptr.h>
#include <vekdb/host/text_block.h>

#include <cstddef>

#include <aio.h>

/// The text of a large file while the system reads it: what has come can be looked at, and
/// written to, while the rest is still coming. Used by one thread at a time.
class TextArrival : public Quor::InternalRefCount {
public:
    /// Thrown where the text does not come whole: the file cannot be read on, or does not have
    /// the size it said it had, or in a process that was forked while it came.
    struct Broken {};

    /// How large a file is worth it, and how much is asked for at a time. Tests set these.
    struct Terms {
        static inline std::size_t leastBytes = std::size_t{4} << 20;
        static inline std::size_t piece = std::size_t{1} << 20;
    };

    /// Begins to read a file. Null where it is to be read in the plain way: it is small or no
    /// regular file, cannot be opened, or the system does not read ahead, which it never does in a
    /// forked process. Throws BadAlloc.
    static Quor::Ptr<TextArrival> begin(const char* path);

    TextArrival(const TextArrival&) = delete;
    TextArrival& operator=(const TextArrival&) = delete;
    /// Waits until the system has left the text alone, which it soon does.
    ~TextArrival();

    /// A block as large as the file.
    const Quor::Ptr<TextBlock>& text() const { return text_; }

    /// Waits until more than `have` bytes have come, of a text that has more. How many have come.
    std::size_t waitBeyond(std::size_t have);

private:
    TextArrival(int file, std::size_t size);

    bool isAllAskedFor() const { return askedFor_ == text_->size(); }
    bool askForPiece();
    void takePiece();
    void giveUpRest();
    bool isAsLargeAsItSaid() const;

    static constexpr unsigned kMostAsked = 8;

    const int file_;
    const Quor::Ptr<TextBlock> text_;
    std::size_t have_ = 0;      // bytes
    std::size_t askedFor_ = 0;  // bytes, those that have come included
    aiocb pieces_[kMostAsked];  // asked for and not yet taken, in a ring
    unsigned first_ = 0;
    unsigned count_ = 0;
};
