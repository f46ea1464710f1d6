#pragma once

#include "host/posix/file_io.h"
#include "host/posix/replacing/place.h"
#include "host/posix/replacing/trouble.h"

/// The file that stands in a place, open and if possible locked, and what it was like then.
class HeldFile {
public:
    /// Opens and locks it; waits at most so long. inUse where somebody else has the lock: it is
    /// open then all the same. Does nothing where no file stands.
    FileTrouble hold(Place& place, unsigned milliseconds);

    bool isOpen() const { return file_.isOpen(); }
    bool isLocked() const { return isLocked_; }
    int file() const { return file_.get(); }
    const struct stat& status() const { return status_; }

private:
    FileTrouble open(Place& place);
    bool lock();

    FileIO::Descriptor file_;
    struct stat status_ = {};
    bool isLocked_ = false;
};
