#pragma once

#include <vekdb/host/ptr.h>
#include <vekdb/host/text_block.h>

#include <cstddef>
#include <cstdint>
#include <utility>

#include <aio.h>
#include <sys/stat.h>
#include <sys/types.h>

namespace FileIO {

// The calls of the operating system that reading and replacing stand on, each
// with the system's own contract. Tests put others in place to make them fail.
struct SystemCalls {
    int (*open)(const char* path, int flags, mode_t mode);
    ssize_t (*read)(int file, void* to, std::size_t size);
    int (*beginRead)(aiocb* piece);  // aio_read, and the aio_return of what it began
    ssize_t (*endRead)(aiocb* piece);
    ssize_t (*write)(int file, const void* from, std::size_t size);
    int (*sync)(int file);
    int (*close)(int file);
    int (*setMode)(int file, mode_t mode);

    // Of replacing alone. A name is looked for in an open folder; a link at the name itself is
    // never followed, but by openAt where its flags do not forbid it.
    int (*openAt)(int folder, const char* name, int flags, mode_t mode);
    int (*duplicate)(int file);
    int (*status)(int file, struct stat* status);
    int (*statusAt)(int folder, const char* name, struct stat* status);
    ssize_t (*linkAt)(int folder, const char* name, char* to, std::size_t size);
    int (*mayWriteAt)(int folder, const char* name);
    int (*renameAt)(int folder, const char* from, const char* to);
    // The same where nothing has the name yet; else EEXIST. Where the system cannot do both at
    // once, the name is taken as it is.
    int (*renameNewAt)(int folder, const char* from, const char* to);
    int (*removeAt)(int folder, const char* name);
    int (*lock)(int file, int operation);
    ssize_t (*readAt)(int file, void* to, std::size_t size, off_t from);
    int (*makeRoom)(int file, off_t size);
    int (*cut)(int file, off_t size);
    int (*setOwner)(int file, uid_t owner, gid_t group);
    ssize_t (*listAttributes)(int file, char* names, std::size_t size);
    ssize_t (*attribute)(int file, const char* name, void* value, std::size_t size);
    int (*setAttribute)(int file, const char* name, const void* value, std::size_t size);
    int (*removeAttribute)(int file, const char* name);
};

// The calls in use. Not to be changed while another thread reads or saves.
SystemCalls& systemCalls();

// Closes a file with the scope, or leaves it to somebody else.
class Descriptor {
public:
    explicit Descriptor(int file = -1) : file_(file) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (file_ >= 0) {
            systemCalls().close(file_);
        }
    }
    Descriptor(Descriptor&& other) noexcept : file_(other.take()) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        const Descriptor before(std::exchange(file_, other.take()));
        return *this;
    }
    int get() const { return file_; }
    bool isOpen() const { return file_ >= 0; }
    int take() { return std::exchange(file_, -1); }
    void release() { file_ = -1; }

private:
    int file_;
};

// A file for reading, negative when there is none.
int openToRead(const char* path);

// The bytes of the machine's memory: more cannot be held.
std::uint64_t memorySize();

// Reads a file to its end into one block, with a NUL byte behind the last byte
// read. Regular files, FIFOs and character devices are read; folders and block
// devices are refused. A size told beforehand is only a hint. A file that is
// written to meanwhile is read again, a few times. 0, or with the outputs
// untouched the system's number of what went wrong: EFBIG for what is larger
// than the machine's memory and for a device that gives more than 64 MiB, EBUSY
// for a file that was changed each time. Throws BadAlloc.
int readWhole(const char* path, Quor::Ptr<TextBlock>& text, std::size_t& textSize);
// The same for an open file, from its first byte on where it has one to go back to.
int readWhole(int file, Quor::Ptr<TextBlock>& text, std::size_t& textSize);

// How large a regular file is; 0 for what is none or cannot be looked at.
std::size_t regularSize(const char* path);
std::size_t regularSize(int file);
// Whether something that is no folder stands at the path.
bool isThere(const char* path);

// Tells the system that a large block is about to be filled from end to end, so
// that it may come in large pages. Changes nothing but speed.
void expectFilling(TextBlock& block);

}  // namespace FileIO
