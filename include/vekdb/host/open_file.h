#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include <vekdb/host/visibility.h>

/// A file, pipe or device that is open for reading, whose bytes are fetched as they are asked for.
/// It is closed with the object. What the system refuses is answered with its number of what went
/// wrong, never 0; the outputs are untouched then. Used by one thread at a time.
class VEKDB_PUBLIC OpenFile {
public:
    /// What is open; a stream is a pipe or a socket.
    enum class Kind : unsigned char { regular, device, folder, stream };

    /// Nothing is open afterwards where that was refused; why, `error` says.
    static OpenFile at(const char* path);
    /// A further descriptor of the standard input.
    static OpenFile ofStandardInput();
    /// A further descriptor of the same file; that one stays the caller's.
    static OpenFile of(int descriptor);
    /// A file in memory, of this text, whose place is at its end.
    static OpenFile holding(std::string_view text);
    /// The bytes of the machine's memory: more cannot be held.
    static std::uint64_t memoryOfMachine();

    /// Nothing is open.
    OpenFile() = default;
    ~OpenFile();
    /// Takes over what the other has open; that one has nothing open then.
    OpenFile(OpenFile&& other) noexcept;
    OpenFile& operator=(OpenFile&& other) noexcept;
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    /// Why it is not open; 0 where it is.
    int error() const { return error_; }
    /// The descriptor, which stays this object's; negative where nothing is open.
    int descriptor() const { return file_; }

    /// Where the next `read` begins; 0 for what has no places.
    std::uint64_t place() const;
    /// Its kind and its size, where it has one; 0 or the error.
    int look(Kind& kind, std::uint64_t& size) const;
    /// The next bytes, at most so many; `got` is 0 at the end. 0 or the error.
    int read(char* to, std::size_t size, std::size_t& got) const;
    /// The same from a place on, of what can be read again.
    int readAt(std::uint64_t from, char* to, std::size_t size, std::size_t& got) const;
    /// Nobody else can lock it from now on, until it and all further descriptors of it are closed,
    /// at the latest by the end of the process. 0 or the error: EWOULDBLOCK where somebody else
    /// has locked it, others where it cannot be locked at all. It can still be read and written.
    int lock() const;
    /// Where a regular file of so many bytes has a megabyte or more without room on the disk, as
    /// it was never written there; its size where it has not. The next `read` begins at its start.
    std::uint64_t beginOfGap(std::uint64_t size) const;

private:
    explicit OpenFile(int file);

    int file_ = -1;
    int error_ = 0;
};
