#pragma once

#include <vekdb/host/ptr.h>
#include <vekdb/host/text_block.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

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
    int (*rename)(const char* from, const char* to);
};

// The calls in use. Not to be changed while another thread reads or saves.
SystemCalls& systemCalls();

// Closes a file with the scope, or leaves it to somebody else.
class Descriptor {
public:
    explicit Descriptor(int file) : file_(file) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (file_ >= 0) {
            systemCalls().close(file_);
        }
    }
    int get() const { return file_; }
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
// devices are refused. A size told beforehand is only a hint. False when the
// file cannot be read, is larger than the machine's memory, or is a device that
// gives more than 64 MiB: the outputs are then untouched. Throws BadAlloc.
bool readWhole(const char* path, Quor::Ptr<TextBlock>& text, std::size_t& textSize);

// Tells the system that a large block is about to be filled from end to end, so
// that it may come in large pages. Changes nothing but speed.
void expectFilling(TextBlock& block);

// Whether the path leads to a character device or a FIFO, which cannot be replaced.
bool isWrittenDirectly(const char* path);

// Puts new contents in a file's place, whole or not at all: they are written to
// a file of unique name in the same folder, flushed to disk, and renamed over
// the target in commit(). Symbolic links are followed, the mode is kept. Until
// commit() answers true the old file stands as it was; whatever goes wrong, the
// file of unique name is removed, at the latest by the destructor.
//
// A character device or a FIFO cannot be replaced: it is written to directly.
class Replacement {
public:
    // toDisk: wait until the contents are on the disk before the rename.
    explicit Replacement(bool toDisk) : toDisk_(toDisk) {}
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;
    ~Replacement();

    // Call in this order, each once (write as often as needed); after a false
    // the others do nothing and answer false.
    bool open(const std::string& path);
    bool write(const char* from, std::size_t size);
    bool commit();

private:
    bool openDevice(const std::string& path);
    bool openBeside(mode_t mode);
    bool createUnique(mode_t mode);
    void keepAttributes(const struct stat& old);
    bool complete();
    bool closeFile();
    void discard();

    bool toDisk_;
    int file_ = -1;
    std::optional<mode_t> mode_;  // of the file that is replaced
    std::string target_;
    std::string temporary_;  // empty: nothing to remove or to rename
};

}  // namespace FileIO
