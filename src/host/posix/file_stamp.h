#pragma once

#include <sys/stat.h>

/// What a file says of itself, to tell whether it was written to while it was read. A write is
/// seen as far as the file system's clock tells it from the write before.
class FileStamp {
public:
    /// Only the stamps of regular files differ: what a device or FIFO says changes as it is read.
    explicit FileStamp(const struct stat& status);
    /// Of an open file.
    static FileStamp of(int file);

    bool operator==(const FileStamp& other) const;

private:
    struct stat status_;
};
