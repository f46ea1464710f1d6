#pragma once

#include <vekdb/host/visibility.h>

/// What a path leads to at a moment, and what tells that another file stands there later or that
/// this one was written to; as far as the file system's clock tells a write from the one before.
/// Nothing is opened, and links are followed.
struct VEKDB_PUBLIC FileLook {
    /// What stands there: nothing that can be seen, a file with bytes of its own, a folder, or a
    /// pipe, a device and the like.
    enum class Kind : unsigned char { nothing, regular, folder, other };

    /// A path as the system has it.
    static FileLook at(const char* path);

    bool isRegular() const { return kind == Kind::regular; }  ///< a file with bytes of its own
    bool isFolder() const { return kind == Kind::folder; }    ///< a folder
    bool operator==(const FileLook&) const = default;

    Kind kind = Kind::nothing;  ///< what stood there
    int error = 0;  ///< the system's number of why nothing could be seen; 0 otherwise
    unsigned long long marks[7] = {};  ///< equal as long as it is the same file, and as it was
};
