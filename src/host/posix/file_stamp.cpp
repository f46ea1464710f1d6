#include "host/posix/file_stamp.h"

FileStamp::FileStamp(const struct stat& status) : status_(status) {}

// Of what cannot be asked nothing is known, which is the same as it was before.
FileStamp FileStamp::of(int file) {
    struct stat status = {};
    if (::fstat(file, &status) != 0) {
        status = {};
    }
    return FileStamp(status);
}

bool FileStamp::operator==(const FileStamp& other) const {
    if (!S_ISREG(status_.st_mode) && !S_ISREG(other.status_.st_mode)) {
        return true;
    }
    return status_.st_dev == other.status_.st_dev && status_.st_ino == other.status_.st_ino &&
           status_.st_size == other.status_.st_size &&
           status_.st_mtim.tv_sec == other.status_.st_mtim.tv_sec &&
           status_.st_mtim.tv_nsec == other.status_.st_mtim.tv_nsec;
}
