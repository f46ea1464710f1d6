#pragma once

#include <vekdb/host/ptr.h>
#include <vekdb/host/text_block.h>
#include "host/posix/file_stamp.h"
#include "host/posix/pieces_ahead.h"

#include <cstddef>
#include <memory>

/// The text of a large file that comes in pieces: what has come can be looked at, and written
/// to, before the rest is there. A piece is read when somebody waits for it, while it is in the
/// processor's cache then, or, where the host allows reading ahead, by the system while earlier
/// pieces are looked at. Used by one thread at a time.
class TextArrival : public Quor::InternalRefCount {
public:
    /// Thrown where the text does not come whole: the file cannot be read on, is changed
    /// meanwhile, or is read ahead in a process that was forked while it came.
    struct Broken {};

    /// How large a file is worth it, and how much of it comes at a time. Tests set these.
    struct Terms {
        static inline std::size_t leastBytes = std::size_t{4} << 20;
        static inline std::size_t piece = std::size_t{256} << 10;
        static inline std::size_t pieceAhead = std::size_t{1} << 20;
    };

    /// Begins to read a file. Null where it is to be read in the plain way: it is small or no
    /// regular file, cannot be opened, or is to be read ahead where the system does not do that,
    /// which it never does in a forked process. Throws BadAlloc.
    static Quor::Ptr<TextArrival> begin(const char* path);
    /// The same for an open file, from its first byte on; its place is not moved.
    static Quor::Ptr<TextArrival> begin(int file);

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
    static Quor::Ptr<TextArrival> beginOwn(int file);

    bool askAhead();
    bool askForPieces();
    std::size_t readPiece();
    std::size_t takePiece();

    const int file_;
    const FileStamp stamp_;
    const Quor::Ptr<TextBlock> text_;
    std::unique_ptr<PiecesAhead> ahead_;  // null where nothing is read ahead
    std::size_t have_ = 0;                // bytes
    std::size_t askedFor_ = 0;            // bytes, those that have come included; when ahead
};
