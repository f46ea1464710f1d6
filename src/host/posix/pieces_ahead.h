#pragma once

#include <cstddef>

#include <aio.h>

/// Pieces of a file that the system reads while something else is done, a few at a time and
/// taken in the order in which they were asked for. The C library serves them with threads of
/// its own, which are left to themselves for a while when there is nothing more to read.
class PiecesAhead {
public:
    /// Reading ahead needs threads that a forked child has not got, though the C library counts
    /// on them as before: it would wait for ever.
    static bool isForked();

    /// The file stays open for as long as this lives.
    explicit PiecesAhead(int file) : file_(file) {}
    PiecesAhead(const PiecesAhead&) = delete;
    PiecesAhead& operator=(const PiecesAhead&) = delete;
    /// Waits until the system has left alone what it was given to fill.
    ~PiecesAhead();

    bool isFull() const { return count_ == most; }
    /// Asks for so many bytes from a place in the file on. False where the system refuses.
    bool ask(char* to, std::size_t size, std::size_t offset);
    /// Waits for the next piece; its size, or 0 where it does not come whole.
    std::size_t take();

private:
    static constexpr unsigned most = 8;

    const int file_;
    aiocb pieces_[most];  // asked for and not yet taken, in a ring
    unsigned first_ = 0;
    unsigned count_ = 0;
};
