#pragma once

#include "host/posix/file_io.h"
#include "host/posix/replacing/trouble.h"

#include <string>

#include <sys/stat.h>

/// Where a file stands or is to stand: its folder, held open, and its name in there. A path is
/// looked up once; whatever happens to it afterwards leads nowhere else.
class Place {
public:
    enum class Kind {
        nothing,
        file,
        link,       // only where links at the end are not followed
        direct,     // a FIFO or a character device, which cannot be replaced
        descriptor  // one that this process has open, named by way of the system's list
    };

    /// Links are followed, with or without one at the very end. As the system's protection of
    /// links has it, and also where that is off, one of somebody else's is refused in a sticky
    /// folder, and in a folder that is neither the superuser's nor one's own. So it is with FIFOs
    /// of others in sticky folders that are not theirs either.
    FileTrouble find(const std::string& path, bool followsLast);

    /// Looks again at what stands under the name.
    FileTrouble look();
    /// Opens what is written to directly, if it is what was found.
    FileTrouble openDirect(FileIO::Descriptor& file) const;

    Kind kind() const { return kind_; }
    int folder() const { return folder_.get(); }
    const std::string& name() const { return name_; }
    /// As of the last look.
    const struct stat& status() const { return status_; }
    int descriptor() const { return descriptor_; }
    /// Whether others may put names into the folder to lead somebody astray.
    bool isExposed() const;
    const struct stat& folderStatus() const { return folderStatus_; }

private:
    class Walk;

    FileIO::Descriptor folder_;
    struct stat folderStatus_ = {};
    std::string name_;
    struct stat status_ = {};
    Kind kind_ = Kind::nothing;
    bool isListed_ = false;  // a link of the system's list, which leads to the thing itself
    int descriptor_ = -1;
};

/// Whether both are the same file.
bool isSameFile(const struct stat& a, const struct stat& b);
/// Whether it is the same and nothing was written to it in between.
bool isUnchanged(const struct stat& a, const struct stat& b);
